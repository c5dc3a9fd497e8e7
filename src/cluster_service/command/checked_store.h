#pragma once

#include <json/value.h>

#include <list>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "command/document_entry.h"
#include "command/document_fault.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "framework_service/plugin_mgr.h"

struct CCheckedDocument {
    const CStoreDocument* pDocument;
    std::string strName;  ///< its suffix in the store, as "Cluster", or its file
    CStoredText stored;
    std::optional<CDocumentFault> fault;
    Json::Value root;  ///< null unless the document is good

    bool IsGood() const { return !fault && !stored.strText.empty(); }
    CDocumentEntry Root() const { return {"", &root}; }
};

/// A node of the cluster document, with what names its containers.
struct CCheckedNode {
    CDocumentEntry id;
    CDocumentEntry status;
    std::vector<CDocumentEntry> containerTypes;

    bool HasContainer(const char* pszType) const;
};

/// Everything that the checks look at. Documents that are absent or bad are empty here. It stays
/// where it is: its entries point into it.
struct CCheckedStore {
    CCheckedStore() = default;
    CCheckedStore(const CCheckedStore&) = delete;
    CCheckedStore& operator=(const CCheckedStore&) = delete;

    const CCheckedDocument& Get(const ORVA_STORE_NODE& node) const;

    /// Can the nodes be told? An absent document has none.
    bool IsClusterGood() const;

    /// Is the node one of the cluster's? Every node counts as one when they cannot be told.
    bool HasNode(const std::string& strNodeId) const;

    std::string strDamage;  ///< what is wrong with the store's own file
    std::vector<CCheckedDocument> documents;
    std::vector<CCheckedNode> nodes;
    bool bPluginsLoaded = false;
    std::list<CPluginFile> pluginFiles;
};

/// Fills in what the documents hold: of each the file of the folder or, where there is no folder
/// or no such file in it, what the store has. False when the store failed, said on the stream; a
/// document that a damaged store does not hand out is a bad one.
bool ReadStore(const std::string& strDir, CCheckedStore& store, std::ostream& errors);
