#include "command/undo_file.h"

#include <filesystem>
#include <memory>

#include "reference_host/code_text.h"
#include "reference_host/sqlite_store.h"

CUndoFile::~CUndoFile() {
    if (m_bWritten) {
        std::error_code error;
        std::filesystem::remove(m_strFile, error);
    }
}

std::string CUndoFile::Write(const std::vector<CStagedChange>& changes) {
    if (m_strFile.empty()) {
        return {};
    }
    std::error_code error;
    if (std::filesystem::exists(m_strFile, error) || error) {
        return error ? error.message() : "is there already";
    }
    std::string strError;
    const std::shared_ptr<IStore> pStore = CSqliteStore::Open(m_strFile, strError);
    if (pStore == nullptr) {
        return strError;
    }
    m_bWritten = true;
    std::vector<CStoreText> texts;
    texts.reserve(changes.size());
    for (const CStagedChange& change : changes) {
        texts.push_back({change.strPath, change.before.value_or("")});
    }
    const int iCode = pStore->Commit({}, texts);
    return iCode == 0 ? "" : CodeText(iCode);
}
