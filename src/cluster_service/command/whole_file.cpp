#include "command/whole_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>

namespace {

constexpr mode_t MODE_BITS = 0777;
constexpr mode_t NEW_FILE_MODE = 0666;  // the umask takes what it takes

/// A file open for writing, closed with the object.
class COpenFile {
public:
    COpenFile(const std::string& strFile, int iFlags)
        : m_iFile(open(strFile.c_str(), O_WRONLY | O_CLOEXEC | iFlags, NEW_FILE_MODE)) {}
    ~COpenFile() {
        if (m_iFile >= 0) {
            close(m_iFile);
        }
    }
    COpenFile(const COpenFile&) = delete;
    COpenFile& operator=(const COpenFile&) = delete;

    int Get() const { return m_iFile; }

private:
    const int m_iFile;
};

/// Gives the file the mode of the one that it takes the place of. Returns 0 or errno.
int TakeOverMode(int iFile, const std::string& strReplaced) {
    struct stat replaced {};
    if (stat(strReplaced.c_str(), &replaced) != 0 || !S_ISREG(replaced.st_mode)) {
        return 0;
    }
    return fchmod(iFile, replaced.st_mode & MODE_BITS) == 0 ? 0 : errno;
}

/// Returns 0 or errno.
int WriteAll(int iFile, const std::string& strText) {
    std::size_t written = 0;
    while (written < strText.size()) {
        const ssize_t count = write(iFile, strText.data() + written, strText.size() - written);
        if (count < 0 && errno != EINTR) {
            return errno;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return fsync(iFile) == 0 ? 0 : errno;
}

/// A hidden name beside the file, for the time until it takes the file's place.
std::string HiddenName(const std::string& strFile, std::uint64_t uiNumber) {
    const std::filesystem::path path(strFile);
    return path.parent_path() / ("." + path.filename().string() + "." + std::to_string(uiNumber));
}

/// A link cannot replace a file: it takes another name and a rename. Returns 0 or errno. Calls only
/// what may be called between fork and exec.
int LinkOver(const char* pszOpen, const char* pszHidden, const char* pszFile) {
    if (linkat(AT_FDCWD, pszOpen, AT_FDCWD, pszHidden, AT_SYMLINK_FOLLOW) != 0) {
        return errno;
    }
    if (rename(pszHidden, pszFile) == 0) {
        return 0;
    }
    const int iError = errno;
    unlink(pszHidden);
    return iError;
}

/// LinkOver in a process of its own session, so that a kill of this one leaves no name behind.
int LinkOverUnkilled(const std::string& strOpen, const std::string& strHidden,
                     const std::string& strFile) {
    const pid_t iChild = fork();
    if (iChild == 0) {
        setsid();
        _exit(LinkOver(strOpen.c_str(), strHidden.c_str(), strFile.c_str()));
    }
    int iStatus = 0;
    while (iChild > 0 && waitpid(iChild, &iStatus, 0) < 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return iChild < 0 ? errno : WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : EINTR;
}

/// Gives the file that has no name this one. Returns 0 or errno.
int PutInPlace(int iFile, const std::string& strFile) {
    const std::string strOpen = "/proc/self/fd/" + std::to_string(iFile);
    if (linkat(AT_FDCWD, strOpen.c_str(), AT_FDCWD, strFile.c_str(), AT_SYMLINK_FOLLOW) == 0) {
        return 0;
    }
    struct stat status {};
    if (errno != EEXIST || fstat(iFile, &status) != 0) {
        return errno;
    }
    // No two files have the same number, so no two programs take the same name.
    return LinkOverUnkilled(strOpen, HiddenName(strFile, status.st_ino), strFile);
}

int Fill(int iFile, const std::string& strFile, const std::string& strText) {
    const int iError = TakeOverMode(iFile, strFile);
    return iError == 0 ? WriteAll(iFile, strText) : iError;
}

/// For a file system without files that have no name: a kill leaves the other name behind.
int WriteUnderAnotherName(const std::string& strFile, const std::string& strText) {
    const std::string strOther = HiddenName(strFile, static_cast<std::uint64_t>(getpid()));
    const COpenFile file(strOther, O_CREAT | O_EXCL);
    if (file.Get() < 0) {
        return errno;
    }
    int iError = Fill(file.Get(), strFile, strText);
    if (iError == 0 && rename(strOther.c_str(), strFile.c_str()) != 0) {
        iError = errno;
    }
    if (iError != 0) {
        unlink(strOther.c_str());
    }
    return iError;
}

int Write(const std::string& strFile, const std::string& strText) {
    const std::string strFolder = std::filesystem::path(strFile).parent_path();
    const COpenFile file(strFolder.empty() ? "." : strFolder, O_TMPFILE);
    if (file.Get() < 0) {
        return errno == EOPNOTSUPP ? WriteUnderAnotherName(strFile, strText) : errno;
    }
    const int iError = Fill(file.Get(), strFile, strText);
    return iError == 0 ? PutInPlace(file.Get(), strFile) : iError;
}

}  // namespace

std::string WriteWholeFile(const std::string& strFile, const std::string& strText) {
    const int iError = Write(strFile, strText);
    return iError == 0 ? "" : std::strerror(iError);
}
