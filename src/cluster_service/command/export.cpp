#include "command/export.h"

#include <algorithm>
#include <filesystem>
#include <utility>
#include <vector>

#include "command/document_fault.h"
#include "command/document_file.h"
#include "command/exit_code.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "command/whole_file.h"
#include "reference_host/shown_text.h"

namespace {

namespace fs = std::filesystem;

using CDocumentTexts = std::vector<std::pair<const CStoreDocument*, std::string>>;

/// Collects what can be read, past the limits of a service's buffers.
int CollectTexts(IStore& store, CDocumentTexts& texts, std::ostream& output, std::ostream& errors) {
    int iResult = EXIT_DONE;
    for (const CStoreDocument& document : StoreDocuments()) {
        CStoreAnswer answer;
        const int iCode = store.Read(StorePath(document), nullptr, answer);
        if (!StoreAnswered(document, iCode, errors)) {
            iResult = EXIT_COULD_NOT;
        } else if (!answer.text || answer.text->empty()) {
            output << ShownText(StorePath(document))
                   << (answer.bExists ? ": without data" : ": not in the store")
                   << ", no file is written\n";
        } else {
            texts.emplace_back(&document, std::move(*answer.text));
        }
    }
    return iResult;
}

int WriteDocument(const std::string& strDir, const CStoreDocument& document,
                  const std::string& strText, std::ostream& output, std::ostream& errors) {
    const std::string strFile = DocumentFile(strDir, document);
    const std::string strError = WriteWholeFile(strFile, strText);
    if (!strError.empty()) {
        errors << ShownText(strFile) << ": " << strError << '\n';
        return EXIT_COULD_NOT;
    }
    const std::string strPath = ShownText(StorePath(document));
    output << strPath << ": exported to " << ShownText(strFile) << ", " << strText.size()
           << " bytes\n";
    if (const auto fault = FindRefusal(document, strText)) {
        errors << strPath
               << ": exported as it stands, and is no good document: " << ShownText(TextOf(*fault))
               << '\n';
        return EXIT_REFUSED;
    }
    return EXIT_DONE;
}

}  // namespace

int Export(IStore& store, const std::string& strPlace, const std::string& strDir,
           std::ostream& output, std::ostream& errors) {
    CDocumentTexts texts;
    int iResult = CollectTexts(store, texts, output, errors);
    if (texts.empty()) {
        errors << "no document in " << strPlace << ", nothing was exported\n";
        return EXIT_COULD_NOT;
    }
    std::error_code error;
    fs::create_directories(strDir, error);
    if (error) {
        errors << ShownText(strDir) << ": " << error.message() << '\n';
        return EXIT_COULD_NOT;
    }
    for (const auto& [pDocument, strText] : texts) {
        // The exit codes of what went less well are the higher ones.
        iResult = std::max(iResult, WriteDocument(strDir, *pDocument, strText, output, errors));
    }
    return iResult;
}
