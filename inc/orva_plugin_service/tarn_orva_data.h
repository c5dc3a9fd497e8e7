#pragma once

#include <cstdint>
#include <list>
#include <string>

/// The private keys of a cloud storage task: what its node asks for.
inline constexpr char PSZ_TASK_PRODUCT_TYPE[] = "ProductType";
inline constexpr char PSZ_TASK_SERVICE_TYPE[] = "ServiceType";
inline constexpr char PSZ_TASK_REQ_STORAGE[] = "ReqStorage";
inline constexpr char PSZ_TASK_REQ_PIC_STORAGE[] = "ReqPicStorage";
inline constexpr char PSZ_TASK_LOW_PRI_BIT_RATE[] = "LowPriBitRate";
inline constexpr char PSZ_TASK_TRAN_BAND_WIDTH[] = "TranBandWidth";

/// One allocation of cloud storage to a node. Sizes are in the unit of whoever reports them.
struct ORVA_CLOUD_STORAGE_ALLOC_INFO {
    std::string cloudStorageCode;
    int32_t allocStorage = 0;
    int32_t usedStorage = 0;
    int32_t freeStorage = 0;  ///< not part of the stored document
    std::string dns;
    std::string path;
};

/// One node's share of an allocation.
struct ORVA_CLOUD_STORAGE_SEND_INFO {
    std::string strNodeID;
    int32_t storageStatus = 0;
    int32_t storageChangeSize = 0;
    int32_t lowPriStoreDay = 0;
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfo;
};

/// One reduction: the storage concerned and the size to reduce by.
struct ORVA_CLOUD_STORAGE_REDUCE_INFO {
    std::string cloudStorageCode;
    int32_t storageSize = 0;
};

/// One node's reductions.
struct ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST {
    std::string strNodeID;
    int32_t lowPriority = 0;
    std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO> reduceInfoList;
};
