#include <exception>
#include <iostream>
#include <memory>
#include <string>

#include "check.h"
#include "common_service/directory.h"
#include "common_service/global_config.h"
#include "common_service/reference/spd_logger.h"
#include "common_service/tarn_conf.h"
#include "exit_code.h"
#include "import_export.h"
#include "load.h"
#include "options.h"
#include "show.h"
#include "store_name.h"

namespace {

/// The logger is never destroyed: what goes down after main may still log.
bool OpenLogger(const COptions& options) {
    CSpdLoggerSettings settings;
    settings.eLevel = options.eLogLevel;
    settings.strFile = options.strLogFile;
    settings.bConsole = options.strLogFile.empty();
    std::string strError;
    OMAdapter::getInstance().setLogger(CSpdLogger::Open(settings, strError).release());
    if (OMAdapter::getInstance().getLogger() == nullptr) {
        std::cerr << "cannot log to " << options.strLogFile << ": " << strError << '\n';
        return false;
    }
    return true;
}

void Configure(const COptions& options) {
    CTARNConf::m_oConf.SetCstClusterCode(options.strClusterCode);
    CGlobalConfig::Instance().SetLocalIp(options.strLocalIp);
    HALD::set_lib_directory(options.strLibDir);
    HALD::set_config_directory(options.strConfigDir);
}

struct CCommand {
    const char* pszName;
    bool bCreatesStore;
    int (*pRun)(const COptions& options);
};

constexpr CCommand COMMANDS[] = {
    {"import", true, [](const COptions& o) { return Import(o.strDir, std::cout, std::cerr); }},
    {"export", false, [](const COptions& o) { return Export(o.strDir, std::cout, std::cerr); }},
    {"check", false, [](const COptions&) { return Check(std::cout, std::cerr); }},
    {"show", false,
     [](const COptions& o) { return Show(o.strSubject, o.bJson, std::cout, std::cerr); }},
};

int RunCommand(const CCommand& command, const COptions& options) {
    std::string strError;
    std::shared_ptr<IStore> pStore = OpenStore(options.strStore, command.bCreatesStore, strError);
    if (pStore == nullptr) {
        std::cerr << "cannot open the store " << options.strStore << ": " << strError << '\n';
        return EXIT_COULD_NOT;
    }
    SetStore(std::move(pStore));
    const CServiceGuard guard;
    const int iResult = command.pRun(options);
    if (!std::cout.flush()) {
        std::cerr << "cannot write to the standard output\n";
        return EXIT_COULD_NOT;
    }
    return iResult;
}

int Run(int argc, char** argv) {
    COptions options;
    int iExitCode = EXIT_DONE;
    if (!ParseOptions(argc, argv, ShowSubjects(), options, iExitCode)) {
        return iExitCode;
    }
    if (!OpenLogger(options)) {
        return EXIT_COULD_NOT;
    }
    Configure(options);
    for (const CCommand& command : COMMANDS) {
        if (options.strCommand == command.pszName) {
            return RunCommand(command, options);
        }
    }
    return EXIT_COULD_NOT;
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
