#include "command/document_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace {

class CFileHandle {
public:
    explicit CFileHandle(const std::string& strFile)
        : m_iHandle(open(strFile.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {}
    ~CFileHandle() {
        if (m_iHandle >= 0) {
            close(m_iHandle);
        }
    }
    CFileHandle(const CFileHandle&) = delete;
    CFileHandle& operator=(const CFileHandle&) = delete;

    int Get() const { return m_iHandle; }

private:
    const int m_iHandle;
};

std::string LastError() {
    return std::generic_category().message(errno);
}

}  // namespace

std::string DocumentFile(const std::string& strDir, const CStoreDocument& document) {
    return std::filesystem::path(strDir) / document.pszFile;
}

bool IsThere(const std::string& strFile) {
    std::error_code error;
    return std::filesystem::symlink_status(strFile, error).type() !=
           std::filesystem::file_type::not_found;
}

std::string ReadTextFile(const std::string& strFile, std::size_t maxSize, std::string& strText) {
    const CFileHandle file(strFile);
    struct stat status {};
    if (file.Get() < 0 || fstat(file.Get(), &status) != 0) {
        return LastError();
    }
    if (!S_ISREG(status.st_mode)) {
        return "is no file";
    }
    strText.resize(maxSize + 1);
    std::size_t size = 0;
    while (size < strText.size()) {
        const ssize_t iRead = read(file.Get(), strText.data() + size, strText.size() - size);
        if (iRead < 0) {
            return LastError();
        }
        if (iRead == 0) {
            break;
        }
        size += static_cast<std::size_t>(iRead);
    }
    strText.resize(size);
    return "";
}
