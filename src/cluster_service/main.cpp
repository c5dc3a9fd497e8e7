#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "command/change.h"
#include "command/check.h"
#include "command/exit_code.h"
#include "command/held_log.h"
#include "command/import_export.h"
#include "command/load.h"
#include "command/open_store.h"
#include "command/show.h"
#include "options.h"
#include "reference_host/host_settings.h"
#include "reference_host/spd_logger.h"

namespace {

/// Null, said on the standard error stream, when the file cannot be written. A logger is never
/// destroyed: what goes down after main may still log.
Logger* OpenLogger(const COptions& options) {
    CSpdLoggerSettings settings;
    settings.eLevel = options.eLogLevel;
    settings.strFile = options.strLogFile;
    settings.bConsole = options.strLogFile.empty();
    std::string strError;
    Logger* pLogger = CSpdLogger::Open(settings, strError).release();
    if (pLogger == nullptr) {
        std::cerr << "cannot log to " << options.strLogFile << ": " << strError << '\n';
    }
    return pLogger;
}

struct CCommand {
    const char* pszName;
    bool bCreatesStore;
    int (*pRun)(const COptions& options);
    bool (*pNeedsStore)(const COptions& options) = [](const COptions&) { return true; };
};

constexpr CCommand COMMANDS[] = {
    {"import", true,
     [](const COptions& o) { return Import(o.strDir, o.bYes, std::cout, std::cerr); }},
    {"export", false, [](const COptions& o) { return Export(o.strDir, std::cout, std::cerr); }},
    {"check", false, [](const COptions&) { return Check(std::cout, std::cerr); }},
    {"show", false,
     [](const COptions& o) { return Show(o.strSubject, o.bJson, std::cout, std::cerr); },
     [](const COptions& o) { return ShowNeedsStore(o.strSubject); }},
    {"remove", false,
     [](const COptions& o) {
         return Remove(o.strNodeId, o.strContainerType, o.bYes, std::cout, std::cerr);
     }},
    {"promote", false,
     [](const COptions& o) { return Promote(o.strNodeId, o.bYes, std::cout, std::cerr); }},
};

/// False, said on the standard error stream, when the store cannot be opened.
bool UseStore(const COptions& options, bool bCreate) {
    std::string strError;
    std::shared_ptr<IStore> pStore = OpenStore(options.strStore, bCreate, strError);
    if (pStore == nullptr) {
        std::cerr << "cannot open the store " << options.strStore << ": " << strError << '\n';
        return false;
    }
    SetStore(std::move(pStore));
    return true;
}

int RunCommand(const CCommand& command, const COptions& options) {
    if (command.pNeedsStore(options) && !UseStore(options, command.bCreatesStore)) {
        return EXIT_COULD_NOT;
    }
    const CServiceGuard guard;
    const int iResult = command.pRun(options);
    if (!std::cout.flush()) {
        std::cerr << "cannot write to the standard output\n";
        return EXIT_COULD_NOT;
    }
    return iResult;
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
    static CHeldLog& held = *new CHeldLog(options.eLogLevel);
    OMAdapter::getInstance().setLogger(&held);
    const int iResult = RunNamedCommand(options);
    OMAdapter::getInstance().setLogger(&logger);
    if (iResult == EXIT_COULD_NOT) {
        held.ReleaseTo(logger);
    }
    return iResult;
}

int Run(int argc, char** argv) {
    COptions options;
    int iExitCode = EXIT_DONE;
    if (!ParseOptions(argc, argv, ShowSubjects(), options, iExitCode)) {
        return iExitCode;
    }
    Logger* pLogger = OpenLogger(options);
    if (pLogger == nullptr) {
        return EXIT_COULD_NOT;
    }
    Configure(
        {options.strClusterCode, options.strLocalIp, options.strLibDir, options.strConfigDir});
    if (!options.bLogWanted) {
        return RunWithHeldLog(options, *pLogger);
    }
    OMAdapter::getInstance().setLogger(pLogger);
    return RunNamedCommand(options);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& exception) {
        std::cerr << "cluster_service: " << exception.what() << '\n';
        return EXIT_COULD_NOT;
    }
}
