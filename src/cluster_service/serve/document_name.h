#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <string>

#include "cluster_engine/input.h"
#include "command/store_document.h"

/// Each document, in the order of EDocument.
constexpr auto AllDocuments() {
    std::array<EDocument, std::size(CEnumNames<EDocument>::NAMES)> documents{};
    for (std::size_t ui = 0; ui < documents.size(); ++ui) {
        documents[ui] = static_cast<EDocument>(ui);
    }
    return documents;
}

/// The document of the store that goes by that name in questions and inputs.
const CStoreDocument& StoreDocumentOf(EDocument eDocument);

/// What a path of the cluster's store holds, for people: the name of one of its documents; of the
/// engine's own as in "engine_assignment", whatever the container; else "other".
std::string DocumentName(const std::string& strPath);
