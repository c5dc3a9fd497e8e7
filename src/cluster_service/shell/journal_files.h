#pragma once

#include <cstdint>
#include <string>
#include <vector>

/// Where a journal goes.
struct CJournalSettings {
    std::string strFile;  ///< none when empty
    uint64_t ullMaxBytes = 64U << 20U;
    uint32_t uiKept = 0;  ///< so many files stay, the newest; 0: all
};

/// The files of a journal: FILE, FILE.2, FILE.3 and so on. A new one comes behind all that are
/// there, so that their numbers tell their order also after a restart, and none is written over.
class CJournalFiles {
public:
    explicit CJournalFiles(const CJournalSettings& settings)
        : m_strFirst(settings.strFile), m_uiKept(settings.uiKept) {}

    bool IsAny() const { return !m_strFirst.empty(); }

    /// The name for one more.
    std::string NameNext();

    /// Removes the oldest beyond those that are kept. What went wrong, in words; empty when nothing
    /// did.
    std::string RemoveOldest() const;

private:
    /// The numbers of those that are there, in order; none where the folder cannot be listed.
    std::vector<uint64_t> Find() const;

    std::string m_strFirst;
    uint32_t m_uiKept;
    uint64_t m_ullLast = 0;  ///< that was named: it may not have come to be
};
