#pragma once

#include <spdlog/sinks/base_sink.h>

#include <cstddef>
#include <mutex>
#include <string>

/// A log file that several programs may write and rotate at once: every line goes to its end whole,
/// the file is rotated by one of them, and the others follow. Before the file would grow beyond its
/// size it becomes "log.1", that one "log.2", up to the number of older files. What is no regular
/// file, such as a pipe, is written and never rotated. A line that cannot be written is thrown as
/// spdlog::spdlog_ex, which the logger takes.
class CSharedLogFile : public spdlog::sinks::base_sink<std::mutex> {
public:
    /// Throws spdlog::spdlog_ex when the file cannot be opened.
    CSharedLogFile(std::string strFile, std::size_t uiMaxSize, std::size_t uiOlderFiles);
    ~CSharedLogFile() override;

    CSharedLogFile(const CSharedLogFile&) = delete;
    CSharedLogFile& operator=(const CSharedLogFile&) = delete;

protected:
    void sink_it_(const spdlog::details::log_msg& message) override;
    void flush_() override {}

private:
    void Open();
    void Close();

    /// Locks the file that bears the name now, against the other programs.
    void LockCurrent();
    std::size_t GetSize() const;
    void Rotate();
    void Write(const char* pszText, std::size_t uiLength) const;

    const std::string m_strFile;
    const std::size_t m_uiMaxSize;
    const std::size_t m_uiOlderFiles;
    int m_iFile = -1;
    bool m_bRegular = false;
};
