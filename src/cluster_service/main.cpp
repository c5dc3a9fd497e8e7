#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "command/check.h"
#include "command/cluster_place.h"
#include "command/exit_code.h"
#include "command/export.h"
#include "command/held_log.h"
#include "command/import.h"
#include "command/load.h"
#include "command/open_store.h"
#include "command/play.h"
#include "command/promote.h"
#include "command/remove.h"
#include "command/show.h"
#include "command/standard_streams.h"
#include "options.h"
#include "reference_host/host_settings.h"
#include "reference_host/shown_text.h"
#include "reference_host/spd_logger.h"
#include "step_clock/step_clock.h"

namespace {

/// Null, said on the standard error stream, when the file cannot be written. A logger is never
/// destroyed: what goes down after main may still log.
CSpdLogger* OpenLogger(const COptions& options) {
    CSpdLoggerSettings settings;
    settings.eLevel = options.eLogLevel;
    settings.strFile = options.strLogFile;
    settings.bConsole = options.strLogFile.empty();
    std::string strError;
    CSpdLogger* pLogger = CSpdLogger::Open(settings, strError).release();
    if (pLogger == nullptr) {
        std::cerr << "cannot log to " << ShownText(options.strLogFile) << ": "
                  << ShownText(strError) << '\n';
    }
    return pLogger;
}

CClusterPlace PlaceOf(const COptions& options) {
    return {options.strClusterCode, options.strStore};
}

CChangeOptions ChangeOptions(const COptions& options) {
    return {options.bYes, options.bDryRun, options.bJson, options.strUndoFile,
            PlaceText(PlaceOf(options))};
}

struct CCommand {
    const char* pszName;
    EOpenStore eOpen;
    int (*pRun)(const COptions& options, CStage& stage);
    bool (*pNeedsStore)(const COptions& options) = [](const COptions&) { return true; };
};

constexpr CCommand COMMANDS[] = {
    {"import", EOpenStore::TO_CREATE,
     [](const COptions& o, CStage& stage) {
         return Import(stage, o.strDir, IsStoreKept(o.strStore), ChangeOptions(o), std::cout,
                       std::cerr);
     }},
    {"diff", EOpenStore::TO_FORESEE,
     [](const COptions& o, CStage& stage) {
         CChangeOptions change = ChangeOptions(o);
         change.bDryRun = true;
         return Import(stage, o.strDir, false, change, std::cout, std::cerr);
     }},
    {"export", EOpenStore::TO_READ,
     [](const COptions& o, CStage& stage) {
         return Export(stage, PlaceText(PlaceOf(o)), o.strDir, std::cout, std::cerr);
     }},
    {"check", EOpenStore::TO_CHECK,
     [](const COptions& o, CStage&) {
         return Check({o.strDir, o.strStore, o.bJson}, std::cout, std::cerr);
     }},
    {"show", EOpenStore::TO_READ,
     [](const COptions& o, CStage&) { return Show(o.strSubject, o.bJson, std::cout, std::cerr); },
     [](const COptions& o) { return ShowNeedsStore(o.strSubject); }},
    {"remove", EOpenStore::TO_CHANGE,
     [](const COptions& o, CStage& stage) {
         return Remove(stage, o.strNodeId, o.strContainerType, ChangeOptions(o), std::cout,
                       std::cerr);
     }},
    {"promote", EOpenStore::TO_CHANGE,
     [](const COptions& o, CStage& stage) {
         return Promote(stage, o.strNodeId, ChangeOptions(o), std::cout, std::cerr);
     }},
    {"play", EOpenStore::TO_CHANGE,
     [](const COptions& o, CStage& stage) {
         CStepClock clock;
         return Play(stage, clock, {o.strFile, o.strJournal, o.ullJournalBytes, o.bDryRun, o.bJson},
                     std::cout, std::cerr);
     }},
};

/// Files are checked before they are in a store, and so before there may be one.
EOpenStore OpenFor(const CCommand& command, const COptions& options) {
    const bool bFiles = command.eOpen == EOpenStore::TO_CHECK && !options.strDir.empty();
    return bFiles ? EOpenStore::TO_FORESEE : command.eOpen;
}

EMayBeMissing MayBeMissing(EOpenStore eOpen) {
    const bool bNew = eOpen == EOpenStore::TO_CREATE || eOpen == EOpenStore::TO_FORESEE;
    return bNew ? EMayBeMissing::CLUSTER : EMayBeMissing::NOTHING;
}

int RunCommand(const CCommand& command, const COptions& options) {
    const std::string strStore = command.pNeedsStore(options) ? options.strStore : "memory";
    const EOpenStore eOpen = OpenFor(command, options);
    std::string strError;
    std::shared_ptr<IStore> pStore = OpenStore(strStore, eOpen, strError);
    if (pStore == nullptr) {
        std::cerr << "cannot open the store " << ShownText(strStore) << ": " << ShownText(strError)
                  << '\n';
        return EXIT_COULD_NOT;
    }
    const auto pStage = std::make_shared<CStage>(std::move(pStore));
    SetStore(pStage);
    const CServiceGuard guard;
    const bool bDamaged = eOpen == EOpenStore::TO_CHECK && !FindStoreDamage(strStore).empty();
    if (IsStoreKept(strStore) && !bDamaged &&
        !IsPlaceThere(*pStage, PlaceOf(options), MayBeMissing(eOpen), std::cerr)) {
        return EXIT_COULD_NOT;
    }
    return command.pRun(options, *pStage);
}

int RunNamedCommand(const COptions& options) {
    for (const CCommand& command : COMMANDS) {
        if (options.strCommand == command.pszName) {
            return RunCommand(command, options);
        }
    }
    return EXIT_COULD_NOT;
}

/// The log of a command that went well, when nobody asked for a log, is of no interest: every load
/// logs errors that need no action.
int RunWithHeldLog(const COptions& options, Logger& logger) {
    static CHeldLog& held = *new CHeldLog(options.eLogLevel, CHeldLog::EKeep::FAILURES);
    OMAdapter::getInstance().setLogger(&held);
    const int iResult = RunNamedCommand(options);
    OMAdapter::getInstance().setLogger(&logger);
    if (iResult == EXIT_COULD_NOT) {
        held.ReleaseTo(logger);
    }
    return iResult;
}

/// What a command ends with whose output was not all written.
int WithoutItsOutput(int iResult) {
    return iResult == EXIT_NOT_KNOWN ? iResult : EXIT_COULD_NOT;
}

int Run(int argc, char** argv) {
    COptions options;
    int iExitCode = EXIT_DONE;
    if (!ParseOptions(argc, argv, ShowSubjects(), options, iExitCode)) {
        return iExitCode;
    }
    CSpdLogger* const pLogger = OpenLogger(options);
    if (pLogger == nullptr) {
        return EXIT_COULD_NOT;
    }
    Configure(
        {options.strClusterCode, options.strLocalIp, options.strLibDir, options.strConfigDir});
    OMAdapter::getInstance().setLogger(pLogger);
    const int iResult =
        options.bLogWanted ? RunNamedCommand(options) : RunWithHeldLog(options, *pLogger);
    return pLogger->HasLostLines() ? WithoutItsOutput(iResult) : iResult;
}

int RunCaught(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& exception) {
        std::cerr << "cluster_service: " << ShownText(exception.what()) << '\n';
        return EXIT_COULD_NOT;
    }
}

}  // namespace

int main(int argc, char** argv) {
    PrepareStandardStreams();
    const int iResult = RunCaught(argc, argv);
    if (AreStandardStreamsWritten()) {
        return iResult;
    }
    std::cerr << "cannot write to the standard output\n";
    return WithoutItsOutput(iResult);
}
