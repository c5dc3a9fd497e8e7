#include "service_process.h"

#include <unistd.h>

#include <cstdlib>
#include <stdexcept>
#include <vector>

namespace {

/// Becomes the program.
void Execute(const std::string& strStore, const std::vector<std::string>& command) {
    std::vector<std::string> words{
        SERVICE_PROGRAM, "--store",    "sqlite:" + strStore, "--lib-dir", PLUGIN_LIB_DIR,
        "--config-dir",  SAMPLE_DIR,   "--cluster-code",     "Main",      "--log-level",
        "warning",       "--log-file", strStore + ".log"};
    words.insert(words.end(), command.begin(), command.end());
    std::vector<char*> arguments;
    for (std::string& strWord : words) {
        arguments.push_back(strWord.data());
    }
    arguments.push_back(nullptr);
    execv(SERVICE_PROGRAM, arguments.data());
}

}  // namespace

CScratchFolder::CScratchFolder() {
    std::string strFolder = std::filesystem::temp_directory_path() / "service_bench.XXXXXX";
    if (mkdtemp(strFolder.data()) == nullptr) {
        throw std::runtime_error("cannot make " + strFolder);
    }
    m_folder = strFolder;
}

CScratchFolder::~CScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

CServiceProcess::CServiceProcess(const CScratchFolder& folder, const std::string& strDocuments)
    : m_strStore(folder.In("store.db")) {
    CChildProcess([&] { Execute(m_strStore, {"import", "--yes", strDocuments}); }).AwaitEnd();
    m_process.emplace([&] {
        Execute(m_strStore,
                {"serve", "--listen", "127.0.0.1:0", "--silence", "86400", "--take-up", "86400"});
    });
    m_uiPort = m_process->AwaitPort();
}
