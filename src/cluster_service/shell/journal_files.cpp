#include "shell/journal_files.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <system_error>

namespace {

namespace fs = std::filesystem;

std::string NameOf(const std::string& strFirst, uint64_t ullNumber) {
    return ullNumber == 1 ? strFirst : strFirst + '.' + std::to_string(ullNumber);
}

/// Nothing for another's file.
std::optional<uint64_t> NumberOf(const std::string& strFirst, const std::string& strName) {
    uint64_t ullNumber = 1;
    if (strName.size() > strFirst.size()) {
        std::from_chars(strName.data() + strFirst.size() + 1, strName.data() + strName.size(),
                        ullNumber);
    }
    const bool bOurs = ullNumber != 0 && NameOf(strFirst, ullNumber) == strName;
    return bOurs ? std::optional(ullNumber) : std::nullopt;
}

}  // namespace

std::vector<uint64_t> CJournalFiles::Find() const {
    const fs::path first = fs::absolute(m_strFirst);
    std::vector<uint64_t> numbers;
    std::error_code error;
    std::error_code errorOfFile;
    for (fs::directory_iterator it(first.parent_path(), error);
         !error && it != fs::directory_iterator(); it.increment(error)) {
        const auto number = NumberOf(first.filename().string(), it->path().filename().string());
        if (number && it->is_regular_file(errorOfFile)) {
            numbers.push_back(*number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    return numbers;
}

std::string CJournalFiles::NameNext() {
    const std::vector<uint64_t> numbers = Find();
    m_ullLast = std::max(m_ullLast, numbers.empty() ? 0 : numbers.back());
    std::error_code error;
    do {
        ++m_ullLast;
    } while (fs::is_regular_file(NameOf(m_strFirst, m_ullLast), error));
    return NameOf(m_strFirst, m_ullLast);
}

std::string CJournalFiles::RemoveOldest() const {
    const std::vector<uint64_t> numbers = Find();
    std::string strFault;
    for (std::size_t ui = 0; m_uiKept != 0 && ui + m_uiKept < numbers.size(); ++ui) {
        std::error_code error;
        const std::string strName = NameOf(m_strFirst, numbers[ui]);
        if (!fs::remove(strName, error) && error) {
            strFault = strName + ": cannot be removed: " + error.message();
        }
    }
    return strFault;
}
