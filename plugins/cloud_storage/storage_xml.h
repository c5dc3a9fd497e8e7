#pragma once

#include <list>

#include "cloud_storage/storage_board.h"
#include "common_service/xml.h"
#include "orva_plugin_service/tarn_orva_data.h"

/// The XML of cloud storage. Sizes are 0 to 2147483647; elements of other names are passed over.
/// Every operation works at the cursor: readers leave it on the element that they read, writers
/// add an element behind the current one, or as the root of an empty document, and leave it there.
///
/// A request of storage:
///
///     <CloudStorageAlloc>
///       <Node>                                     one or more
///         <NodeID>record-01</NodeID>               required, unique in the request
///         <Storage>500</Storage>                   required, 1 or more: what it is to have more
///         <LowPriStoreDay>7</LowPriStoreDay>       optional, 0 when left out
///       </Node>
///     </CloudStorageAlloc>
///
/// A request of less storage; how much less goes beside it:
///
///     <CloudStorageReduce>
///       <Code>pool-a</Code>                        optional; the least used when left out
///       <Node><NodeID>record-01</NodeID></Node>    optional, any number: who may be reduced;
///     </CloudStorageReduce>                        everybody when left out
///
/// What a node is sent after the first, with an AllocInfo for each pool, and after the second, with
/// a ReduceInfo for each pool:
///
///     <CloudStorageAllocReq>
///       <NodeID/> <StorageStatus/> <StorageChangeSize/> <LowPriStoreDay/>
///       <AllocInfo> <Code/> <AllocSize/> <UsedSize/> <FreeSize/> <Dns/> <Path/> </AllocInfo>
///     </CloudStorageAllocReq>
///     <CloudStorageReduceReq>
///       <NodeID/> <LowPriority/>
///       <ReduceInfo> <Code/> <Size/> </ReduceInfo>
///     </CloudStorageReduceReq>
///
/// What the service reports after the first, each node with what it has, and after the second, each
/// pool with what is left; AllocSize there includes what is allocated and not reported yet:
///
///     <CloudStorageAllocReport>
///       <Count>2</Count>
///       <Node>
///         <NodeID/> <ServiceType/> <ProductType/> <ReqStorage/> <ReqPicStorage/> <LowPriBitRate/>
///         <AllocInfo> <Code/> <AllocSize/> <UsedSize/> <Dns/> <Path/> </AllocInfo>
///       </Node>
///     </CloudStorageAllocReport>
///     <CloudStorageReduceReport>
///       <Count>2</Count>
///       <Pool> <Code/> <Size/> <AllocSize/> <UsedSize/> <FreeSize/> <Dns/> <Path/> </Pool>
///     </CloudStorageReduceReport>

/// Appends a share without allocations for each node of the request. Returns 0; or, logged,
/// ORVA_XML_INVALID with the list untouched.
int ReadAllocRequest(PELU::CXml& xml, std::list<ORVA_CLOUD_STORAGE_SEND_INFO>& shareList);

/// Sets all but the size. Returns 0; or, logged, ORVA_XML_INVALID.
int ReadReduceRequest(PELU::CXml& xml, CStorageReduction& reduction);

/// Return 0; or, logged, ORVA_XML_INVALID.
int WriteAllocRequest(const ORVA_CLOUD_STORAGE_SEND_INFO& share, PELU::CXml& xml);
int WriteReduceRequest(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& reductions, PELU::CXml& xml);
int WriteAllocReport(const CStorageBoard& board, PELU::CXml& xml);
int WriteReduceReport(const CStorageBoard& board, PELU::CXml& xml);
