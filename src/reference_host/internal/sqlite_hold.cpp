#include "internal/sqlite_hold.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "reference_host/store.h"

namespace {

using CFileId = std::pair<dev_t, ino_t>;

CFileId IdOf(const struct stat& status) {
    return {status.st_dev, status.st_ino};
}

/// Descriptors of SQLite's files, each good for one lock. None is ever closed: closing any
/// descriptor of a file takes away the locks that SQLite has on it in the same process. One that is
/// not in use is handed out again.
class CDescriptors {
public:
    static CDescriptors& Instance() {
        static CDescriptors& instance = *new CDescriptors;
        return instance;
    }

    /// Below 0, with errno, where the file cannot be opened.
    int Take(const std::string& strFile, CFileId& file) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        struct stat status {};
        if (stat(strFile.c_str(), &status) != 0) {
            return -1;
        }
        file = IdOf(status);
        std::vector<int>& idle = m_mapIdle[file];
        if (!idle.empty()) {
            const int iDescriptor = idle.back();
            idle.pop_back();
            return iDescriptor;
        }
        return Open(strFile, file);
    }

    void GiveBack(const CFileId& file, int iDescriptor) {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_mapIdle[file].push_back(iDescriptor);
    }

private:
    static int Open(const std::string& strFile, CFileId& file) {
        int iDescriptor = open(strFile.c_str(), O_RDWR | O_CLOEXEC);
        if (iDescriptor < 0 && (errno == EACCES || errno == EROFS)) {
            iDescriptor = open(strFile.c_str(), O_RDONLY | O_CLOEXEC);
        }
        struct stat status {};
        if (iDescriptor >= 0 && fstat(iDescriptor, &status) == 0) {
            file = IdOf(status);
        }
        return iDescriptor;
    }

    std::mutex m_mutex;
    std::map<CFileId, std::vector<int>> m_mapIdle;  ///< guarded by m_mutex
};

/// The same in every process and release: FNV-1a. The second byte of a place is behind the first.
off_t FirstByteOf(const std::string& strName) {
    std::uint64_t ullHash = 0xcbf29ce484222325U;
    for (const char c : strName) {
        ullHash = (ullHash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    constexpr std::uint64_t PLACES = std::uint64_t{1} << 60U;
    return static_cast<off_t>((std::uint64_t{1} << 62U) + 2 * (ullHash % PLACES));
}

struct flock LockOf(short iType, off_t iByte, off_t iCount = 1) {
    struct flock lock {};
    lock.l_type = iType;
    lock.l_whence = SEEK_SET;
    lock.l_start = iByte;
    lock.l_len = iCount;
    return lock;
}

bool IsLocked(int iDescriptor, off_t iByte, bool& bLocked) {
    struct flock lock = LockOf(F_WRLCK, iByte);
    const bool bAsked = fcntl(iDescriptor, F_OFD_GETLK, &lock) == 0;
    bLocked = lock.l_type != F_UNLCK;
    return bAsked;
}

}  // namespace

CSqliteHold::~CSqliteHold() {
    if (m_iDescriptor >= 0) {
        struct flock lock = LockOf(F_UNLCK, m_iFirstByte, 2);
        fcntl(m_iDescriptor, F_OFD_SETLK, &lock);
        CDescriptors::Instance().GiveBack(m_file, m_iDescriptor);
    }
}

CSqliteHold::CSqliteHold(CSqliteHold&& other) noexcept
    : m_file(std::exchange(other.m_file, {})),
      m_iDescriptor(std::exchange(other.m_iDescriptor, -1)),
      m_iFirstByte(other.m_iFirstByte) {}

int CSqliteHold::Take(const std::string& strFile, const std::string& strName) {
    if (m_iDescriptor < 0) {
        m_iDescriptor = CDescriptors::Instance().Take(strFile, m_file);
        m_iFirstByte = FirstByteOf(strName);
    }
    if (m_iDescriptor < 0) {
        return SQLITE_CANTOPEN;
    }
    struct flock lock = LockOf(F_WRLCK, m_iFirstByte);
    if (fcntl(m_iDescriptor, F_OFD_SETLK, &lock) == 0) {
        return SQLITE_OK;
    }
    return errno == EAGAIN || errno == EACCES ? static_cast<int>(STORE_NAME_HELD)
                                              : SQLITE_IOERR_LOCK;
}

int CSqliteHold::Tell() {
    struct flock lock = LockOf(F_WRLCK, m_iFirstByte + 1);
    return fcntl(m_iDescriptor, F_OFD_SETLK, &lock) == 0 ? SQLITE_OK : SQLITE_IOERR_LOCK;
}

int CSqliteHold::Look(const std::string& strFile, const std::string& strName, EHeld& eHeld) {
    eHeld = EHeld::NO;
    CFileId file;
    const int iDescriptor = CDescriptors::Instance().Take(strFile, file);
    if (iDescriptor < 0) {
        return errno == ENOENT ? SQLITE_OK : SQLITE_CANTOPEN;
    }
    const off_t iFirstByte = FirstByteOf(strName);
    bool bTaken = false;
    bool bTold = false;
    const bool bAsked =
        IsLocked(iDescriptor, iFirstByte, bTaken) && IsLocked(iDescriptor, iFirstByte + 1, bTold);
    CDescriptors::Instance().GiveBack(file, iDescriptor);
    if (bTaken) {
        eHeld = bTold ? EHeld::TOLD : EHeld::UNTOLD;
    }
    return bAsked ? SQLITE_OK : SQLITE_IOERR_LOCK;
}
