#include "command/import_export.h"

#include <filesystem>
#include <fstream>
#include <optional>
#include <utility>
#include <vector>

#include "command/confirm.h"
#include "command/document_fault.h"
#include "command/exit_code.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "command/whole_file.h"
#include "reference_host/store.h"

namespace {

namespace fs = std::filesystem;

using CDocumentTexts = std::vector<std::pair<const CStoreDocument*, std::string>>;

std::string FileOf(const std::string& strDir, const CStoreDocument& document) {
    return fs::path(strDir) / document.pszFile;
}

/// Reads one character more than a document may have: enough to see that it is too long.
bool ReadFile(const std::string& strFile, unsigned int uiMaxSize, std::string& strText) {
    std::ifstream stream(strFile, std::ios::binary);
    if (!stream || !fs::is_regular_file(strFile)) {
        return false;
    }
    strText.resize(uiMaxSize + std::size_t{1});
    stream.read(strText.data(), static_cast<std::streamsize>(strText.size()));
    strText.resize(static_cast<std::size_t>(stream.gcount()));
    return !stream.bad();
}

/// Collects the texts of the files that are there and good. Says what is wrong with the others.
int CollectFiles(const std::string& strDir, CDocumentTexts& texts, std::ostream& output,
                 std::ostream& errors) {
    int iResult = EXIT_DONE;
    for (const CStoreDocument& document : StoreDocuments()) {
        const std::string strFile = FileOf(strDir, document);
        std::error_code error;
        if (!fs::exists(strFile, error) && !error) {
            output << strFile << ": no such file, " << StorePath(document) << " stays as it is\n";
            continue;
        }
        std::string strText;
        if (!ReadFile(strFile, document.GetMaxSize(), strText)) {
            errors << strFile << ": cannot be read\n";
            iResult = EXIT_COULD_NOT;
            continue;
        }
        if (const auto fault = FindFault(document, strText)) {
            errors << strFile << ": " << *fault << '\n';
            iResult = iResult == EXIT_DONE ? EXIT_FINDINGS : iResult;
        }
        texts.emplace_back(&document, std::move(strText));
    }
    return iResult;
}

/// Names the documents of the store that would be replaced by another text, each behind a blank.
/// False when the store failed.
bool FindReplaced(const CDocumentTexts& texts, std::string& strReplaced, std::ostream& errors) {
    for (const auto& [pDocument, strText] : texts) {
        const CStoredText stored = ReadFromStore(*pDocument);
        const bool bTooLong = stored.iCode == STORE_TEXT_TOO_LONG;
        if (!bTooLong && !StoreAnswered(*pDocument, stored.iCode, errors)) {
            return false;
        }
        if (bTooLong || (!stored.strText.empty() && stored.strText != strText)) {
            strReplaced.append(" ").append(StorePath(*pDocument));
        }
    }
    return true;
}

bool CollectTexts(CDocumentTexts& texts, std::ostream& output, std::ostream& errors) {
    for (const CStoreDocument& document : StoreDocuments()) {
        CStoredText stored = ReadFromStore(document);
        if (!StoreAnswered(document, stored.iCode, errors)) {
            return false;
        }
        if (stored.strText.empty()) {
            output << StorePath(document)
                   << (stored.bExists ? ": without data" : ": not in the store")
                   << ", no file is written\n";
            continue;
        }
        texts.emplace_back(&document, std::move(stored.strText));
    }
    return true;
}

}  // namespace

int Import(const std::string& strDir, bool bYes, std::ostream& output, std::ostream& errors) {
    CDocumentTexts texts;
    const int iResult = CollectFiles(strDir, texts, output, errors);
    if (iResult != EXIT_DONE) {
        errors << "nothing was imported\n";
        return iResult;
    }
    if (texts.empty()) {
        errors << strDir << ": no document in this folder\n";
        return EXIT_COULD_NOT;
    }
    std::string strReplaced;
    if (!FindReplaced(texts, strReplaced, errors)) {
        return EXIT_COULD_NOT;
    }
    if (!strReplaced.empty() &&
        !Confirm("Replace what the store holds otherwise:" + strReplaced + "?", bYes, errors)) {
        return EXIT_FINDINGS;
    }
    for (const auto& [pDocument, strText] : texts) {
        if (!StoreAnswered(*pDocument, WriteToStore(*pDocument, strText), errors)) {
            return EXIT_COULD_NOT;
        }
        output << FileOf(strDir, *pDocument) << ": imported to " << StorePath(*pDocument) << ", "
               << strText.size() << " of at most " << pDocument->GetMaxSize() << " bytes\n";
    }
    return EXIT_DONE;
}

int Export(const std::string& strDir, std::ostream& output, std::ostream& errors) {
    CDocumentTexts texts;
    if (!CollectTexts(texts, output, errors)) {
        errors << "nothing was exported\n";
        return EXIT_COULD_NOT;
    }
    if (texts.empty()) {
        errors << "no document in the store\n";
        return EXIT_COULD_NOT;
    }
    std::error_code error;
    fs::create_directories(strDir, error);
    if (error) {
        errors << strDir << ": " << error.message() << '\n';
        return EXIT_COULD_NOT;
    }
    for (const auto& [pDocument, strText] : texts) {
        const std::string strFile = FileOf(strDir, *pDocument);
        const std::string strError = WriteWholeFile(strFile, strText);
        if (!strError.empty()) {
            errors << strFile << ": " << strError << '\n';
            return EXIT_COULD_NOT;
        }
        output << StorePath(*pDocument) << ": exported to " << strFile << ", " << strText.size()
               << " bytes\n";
    }
    return EXIT_DONE;
}
