#include "internal/shared_log_file.h"

#include <fcntl.h>
#include <spdlog/sinks/rotating_file_sink.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <utility>

namespace {

constexpr mode_t FILE_MODE = 0666;  // the umask takes what it takes

[[noreturn]] void Fail(const std::string& strWhat) {
    throw spdlog::spdlog_ex(strWhat, errno);
}

/// Unlocks a file at the end of a block; none when negative. A process that was forked meanwhile
/// would keep the lock beyond the file's closing.
class CUnlock {
public:
    explicit CUnlock(int iFile) : m_iFile(iFile) {}
    ~CUnlock() { flock(m_iFile, LOCK_UN); }
    CUnlock(const CUnlock&) = delete;
    CUnlock& operator=(const CUnlock&) = delete;

private:
    const int m_iFile;
};

}  // namespace

CSharedLogFile::CSharedLogFile(std::string strFile, std::size_t uiMaxSize, std::size_t uiOlderFiles)
    : m_strFile(std::move(strFile)), m_uiMaxSize(uiMaxSize), m_uiOlderFiles(uiOlderFiles) {
    Open();
}

CSharedLogFile::~CSharedLogFile() {
    Close();
}

void CSharedLogFile::Open() {
    m_iFile = open(m_strFile.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, FILE_MODE);
    struct stat status {};
    if (m_iFile < 0 || fstat(m_iFile, &status) != 0) {
        Fail("cannot open " + m_strFile);
    }
    m_bRegular = S_ISREG(status.st_mode);
}

void CSharedLogFile::Close() {
    if (m_iFile >= 0) {
        close(m_iFile);
        m_iFile = -1;
    }
}

void CSharedLogFile::LockCurrent() {
    for (;;) {
        if (m_iFile < 0) {
            Open();
        }
        while (m_bRegular && flock(m_iFile, LOCK_EX) != 0) {
            if (errno != EINTR) {
                Fail("cannot lock " + m_strFile);
            }
        }
        struct stat named {};
        struct stat opened {};
        const bool bNamed = stat(m_strFile.c_str(), &named) == 0 && fstat(m_iFile, &opened) == 0 &&
                            named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
        if (bNamed || !m_bRegular) {
            return;
        }
        Close();
    }
}

std::size_t CSharedLogFile::GetSize() const {
    struct stat status {};
    return fstat(m_iFile, &status) == 0 ? static_cast<std::size_t>(status.st_size) : 0;
}

/// With the file locked: whoever waits for it finds its name on another.
void CSharedLogFile::Rotate() {
    const auto name = [this](std::size_t uiIndex) {
        return spdlog::sinks::rotating_file_sink_mt::calc_filename(m_strFile, uiIndex);
    };
    for (std::size_t uiIndex = m_uiOlderFiles; uiIndex > 0; --uiIndex) {
        if (std::rename(name(uiIndex - 1).c_str(), name(uiIndex).c_str()) != 0 && errno != ENOENT) {
            Fail("cannot rename " + name(uiIndex - 1));
        }
    }
    if (m_uiOlderFiles == 0 && ftruncate(m_iFile, 0) != 0) {
        Fail("cannot empty " + m_strFile);
    }
    Close();
}

void CSharedLogFile::Write(const char* pszText, std::size_t uiLength) const {
    while (uiLength > 0) {
        const ssize_t count = write(m_iFile, pszText, uiLength);
        if (count < 0 && errno != EINTR) {
            Fail("cannot write to " + m_strFile);
        }
        pszText += count > 0 ? count : 0;
        uiLength -= count > 0 ? static_cast<std::size_t>(count) : 0;
    }
}

void CSharedLogFile::sink_it_(const spdlog::details::log_msg& message) {
    spdlog::memory_buf_t line;
    formatter_->format(message, line);
    LockCurrent();
    if (m_bRegular && GetSize() > 0 && GetSize() + line.size() > m_uiMaxSize) {
        Rotate();
        LockCurrent();
    }
    const CUnlock unlock(m_bRegular ? m_iFile : -1);
    Write(line.data(), line.size());
}
