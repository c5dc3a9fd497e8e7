#include "options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <filesystem>
#include <iostream>
#include <map>

#include "command/exit_code.h"
#include "command/open_store.h"
#include "command/store_document.h"
#include "reference_host/shown_text.h"

namespace {

namespace fs = std::filesystem;

constexpr char PSZ_SUBCOMMAND_FOOTER[] =
    "\n\nThe options of every command, such as --store: cluster_service --help";

const std::map<std::string, ORVA_LOG_LEVEL> LOG_LEVELS{
    {"err", ORVALOG_ERR},   {"warning", ORVALOG_WARNING}, {"notice", ORVALOG_NOTICE},
    {"info", ORVALOG_INFO}, {"debug", ORVALOG_DEBUG},
};

fs::path PrefixOfProgram() {
    std::error_code error;
    return fs::read_symlink("/proc/self/exe", error).parent_path().parent_path();
}

/// The first of the prefix' library folders that has the service's libraries.
std::string DefaultLibDir() {
    const fs::path prefix = PrefixOfProgram();
    const fs::path installed = prefix / PSZ_INSTALL_LIB_DIR / "framework_service";
    std::error_code error;
    return fs::exists(installed, error) ? installed : prefix / "lib" / "framework_service";
}

std::string DefaultConfigDir() {
    return PrefixOfProgram() / "etc" / "framework_service";
}

std::string CheckClusterCode(const std::string& strCode) {
    const bool bUsable =
        !strCode.empty() && std::all_of(strCode.begin(), strCode.end(), [](unsigned char c) {
            return c > ' ' && c != '/' && c != 0x7F;
        });
    return bUsable ? "" : "a cluster code has no blank and no \"/\", and is not empty";
}

std::string FilesOfDocuments() {
    std::string strFiles;
    for (const CStoreDocument& document : StoreDocuments()) {
        strFiles.append("\n  ").append(document.pszFile);
        strFiles.append(", at most ").append(std::to_string(document.GetMaxSize()));
        strFiles.append(" bytes");
    }
    return strFiles;
}

void AddGlobalOptions(CLI::App& app, COptions& options) {
    app.add_option("--store", options.strStore,
                   "where the documents are: sqlite:FILE, zookeeper:HOST:PORT,HOST:PORT, or "
                   "memory, which is empty at the start and gone at the end")
        ->check(CheckStoreName)
        ->type_name("STORE")
        ->capture_default_str();
    app.add_option("--cluster-code", options.strClusterCode,
                   "the cluster, when a store holds several: its documents are below /CloudCODE")
        ->check(CheckClusterCode)
        ->type_name("CODE")
        ->capture_default_str();
    app.add_option("--lib-dir", options.strLibDir,
                   "the folder of the service's libraries; every file of its folder \"plugins\" "
                   "is loaded as a plug-in")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR")
        ->default_str("beside the program");
    app.add_option("--config-dir", options.strConfigDir,
                   "the folder of the service's configuration, with the folder \"taskmodel\"")
        ->check(CLI::ExistingDirectory)
        ->type_name("DIR")
        ->default_str("beside the program");
    app.add_option("--local-ip", options.strLocalIp,
                   "the address of this node; links from it stay valid whatever the cluster says")
        ->check(CLI::ValidIPV4)
        ->type_name("IP");
    app.add_option("--log-level", options.strLogLevel,
                   "the last level that is logged; without this and --log-file, the standard error "
                   "stream gets the log of a command that failed and no other")
        ->check(CLI::IsMember(&LOG_LEVELS))
        ->capture_default_str();
    app.add_option("--log-file", options.strLogFile,
                   "log to this file, rotated at 10 MiB, and not to the standard error stream")
        ->type_name("FILE");
}

void AddFolder(CLI::App& command, COptions& options, const char* pszDescription) {
    command.add_option("DIR", options.strDir, pszDescription)->required()->type_name("");
}

void AddNode(CLI::App& command, COptions& options) {
    command.add_option("NODE", options.strNodeId, "the node's id, as \"show nodes\" prints it")
        ->required()
        ->type_name("");
}

void AddJson(CLI::App& command, COptions& options, const char* pszDescription) {
    command.add_flag("--json", options.bJson, pszDescription);
}

void AddForce(CLI::App& command, COptions& options) {
    command.add_flag("--force", options.bForce,
                     "change the store also while a service runs the cluster; the two may write "
                     "over each other");
}

constexpr char PSZ_JSON_DIFFERENCE[] = "show what would be different as JSON";

void AddChangeOptions(CLI::App& command, COptions& options) {
    command.add_flag("-y,--yes", options.bYes, "go ahead without asking");
    command.add_flag("--dry-run", options.bDryRun, "show what would be different, change nothing");
    AddForce(command, options);
    AddJson(command, options, PSZ_JSON_DIFFERENCE);
    command
        .add_option("--undo", options.strUndoFile,
                    "keep the former texts in this new file; an import of it takes the change back")
        ->type_name("FILE");
}

void AddDocumentCommands(CLI::App& app, COptions& options) {
    CLI::App* pImport = app.add_subcommand(
        "import", "Reads the documents from the files of a folder into the store.");
    AddFolder(*pImport, options, "the folder, or a file that --undo has written");
    pImport->get_option("DIR")->check(CLI::ExistingPath);
    AddChangeOptions(*pImport, options);
    pImport->footer("The files, of which some may be missing:" + FilesOfDocuments() +
                    "\nThe store gets each text as it stands in its file. When one file is refused "
                    "nothing is\nimported. You are shown what would be different and asked; the "
                    "documents change together or\nnot at all. With --store memory the files are "
                    "only looked at.");

    CLI::App* pDiff = app.add_subcommand(
        "diff", "Shows what an import of the files of a folder would change; changes nothing.");
    AddFolder(*pDiff, options, "the folder, or a file that --undo has written");
    pDiff->get_option("DIR")->check(CLI::ExistingPath);
    AddJson(*pDiff, options, PSZ_JSON_DIFFERENCE);

    CLI::App* pExport =
        app.add_subcommand("export", "Writes the documents of the store to the files of a folder.");
    AddFolder(*pExport, options, "the folder; made when it is missing");
    pExport->footer("The files:" + FilesOfDocuments() +
                    "\nEach file gets the text as it stands in the store, whole or not at all. "
                    "Files of documents\nthat the store does not have are left alone.");
}

void AddLookCommands(CLI::App& app, const std::vector<std::string>& subjects, COptions& options) {
    CLI::App* pCheck =
        app.add_subcommand("check", "Reads every document and reports what is wrong with them.");
    pCheck
        ->add_option("DIR", options.strDir,
                     "a folder: its files are checked as if the store held them, and the store's "
                     "own documents where a file is missing")
        ->check(CLI::ExistingDirectory)
        ->type_name("");
    AddJson(*pCheck, options, "as JSON instead of a table");
    pCheck->footer(
        "Changes nothing. An \"error\" makes a load fail or a document useless, a \"warning\" "
        "makes it\ngo another way than its author meant. Notes, such as on an absent document, "
        "are printed\nand do not count.");

    CLI::App* pShow = app.add_subcommand(
        "show", "Loads plug-ins, configuration and cluster as a service does, and shows them.");
    pShow->add_option("SUBJECT", options.strSubject, "what to show; all when it is left out")
        ->check(CLI::IsMember(subjects))
        ->type_name("");
    AddJson(*pShow, options, "as JSON instead of tables");
    pShow->footer("Changes nothing. A document that is not in the store is shown empty.");
}

void AddChangeCommands(CLI::App& app, COptions& options) {
    CLI::App* pRemove = app.add_subcommand(
        "remove", "Takes a container out of the stored cluster, and its node with the last one.");
    AddNode(*pRemove, options);
    pRemove->add_option("TYPE", options.strContainerType, "the type of the container to remove")
        ->required()
        ->type_name("");
    AddChangeOptions(*pRemove, options);
    pRemove->footer(
        "You are shown what would be different and asked, and told what the store holds "
        "afterwards. The cluster\ndocument is written anew: nodes behind a removed one are written "
        "as removed too.\nThe container's entries in the other documents stay.");

    CLI::App* pPromote = app.add_subcommand(
        "promote", "Makes a slave of the centre database its master; the two change places.");
    AddNode(*pPromote, options);
    AddChangeOptions(*pPromote, options);
    pPromote->footer(
        "You are asked before the store changes, and told what it holds afterwards. "
        "Ports and\ntokens stay with their places.");
}

constexpr int64_t NUMERIC_DAY = 86400;

/// A setting in seconds or of a number.
template <typename T>
void AddSetting(CLI::App& command, const char* pszName, T& value, int64_t iLeast, int64_t iMost,
                const char* pszDescription) {
    command.add_option(pszName, value, pszDescription)
        ->check(CLI::Range(iLeast, iMost))
        ->capture_default_str()
        ->type_name("N");
}

/// The journal of a run; the option that names it.
CLI::Option* AddJournal(CLI::App& command, CJournalSettings& journal, const char* pszDescription) {
    CLI::Option* const pFile =
        command.add_option("--journal", journal.strFile, pszDescription)->type_name("FILE");
    AddSetting(command, "--journal-bytes", journal.ullMaxBytes, 1, INT64_MAX,
               "when the journal has grown so far, go on in FILE.2, FILE.3, ...");
    AddSetting(command, "--journal-files", journal.uiKept, 0, 1000000,
               "keep so many files of the journal, the newest; 0: all");
    return pFile;
}

void AddPlayCommand(CLI::App& app, COptions& options) {
    CLI::App* pPlay = app.add_subcommand(
        "play", "Runs the cluster by a file of inputs, each at its time, and tells what happens.");
    pPlay->add_option("FILE", options.strFile, "a story or a journal: JSON lines")
        ->required()
        ->check(CLI::ExistingFile)
        ->type_name("");
    pPlay->add_flag("--dry-run", options.bDryRun, "leave the store as it is");
    AddForce(*pPlay, options);
    AddJson(*pPlay, options, "a JSON line for each event, answer and table");
    AddJournal(*pPlay, options.journal, "write what is played to this new file")
        ->check(CLI::NonexistentPath);
    pPlay->footer(
        "Loads the cluster as a service does, under the time of the first line, and lets every "
        "second pass.\nA line is an input, or says what has to have happened by then: what has not "
        "is told, and the\nexit status is 1. Nothing is asked; the documents change as they would "
        "under a service.\n\n"
        "  # any morning\n"
        "  {\"story\":1, \"day\":\"2026-03-04\"}\n"
        "  {\"time\":\"06:00:00\", \"input\":\"node_report\", \"node\":\"n1\", \"every\":30, "
        "\"until\":\"07:00:00\"}\n"
        "  {\"time\":\"07:02:00\", \"expect\":{\"event\":\"offline\", \"node\":\"n1\"}}");
}

void AddAgentsCommand(CLI::App& app, COptions& options) {
    CLI::App* pAgents = app.add_subcommand(
        "agents", "Lives a story with a service that is up, as the agents of its cluster.");
    pAgents->add_option("--server", options.strServer, "where the service listens")
        ->capture_default_str()
        ->type_name("URL");
    pAgents->add_option("--story", options.strStory, "the story: JSON lines, as for \"play\"")
        ->capture_default_str()
        ->type_name("FILE");
    pAgents->add_flag("--stay", options.bStay,
                      "behind the story the agents go on until Ctrl-C, for a browser");
    AddJson(*pAgents, options, "a JSON line for each event, answer and table");
    pAgents->footer(
        "Speaks the service's public interface alone and needs no store. Each machine of the story "
        "is an agent\nthat reports three times in a silence, takes up the tasks that it is given, "
        "drops what it is told to\ndrop; what is no report is asked by an operator. The story's "
        "hours pass as soon as what its lines\nexpect has come true. What does not is told, and "
        "the exit status is 1; so it is when the service shows\nother tasks in the end than the "
        "agents have.");
}

void AddEngineSettings(CLI::App& command, CEngineSettings& engine) {
    AddSetting(command, "--silence", engine.iSilence, 1, NUMERIC_DAY,
               "who has not reported for longer, in seconds, is silent, and its work moves");
    AddSetting(command, "--take-up", engine.iTakeUp, 1, NUMERIC_DAY,
               "a task that is not taken up for so many seconds goes elsewhere");
    AddSetting(command, "--balance-period", engine.iBalancePeriod, 1, NUMERIC_DAY,
               "so many seconds from one load balance to the next");
    AddSetting(command, "--balance-moves", engine.uiBalanceMoves, 0, 10000,
               "so many moves of a load balance are carried out");
    AddSetting(command, "--first-pause", engine.iFirstPause, 1, NUMERIC_DAY,
               "so many seconds until work that found no room is tried again; the pause doubles");
    AddSetting(command, "--room-pause", engine.iRoomPause, 1, NUMERIC_DAY,
               "reports let the waiting work of a type be tried once in so many seconds");
    AddSetting(command, "--hold-containers", engine.uiHoldContainers, 1, 100000,
               "so many containers of a type that fall silent together hold its shifts, if they "
               "are more than a third of it");
    AddSetting(command, "--plugin-failures", engine.uiPluginFailures, 1, 1000,
               "so many failures in a row take a plug-in out of service");
}

void AddServeCommand(CLI::App& app, COptions& options) {
    CServiceSettings& service = options.service;
    CLI::App* pServe =
        app.add_subcommand("serve", "Runs the cluster, for agents and operators, over HTTP.");
    pServe->add_option("--listen", service.strListen, "where to listen, on this machine alone")
        ->take_last()
        ->capture_default_str()
        ->type_name("HOST:PORT");
    AddEngineSettings(*pServe, service.engine);
    AddSetting(*pServe, "--plugin-limit", service.iPluginMilliseconds, 1, 1000 * NUMERIC_DAY,
               "a plug-in's call may take so many milliseconds, beside its time in the store");
    AddSetting(*pServe, "--queue", service.uiQueueInputs, 1, 10000000,
               "so many inputs may wait; more are refused");
    AddJournal(*pServe, service.journal,
               "write every input to this file; when it is there already, to the next");
    pServe->footer(
        "Starts also while the cluster document cannot be read: it answers \"not ready\" then, and "
        "comes up\nwhen the document is mended. SIGTERM or Ctrl-C ends it within five seconds, a "
        "second one at once.");
}

void AddCommands(CLI::App& app, const std::vector<std::string>& subjects, COptions& options) {
    AddServeCommand(app, options);
    AddDocumentCommands(app, options);
    AddLookCommands(app, subjects, options);
    AddChangeCommands(app, options);
    AddPlayCommand(app, options);
    AddAgentsCommand(app, options);
    for (CLI::App* pCommand : app.get_subcommands({})) {
        pCommand->footer(pCommand->get_footer() + PSZ_SUBCOMMAND_FOOTER);
        pCommand->fallthrough();
        pCommand->callback([pCommand, &options] { options.strCommand = pCommand->get_name(); });
    }
}

/// Agents report every third of the silence. A service that slept through the rest of it would take
/// them for silent before they can be heard again: then nobody watched.
int64_t NobodyWatched(const CEngineSettings& engine) {
    constexpr int64_t NUMERIC_TICKS_MISSED = 2;  // fewer are a busy machine
    return std::clamp(engine.iSilence * 2 / 3, NUMERIC_TICKS_MISSED, engine.iNobodyWatched);
}

/// The word on the command line that stands where a command should; empty if there is none.
std::string UnknownCommand(const CLI::App& app) {
    const std::vector<std::string> words = app.remaining();
    const auto it = std::find_if(words.begin(), words.end(), [](const std::string& strWord) {
        return strWord.compare(0, 1, "-") != 0;
    });
    return app.get_subcommands().empty() && it != words.end() ? *it : "";
}

int ExplainUsage(const CLI::App& app, const CLI::ParseError& error) {
    const std::string strWord = UnknownCommand(app);
    if (error.get_exit_code() == 0 || strWord.empty()) {
        return app.exit(error) == 0 ? EXIT_DONE : EXIT_COULD_NOT;
    }
    std::cerr << "\"" << ShownText(strWord) << "\" is no command\n"
              << "cluster_service --help lists the commands\n";
    return EXIT_COULD_NOT;
}

}  // namespace

bool ParseOptions(int argc, char** argv, const std::vector<std::string>& subjects,
                  COptions& options, int& iExitCode) {
    CLI::App app{"Runs the cluster's documents: moves them, checks them, loads and shows them.",
                 "cluster_service"};
    app.set_version_flag("--version", PSZ_PROJECT_VERSION);
    app.set_config("--config", "", "a file with values for these options, as name = value")
        ->type_name("FILE");
    app.allow_config_extras(CLI::config_extras_mode::error);
    app.require_subcommand(1);
    app.footer(ExitCodeTable());
    app.failure_message([](const CLI::App*, const CLI::Error& error) {
        return ShownText(error.what()) + "\ncluster_service --help lists commands and options\n";
    });
    AddGlobalOptions(app, options);
    AddCommands(app, subjects, options);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        iExitCode = ExplainUsage(app, error);
        return false;
    }
    options.eLogLevel = LOG_LEVELS.at(options.strLogLevel);
    options.bLogWanted = !options.strLogFile.empty() || app.count("--log-level") > 0;
    options.service.engine.iNobodyWatched = NobodyWatched(options.service.engine);
    if (options.strLibDir.empty()) {
        options.strLibDir = DefaultLibDir();
    }
    if (options.strConfigDir.empty()) {
        options.strConfigDir = DefaultConfigDir();
    }
    return true;
}
