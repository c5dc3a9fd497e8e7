#pragma once

#include <sys/types.h>

#include <string>
#include <utility>

/// Whether a name is held, and whether its node says by whom already.
enum class EHeld { NO, UNTOLD, TOLD };

/// The lock by which a name beside a SQLite file is held: on bytes far behind all that SQLite
/// locks or writes, one place for each name, so that neither readers nor writers feel it. Other
/// objects of the same process are kept out like other processes.
class CSqliteHold {
public:
    CSqliteHold() = default;
    ~CSqliteHold();
    CSqliteHold(CSqliteHold&& other) noexcept;
    CSqliteHold(const CSqliteHold&) = delete;
    CSqliteHold& operator=(const CSqliteHold&) = delete;

    /// Takes the lock, which lasts as long as the object. Returns SQLITE_OK, STORE_NAME_HELD, or a
    /// code of SQLite's.
    int Take(const std::string& strFile, const std::string& strName);

    /// Lets everybody know that the name's node says who holds it.
    int Tell();

    /// Looks whether anybody has taken the name. Returns SQLITE_OK or a code of SQLite's.
    static int Look(const std::string& strFile, const std::string& strName, EHeld& eHeld);

private:
    std::pair<dev_t, ino_t> m_file;  ///< which file it is, whatever its name
    int m_iDescriptor = -1;
    off_t m_iFirstByte = 0;
};
