#include "command/whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

constexpr mode_t FILE_MODE = 0644;

bool WriteAll(int iFile, const std::string& strText) {
    std::size_t written = 0;
    while (written < strText.size()) {
        const ssize_t count = write(iFile, strText.data() + written, strText.size() - written);
        if (count < 0 && errno != EINTR) {
            return false;
        }
        written += count > 0 ? static_cast<std::size_t>(count) : 0;
    }
    return fchmod(iFile, FILE_MODE) == 0 && fsync(iFile) == 0;
}

}  // namespace

std::string WriteWholeFile(const std::string& strFile, const std::string& strText) {
    std::string strTemp = strFile + ".XXXXXX";
    const int iFile = mkstemp(strTemp.data());
    if (iFile < 0) {
        return std::strerror(errno);
    }
    bool bDone = WriteAll(iFile, strText);
    int iError = errno;
    bDone = close(iFile) == 0 && bDone;
    if (bDone && std::rename(strTemp.c_str(), strFile.c_str()) == 0) {
        return {};
    }
    iError = bDone ? errno : iError;
    unlink(strTemp.c_str());
    return std::strerror(iError);
}
