#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "child_process.h"

/// A folder of its own that goes with this object.
class CScratchFolder {
public:
    CScratchFolder();
    ~CScratchFolder();
    CScratchFolder(const CScratchFolder&) = delete;
    CScratchFolder& operator=(const CScratchFolder&) = delete;

    std::string In(const std::string& strName) const { return m_folder / strName; }

private:
    std::filesystem::path m_folder;
};

/// The program as its operators run it, on an SQLite store in the folder. Nobody falls silent in
/// its cluster for lack of reports.
class CServiceProcess {
public:
    /// Imports the documents of that folder and serves them.
    CServiceProcess(const CScratchFolder& folder, const std::string& strDocuments);

    uint16_t GetPort() const { return m_uiPort; }
    const std::string& GetStoreFile() const { return m_strStore; }

private:
    const std::string m_strStore;
    std::optional<CChildProcess> m_process;
    uint16_t m_uiPort = 0;
};
