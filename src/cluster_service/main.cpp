#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "agents/agents.h"
#include "command/check.h"
#include "command/cluster_holder.h"
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
#include "serve/serve.h"
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

constexpr char PSZ_SERVE[] = "serve";

bool NeedsStore(const COptions&) {
    return true;
}

std::optional<CServiceRequest> NoRequest(const COptions&) {
    return std::nullopt;
}

/// A service that runs the cluster writes its documents as it knows them.
int CheckNobodyHolds(const COptions& options, CStage& stage,
                     const std::optional<CServiceRequest>& request) {
    return options.bForce
               ? EXIT_DONE
               : CheckNobodyHolds(*stage.GetStore(), PlaceOf(options), request, std::cerr);
}

struct CCommand {
    const char* pszName;
    EOpenStore eOpen;
    int (*pRun)(const COptions& options, CStage& stage);
    bool (*pNeedsStore)(const COptions& options) = NeedsStore;

    /// The request to a service that does the same; none when nothing does.
    std::optional<CServiceRequest> (*pRequest)(const COptions& options) = NoRequest;

    /// It finds out by itself whether it changes the store, and checks then that nobody holds it.
    bool bChecksItself = false;
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
     },
     NeedsStore,
     [](const COptions& o) {
         return std::make_optional(RemovalRequest(o.strNodeId, o.strContainerType));
     }},
    {"promote", EOpenStore::TO_CHANGE,
     [](const COptions& o, CStage& stage) {
         return Promote(stage, o.strNodeId, ChangeOptions(o), std::cout, std::cerr);
     },
     NeedsStore,
     [](const COptions& o) { return std::make_optional(PromotionRequest(o.strNodeId)); }},
    {"agents", EOpenStore::TO_READ,
     [](const COptions& o, CStage&) {
         return Agents({o.strServer, o.strStory, o.bJson, o.bStay}, std::cout, std::cerr);
     },
     [](const COptions&) { return false; }},
    {"play", EOpenStore::TO_CHANGE,
     [](const COptions& o, CStage& stage) {
         CStepClock clock;
         const auto mayChange = [&] { return CheckNobodyHolds(o, stage, std::nullopt); };
         return Play(stage, clock, {o.strFile, o.journal, o.bDryRun, o.bJson, mayChange}, std::cout,
                     std::cerr);
     },
     NeedsStore, NoRequest, true},
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

bool Changes(const CCommand& command, const COptions& options) {
    return !options.bDryRun &&
           (command.eOpen == EOpenStore::TO_CREATE || command.eOpen == EOpenStore::TO_CHANGE);
}

/// Null, said on the standard error stream, when it cannot be opened.
std::shared_ptr<IStore> OpenNamedStore(const std::string& strStore, EOpenStore eOpen) {
    std::string strError;
    std::shared_ptr<IStore> pStore = OpenStore(strStore, eOpen, strError);
    if (pStore == nullptr) {
        std::cerr << "cannot open the store " << ShownText(strStore) << ": " << ShownText(strError)
                  << '\n';
    }
    return pStore;
}

int RunCommand(const CCommand& command, const COptions& options) {
    const std::string strStore = command.pNeedsStore(options) ? options.strStore : "memory";
    const EOpenStore eOpen = OpenFor(command, options);
    std::shared_ptr<IStore> pStore = OpenNamedStore(strStore, eOpen);
    if (pStore == nullptr) {
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
    if (Changes(command, options) && !command.bChecksItself) {
        if (const int iResult = CheckNobodyHolds(options, *pStage, command.pRequest(options));
            iResult != EXIT_DONE) {
            return iResult;
        }
    }
    return command.pRun(options, *pStage);
}

/// When nobody asked for a log, it is kept until it is known whether anybody wants it: every load
/// logs errors that need no action.
void BeginHeldLog(const COptions& options) {
    static CHeldLog& held = *new CHeldLog(options.eLogLevel, CHeldLog::EKeep::FAILURES);
    if (!options.bLogWanted) {
        OMAdapter::getInstance().setLogger(&held);
    }
}

void EndHeldLog(Logger& logger, bool bWanted) {
    CHeldLog* const pHeld = LogOfFailures();
    if (pHeld == nullptr) {
        return;
    }
    OMAdapter::getInstance().setLogger(&logger);
    if (bWanted) {
        pHeld->ReleaseTo(logger);
    }
}

/// The service takes its store down by itself, and writes to it without a stage.
int RunService(const COptions& options, Logger& logger) {
    std::shared_ptr<IStore> pStore = OpenNamedStore(options.strStore, EOpenStore::TO_CHANGE);
    if (pStore == nullptr ||
        (IsStoreKept(options.strStore) &&
         !IsPlaceThere(*pStore, PlaceOf(options), EMayBeMissing::NOTHING, std::cerr))) {
        return EXIT_COULD_NOT;
    }
    std::cout << PlaceText(PlaceOf(options)) << std::endl;
    CStepClock clock;
    const auto onStarted = [&logger](bool bRuns) { EndHeldLog(logger, !bRuns); };
    return Serve(options.service, PlaceOf(options), std::move(pStore), clock, onStarted, std::cout,
                 std::cerr);
}

int RunNamedCommand(const COptions& options) {
    for (const CCommand& command : COMMANDS) {
        if (options.strCommand == command.pszName) {
            return RunCommand(command, options);
        }
    }
    return EXIT_COULD_NOT;
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
    BeginHeldLog(options);
    const int iResult =
        options.strCommand == PSZ_SERVE ? RunService(options, *pLogger) : RunNamedCommand(options);
    EndHeldLog(*pLogger, iResult == EXIT_COULD_NOT);
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
