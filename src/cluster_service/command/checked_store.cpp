#include "command/checked_store.h"

#include <algorithm>

#include "command/document_file.h"
#include "framework_service/cluster_znode_info.h"
#include "reference_host/code_text.h"
#include "reference_host/store.h"
#include "reference_host/strict_json.h"

namespace {

CDocumentFault FaultOfWhole(std::string strWhat) {
    return {std::nullopt, "", std::move(strWhat)};
}

CDocumentFault TooLong(const CStoreDocument& document) {
    return FaultOfWhole("is longer than " + std::to_string(document.GetMaxSize()) + " bytes");
}

CCheckedDocument ReadFile(const CStoreDocument& document, const std::string& strFile) {
    CCheckedDocument checked{&document, strFile, {}, {}, {}};
    checked.stored.bExists = true;
    const std::string strError =
        ReadTextFile(strFile, document.GetMaxSize(), checked.stored.strText);
    if (!strError.empty()) {
        checked.fault = FaultOfWhole("cannot be read: " + strError);
    } else if (checked.stored.strText.size() > document.GetMaxSize()) {
        checked.fault = TooLong(document);
    }
    return checked;
}

/// A text that the store does not hand out is a fault of the document, and not of the store, when
/// it is too long or the store is known to be damaged.
CCheckedDocument ReadStored(const CStoreDocument& document, bool bDamaged) {
    CCheckedDocument checked{
        &document, document.node.pszSuffix + 1, ReadFromStore(document), {}, {}};
    const int iCode = checked.stored.iCode;
    if (iCode == STORE_TEXT_TOO_LONG) {
        checked.fault = TooLong(document);
    } else if (iCode != ORVA_SUCCEED && bDamaged) {
        checked.fault = FaultOfWhole("cannot be read: " + CodeText(iCode));
    }
    if (checked.fault) {
        checked.stored.iCode = ORVA_SUCCEED;
        checked.stored.bExists = true;
    }
    return checked;
}

/// Of a store a text may be empty, as a document without data; of a folder it may not.
CCheckedDocument ReadDocument(const CStoreDocument& document, const std::string& strDir,
                              bool bDamaged) {
    const std::string strFile = DocumentFile(strDir, document);
    const bool bFile = !strDir.empty() && IsThere(strFile);
    CCheckedDocument checked = bFile ? ReadFile(document, strFile) : ReadStored(document, bDamaged);
    if (!checked.fault && (bFile || !checked.stored.strText.empty())) {
        checked.fault = FindFault(document, checked.stored.strText);
    }
    if (checked.IsGood()) {
        ParseStrictJson(checked.stored.strText, checked.root);
    }
    return checked;
}

/// The elements of a list; nothing else has any here.
std::vector<CDocumentEntry> ListOf(const CDocumentEntry& object, const char* pszKey) {
    const CDocumentEntry list = MemberOf(object, pszKey);
    return list.pValue->isArray() ? ElementsOf(list) : std::vector<CDocumentEntry>();
}

}  // namespace

bool CCheckedNode::HasContainer(const char* pszType) const {
    return std::any_of(containerTypes.begin(), containerTypes.end(),
                       [pszType](const CDocumentEntry& type) { return TextOf(type) == pszType; });
}

const CCheckedDocument& CCheckedStore::Get(const ORVA_STORE_NODE& node) const {
    return *std::find_if(
        documents.begin(), documents.end(),
        [&node](const CCheckedDocument& checked) { return &checked.pDocument->node == &node; });
}

bool CCheckedStore::IsClusterGood() const {
    return !Get(STORE_NODE_CLUSTER).fault;
}

bool CCheckedStore::HasNode(const std::string& strNodeId) const {
    return !IsClusterGood() ||
           std::any_of(nodes.begin(), nodes.end(), [&strNodeId](const CCheckedNode& node) {
               return TextOf(node.id) == strNodeId;
           });
}

bool ReadStore(const std::string& strDir, CCheckedStore& store, std::ostream& errors) {
    for (const CStoreDocument& document : StoreDocuments()) {
        store.documents.push_back(ReadDocument(document, strDir, !store.strDamage.empty()));
        if (!StoreAnswered(document, store.documents.back().stored.iCode, errors)) {
            return false;
        }
    }
    for (const CDocumentEntry& node :
         ListOf(store.Get(STORE_NODE_CLUSTER).Root(), PSZ_CLUSTER_NODE)) {
        CCheckedNode checked{MemberOf(node, PSZ_NODE_ID), MemberOf(node, PSZ_NODE_STATUS), {}};
        for (const CDocumentEntry& container : ListOf(node, PSZ_NODE_CONTAINER)) {
            checked.containerTypes.push_back(MemberOf(container, PSZ_NODE_CONTAINER_TYPE));
        }
        store.nodes.push_back(std::move(checked));
    }
    return true;
}
