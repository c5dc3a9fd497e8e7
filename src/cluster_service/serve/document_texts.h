#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "command/document_fault.h"
#include "reference_host/store.h"
#include "serve/cluster_view.h"
#include "serve/document_name.h"

/// The texts of the cluster's documents, as far as this service knows: what it read last, or wrote
/// itself since. Callable from any thread.
class CDocumentTexts {
public:
    using Texts = std::map<std::string, CStoredDocument>;  ///< by the name of the document

    CDocumentTexts();

    std::shared_ptr<const Texts> Get() const;

    /// This service has written a node.
    void Wrote(const std::string& strPath, const std::string& strText);

    /// How often this service has written the document: asked before it is read.
    uint64_t CountWrites(EDocument eDocument) const;

    /// A read that began after so many writes came to that. Has somebody else written the document
    /// since it was read last? A read that this service has written across tells nothing.
    bool Found(EDocument eDocument, uint64_t ullWrites, int iCode, const CStoreAnswer& answer);

private:
    struct CKnown {
        std::string strPath;
        uint64_t ullWrites = 0;
        bool bRead = false;     ///< it has been read
        bool bWritten = false;  ///< by this service since
        std::int64_t iVersion = STORE_VERSION_ABSENT;
    };

    CStoredDocument DocumentLocked(EDocument eDocument) const;
    void SetLocked(EDocument eDocument, CStoredDocument document);

    mutable std::mutex m_mutex;                         ///< guards everything below
    std::array<CKnown, AllDocuments().size()> m_known;  ///< by EDocument
    std::shared_ptr<const Texts> m_pTexts;
};

/// Why the cluster cannot take in what the store has of the document; nothing when it can.
std::optional<CDocumentFault> FindFault(EDocument eDocument, const CStoredDocument& stored);
