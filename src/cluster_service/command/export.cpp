#include "command/export.h"

#include <filesystem>
#include <utility>
#include <vector>

#include "command/document_file.h"
#include "command/exit_code.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "command/whole_file.h"
#include "reference_host/shown_text.h"

namespace {

namespace fs = std::filesystem;

using CDocumentTexts = std::vector<std::pair<const CStoreDocument*, std::string>>;

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
        const std::string strFile = DocumentFile(strDir, *pDocument);
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
