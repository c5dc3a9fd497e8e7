#include "command/import.h"

#include <filesystem>
#include <optional>
#include <utility>
#include <vector>

#include "command/document_fault.h"
#include "command/document_file.h"
#include "command/exit_code.h"
#include "command/store_document.h"
#include "command/store_text.h"
#include "reference_host/shown_text.h"
#include "reference_host/sqlite_store.h"

namespace {

namespace fs = std::filesystem;

/// A text that is to be imported, and where it comes from.
struct CImportText {
    const CStoreDocument* pDocument;
    std::string strFrom;
    std::string strText;
};

using CImportTexts = std::vector<CImportText>;

/// Collects the texts of the files that are there and good. Says what is wrong with the others.
int CollectFolder(const std::string& strDir, CImportTexts& texts, std::ostream& output,
                  std::ostream& errors) {
    int iResult = EXIT_DONE;
    for (const CStoreDocument& document : StoreDocuments()) {
        const std::string strFile = DocumentFile(strDir, document);
        if (!IsThere(strFile)) {
            output << ShownText(strFile) << ": no such file, " << ShownText(StorePath(document))
                   << " stays as it is\n";
            continue;
        }
        std::string strText;
        const std::string strError = ReadTextFile(strFile, document.GetMaxSize(), strText);
        if (!strError.empty()) {
            errors << ShownText(strFile) << ": cannot be read: " << strError << '\n';
            iResult = EXIT_COULD_NOT;
            continue;
        }
        if (const auto fault = FindRefusal(document, strText)) {
            errors << ShownText(strFile) << ": " << ShownText(TextOf(*fault)) << '\n';
            iResult = iResult == EXIT_DONE ? EXIT_REFUSED : iResult;
        }
        texts.push_back({&document, strFile, std::move(strText)});
    }
    return iResult;
}

/// Collects the texts of a store file, such as --undo keeps. They are taken as they are: the store
/// held them once.
int CollectStoreFile(const std::string& strFile, CImportTexts& texts, std::ostream& errors) {
    std::string strError;
    const std::shared_ptr<IStore> pStore = CSqliteStore::OpenReadOnly(strFile, strError);
    for (const CStoreDocument& document : StoreDocuments()) {
        CStoreAnswer answer;
        if (pStore == nullptr || pStore->Read(StorePath(document), nullptr, answer) != 0) {
            errors << ShownText(strFile) << ": cannot be read: " << ShownText(strError) << '\n';
            return EXIT_COULD_NOT;
        }
        if (answer.bExists) {
            texts.push_back({&document, strFile, answer.text.value_or("")});
        }
    }
    return EXIT_DONE;
}

/// Puts the texts on the stage. False, said, when the store failed.
bool PutOnStage(CStage& stage, const CImportTexts& texts, std::ostream& errors) {
    stage.BeginChange();
    for (const CImportText& text : texts) {
        const int iCode = stage.Write(StorePath(*text.pDocument), text.strText);
        if (!StoreAnswered(*text.pDocument, iCode, errors)) {
            return false;
        }
    }
    return true;
}

/// Names the texts of the store that another takes the place of; nothing is asked where there are
/// none.
std::string ReplacementQuestion(const std::vector<CStagedChange>& changes) {
    std::string strReplaced;
    for (const CStagedChange& change : changes) {
        if (change.before && !change.before->empty()) {
            strReplaced.append(" ").append(ShownText(change.strPath));
        }
    }
    return strReplaced.empty() ? "" : "Replace what the store holds otherwise:" + strReplaced + "?";
}

void ReportImport(const CImportTexts& texts, bool bKept, const std::string& strPlace,
                  std::ostream& output) {
    for (const CImportText& text : texts) {
        output << ShownText(text.strFrom)
               << (bKept ? ": imported to " : ": good, and kept nowhere: ")
               << ShownText(StorePath(*text.pDocument)) << ", " << text.strText.size()
               << " of at most " << text.pDocument->GetMaxSize() << " bytes\n";
    }
    if (bKept) {
        output << strPlace << " holds them now\n";
    }
}

}  // namespace

int Import(CStage& stage, const std::string& strFrom, bool bKept, const CChangeOptions& options,
           std::ostream& output, std::ostream& errors) {
    CImportTexts texts;
    const int iResult = fs::is_directory(strFrom) ? CollectFolder(strFrom, texts, output, errors)
                                                  : CollectStoreFile(strFrom, texts, errors);
    if (iResult != EXIT_DONE) {
        errors << "nothing was imported\n";
        return iResult;
    }
    if (texts.empty()) {
        errors << ShownText(strFrom) << ": no document in this folder\n";
        return EXIT_COULD_NOT;
    }
    CPlannedChange change;
    change.workOut = [&] { return PutOnStage(stage, texts, errors) ? EXIT_DONE : EXIT_COULD_NOT; };
    change.question = [&] { return ReplacementQuestion(stage.GetChanges()); };
    change.isAskedFor = [](const std::string&) { return true; };
    change.report = [&] { ReportImport(texts, bKept, options.strPlace, output); };
    return CarryOut(stage, change, options, output, errors);
}
