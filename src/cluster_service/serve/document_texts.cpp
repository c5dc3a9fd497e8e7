#include "serve/document_texts.h"

#include <algorithm>
#include <utility>

namespace {

std::size_t IndexOf(EDocument eDocument) {
    return static_cast<std::size_t>(eDocument);
}

}  // namespace

CDocumentTexts::CDocumentTexts() {
    Texts texts;
    for (const EDocument eDocument : AllDocuments()) {
        m_known[IndexOf(eDocument)].strPath = StorePath(StoreDocumentOf(eDocument));
        texts[NameOf(eDocument)].bReadable = false;
    }
    m_pTexts = std::make_shared<const Texts>(std::move(texts));
}

std::shared_ptr<const CDocumentTexts::Texts> CDocumentTexts::Get() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_pTexts;
}

void CDocumentTexts::Wrote(const std::string& strPath, const std::string& strText) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = std::find_if(m_known.begin(), m_known.end(),
                                 [&](const CKnown& known) { return known.strPath == strPath; });
    if (it == m_known.end()) {
        return;
    }
    ++it->ullWrites;
    it->bWritten = true;
    SetLocked(static_cast<EDocument>(it - m_known.begin()), {true, strText, true});
}

uint64_t CDocumentTexts::CountWrites(EDocument eDocument) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_known[IndexOf(eDocument)].ullWrites;
}

bool CDocumentTexts::Found(EDocument eDocument, uint64_t ullWrites, int iCode,
                           const CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    CKnown& known = m_known[IndexOf(eDocument)];
    if (known.ullWrites != ullWrites) {
        return false;
    }
    CStoredDocument document = DocumentLocked(eDocument);
    if (iCode != 0) {
        document.bReadable = false;
        SetLocked(eDocument, std::move(document));
        return false;
    }
    const bool bSameText = document.bExists == answer.bExists && document.text == answer.text;
    const bool bSameVersion = known.iVersion == answer.iVersion || known.bWritten;
    const bool bChanged = known.bRead && !(bSameText && bSameVersion);
    known.bRead = true;
    known.bWritten = false;
    known.iVersion = answer.iVersion;
    SetLocked(eDocument, {answer.bExists, answer.text, true});
    return bChanged;
}

CStoredDocument CDocumentTexts::DocumentLocked(EDocument eDocument) const {
    return m_pTexts->at(NameOf(eDocument));
}

/// Who holds the texts goes on holding them as they were.
void CDocumentTexts::SetLocked(EDocument eDocument, CStoredDocument document) {
    const CStoredDocument& kept = m_pTexts->at(NameOf(eDocument));
    if (kept.bExists == document.bExists && kept.text == document.text &&
        kept.bReadable == document.bReadable) {
        return;
    }
    auto pTexts = std::make_shared<Texts>(*m_pTexts);
    (*pTexts)[NameOf(eDocument)] = std::move(document);
    m_pTexts = std::move(pTexts);
}

std::optional<CDocumentFault> FindFault(EDocument eDocument, const CStoredDocument& stored) {
    const bool bEmpty = !stored.text || stored.text->empty();
    return bEmpty ? std::nullopt : FindRefusal(StoreDocumentOf(eDocument), *stored.text);
}
