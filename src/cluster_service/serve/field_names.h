#pragma once

#include <string>
#include <vector>

/// The names of a struct's fields, by the same Fields that write and read it (json_fields.h).
class CFieldNames {
public:
    template <typename T>
    static CFieldNames Of() {
        CFieldNames names;
        const T empty;
        T::Fields(names, empty);
        return names;
    }

    const std::vector<std::string>& GetAll() const { return m_names; }

    /// Those that may not be missing.
    const std::vector<std::string>& GetNeeded() const { return m_needed; }

    /// @name What Fields calls
    /// @{
    template <typename T>
    void Need(const char* pszKey, const T& /*value*/) {
        m_names.emplace_back(pszKey);
        m_needed.emplace_back(pszKey);
    }
    template <typename... T>
    void May(const char* pszKey, const T&... /*valueAndAbsent*/) {
        m_names.emplace_back(pszKey);
    }
    template <typename T>
    void Id(const char* pszKey, const T& value) {
        Need(pszKey, value);
    }
    template <typename T>
    void MayId(const char* pszKey, const T& value) {
        May(pszKey, value);
    }
    template <typename T>
    void Ids(const char* pszKey, const T& value) {
        Need(pszKey, value);
    }
    template <typename T>
    void MayIds(const char* pszKey, const T& value) {
        May(pszKey, value);
    }
    /// @}

private:
    std::vector<std::string> m_names;
    std::vector<std::string> m_needed;
};
