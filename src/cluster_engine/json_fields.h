#pragma once

#include <json/value.h>

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

/// How a struct becomes JSON and comes back. A struct says its fields once:
///
///     struct CEndTasks {
///         std::string strType;
///         std::vector<std::string> tasks;
///
///         template <typename F, typename S>
///         static void Fields(F& form, S& self) {
///             form.Id("type", self.strType);
///             form.Need("tasks", self.tasks);
///         }
///     };
///
/// and ToJson and FromJson do the rest. A field that may be missing keeps its default then, and is
/// not written while it has it.

/// The longest id of a node, a container type, a task or what else is named.
inline constexpr std::size_t NUMERIC_MAX_ID_BYTES = 128;

/// Is the text an id: one to NUMERIC_MAX_ID_BYTES bytes of UTF-8 without control characters?
bool IsId(const std::string& strText);

/// Is the text UTF-8, as all texts of JSON are?
bool IsUtf8(const std::string& strText);

/// The texts of an enumeration whose values count from 0, as a specialization with the array NAMES.
template <typename E>
struct CEnumNames;

template <typename E>
const char* NameOf(E eValue) {
    return CEnumNames<E>::NAMES[static_cast<std::size_t>(eValue)];
}

/// Why a text or a value does not give a struct: where, and what is wrong there. Nothing is wrong
/// while the fault is empty.
struct CFieldFault {
    std::string strPlace;  ///< as in "tasks[3].net"; empty for the whole
    std::string strFault;
};

/// Parses one JSON value, strictly: nothing behind it, no key twice, nested no deeper than 64.
bool ParseJsonText(const char* pszBegin, const char* pszEnd, Json::Value& value,
                   CFieldFault& fault);

/// One line, keys in the order of their bytes, without a line feed.
std::string JsonLine(const Json::Value& value);

/// Where a reader stands: made into a text only when there is a fault to tell.
struct CFieldPlace {
    const CFieldPlace* pParent;  ///< null at the top
    const char* pszKey;          ///< null in a list
    std::size_t uiIndex;

    std::string Text() const;
};

/// What the writers have in common: each says by Need how it writes one field.
template <typename Writer>
class CFieldWriterBase {
public:
    template <typename T>
    void May(const char* pszKey, const T& value, const T& absent = T()) {
        if (!(value == absent)) {
            Need(pszKey, value);
        }
    }

    template <typename T>
    void May(const char* pszKey, const std::optional<T>& value) {
        if (value) {
            Need(pszKey, *value);
        }
    }

    template <typename T>
    void May(const char* pszKey, const std::vector<T>& values) {
        if (!values.empty()) {
            Need(pszKey, values);
        }
    }

    void Id(const char* pszKey, const std::string& strValue) { Need(pszKey, strValue); }
    void MayId(const char* pszKey, const std::string& strValue) { May(pszKey, strValue); }
    void Ids(const char* pszKey, const std::vector<std::string>& values) { Need(pszKey, values); }
    void MayIds(const char* pszKey, const std::vector<std::string>& values) { May(pszKey, values); }

private:
    template <typename T>
    void Need(const char* pszKey, const T& value) {
        static_cast<Writer*>(this)->Need(pszKey, value);
    }
};

/// Fills an object.
class CFieldWriter : public CFieldWriterBase<CFieldWriter> {
public:
    explicit CFieldWriter(Json::Value& object) : m_object(object) {}

    template <typename T>
    void Need(const char* pszKey, const T& value) {
        Write(m_object[pszKey], value);
    }

    template <typename T>
    static void Write(Json::Value& to, const T& value) {
        if constexpr (std::is_enum_v<T>) {
            to = NameOf(value);
        } else if constexpr (std::is_integral_v<T> && !std::is_same_v<T, bool>) {
            WriteInteger(to, value);
        } else if constexpr (std::is_constructible_v<Json::Value, const T&>) {
            to = Json::Value(value);
        } else {
            to = Json::Value(Json::objectValue);
            CFieldWriter writer(to);
            T::Fields(writer, value);
        }
    }

    template <typename T>
    static void Write(Json::Value& to, const std::vector<T>& values) {
        to = Json::Value(Json::arrayValue);
        for (const T& value : values) {
            Write(to.append(Json::Value()), value);
        }
    }

    template <typename T>
    static void Write(Json::Value& to, const std::map<std::string, T>& values) {
        to = Json::Value(Json::objectValue);
        for (const auto& [strKey, value] : values) {
            Write(to[strKey], value);
        }
    }

private:
    template <typename T>
    static void WriteInteger(Json::Value& to, T value) {
        if constexpr (std::is_signed_v<T>) {
            to = Json::Value(static_cast<Json::Int64>(value));
        } else {
            to = Json::Value(static_cast<Json::UInt64>(value));
        }
    }

    Json::Value& m_object;
};

/// Appends an object to a text, for what is written so often that a Json::Value between would be
/// most of the work.
class CFieldTextWriter : public CFieldWriterBase<CFieldTextWriter> {
public:
    explicit CFieldTextWriter(std::string& strText) : m_strText(strText) { m_strText += '{'; }

    template <typename T>
    void Need(const char* pszKey, const T& value) {
        BeginField(pszKey);
        Write(m_strText, value);
    }

    void End() { m_strText += '}'; }

    template <typename T>
    static void Write(std::string& strTo, const T& value) {
        if constexpr (std::is_enum_v<T>) {
            WriteText(strTo, NameOf(value));
        } else if constexpr (std::is_same_v<T, bool>) {
            strTo += value ? "true" : "false";
        } else if constexpr (std::is_integral_v<T>) {
            strTo += std::to_string(value);
        } else if constexpr (std::is_convertible_v<const T&, std::string_view>) {
            WriteText(strTo, value);
        } else if constexpr (std::is_constructible_v<Json::Value, const T&>) {
            strTo += JsonLine(Json::Value(value));
        } else {
            CFieldTextWriter writer(strTo);
            T::Fields(writer, value);
            writer.End();
        }
    }

    template <typename T>
    static void Write(std::string& strTo, const std::vector<T>& values) {
        const char* pszBefore = "[";
        for (const T& value : values) {
            strTo += std::exchange(pszBefore, ",");
            Write(strTo, value);
        }
        strTo += values.empty() ? "[]" : "]";
    }

    template <typename T>
    static void Write(std::string& strTo, const std::map<std::string, T>& values) {
        CFieldTextWriter writer(strTo);
        for (const auto& [strKey, value] : values) {
            writer.BeginField(strKey);
            Write(strTo, value);
        }
        writer.End();
    }

private:
    static void WriteText(std::string& strTo, std::string_view text);
    void BeginField(std::string_view key);

    std::string& m_strText;
    bool m_bAnyField = false;
};

/// Reads an object. The first fault is kept; what comes after it leaves the fields as they are.
class CFieldReader {
public:
    /// Fields that nothing asks for are a fault, or, with a counter, counted and passed over.
    CFieldReader(const Json::Value& object, const CFieldPlace* pPlace, CFieldFault& fault,
                 std::size_t* puiUnknown)
        : m_object(object), m_pPlace(pPlace), m_fault(fault), m_puiUnknown(puiUnknown) {
        m_asked.reserve(object.size());
    }

    template <typename T>
    void Need(const char* pszKey, T& value) {
        if (const Json::Value* const pFound = Find(pszKey); pFound != nullptr) {
            Read(*pFound, CFieldPlace{m_pPlace, pszKey, 0}, value);
        } else {
            Fail(CFieldPlace{m_pPlace, pszKey, 0}, "is missing");
        }
    }

    template <typename T>
    void May(const char* pszKey, T& value, const T& absent = T()) {
        if (const Json::Value* const pFound = Find(pszKey); pFound != nullptr) {
            Read(*pFound, CFieldPlace{m_pPlace, pszKey, 0}, value);
        } else {
            value = absent;
        }
    }

    void Id(const char* pszKey, std::string& strValue);
    void MayId(const char* pszKey, std::string& strValue);
    void Ids(const char* pszKey, std::vector<std::string>& values);
    void MayIds(const char* pszKey, std::vector<std::string>& values);

    /// Every field has been asked for: what is left is unknown.
    void End();

private:
    const Json::Value* Find(const char* pszKey);
    void Fail(const CFieldPlace& place, std::string strFault);

    void Read(const Json::Value& from, const CFieldPlace& place, std::string& strValue);
    void Read(const Json::Value& from, const CFieldPlace& place, bool& bValue);
    void Read(const Json::Value& from, const CFieldPlace& place, Json::Value& value);
    void ReadSigned(const Json::Value& from, const CFieldPlace& place, int64_t iMin, int64_t iMax,
                    int64_t& iValue);
    void ReadUnsigned(const Json::Value& from, const CFieldPlace& place, uint64_t uiMax,
                      uint64_t& uiValue);
    void ReadName(const Json::Value& from, const CFieldPlace& place, const char* const* ppszNames,
                  std::size_t uiNames, std::size_t& uiValue);

    template <typename T>
    void Read(const Json::Value& from, const CFieldPlace& place, T& value);

    template <typename T>
    void Read(const Json::Value& from, const CFieldPlace& place, std::optional<T>& value) {
        Read(from, place, value.emplace());
    }

    template <typename T>
    void Read(const Json::Value& from, const CFieldPlace& place, std::vector<T>& values);

    template <typename T>
    void Read(const Json::Value& from, const CFieldPlace& place, std::map<std::string, T>& values);

    const Json::Value& m_object;
    const CFieldPlace* const m_pPlace;
    CFieldFault& m_fault;
    std::size_t* const m_puiUnknown;
    std::vector<const char*> m_asked;
};

template <typename T>
void CFieldReader::Read(const Json::Value& from, const CFieldPlace& place, T& value) {
    if constexpr (std::is_enum_v<T>) {
        std::size_t uiValue = static_cast<std::size_t>(value);
        ReadName(from, place, CEnumNames<T>::NAMES, std::size(CEnumNames<T>::NAMES), uiValue);
        value = static_cast<T>(uiValue);
    } else if constexpr (std::is_integral_v<T> && std::is_signed_v<T>) {
        int64_t iValue = value;
        ReadSigned(from, place, std::numeric_limits<T>::min(), std::numeric_limits<T>::max(),
                   iValue);
        value = static_cast<T>(iValue);
    } else if constexpr (std::is_integral_v<T>) {
        uint64_t uiValue = value;
        ReadUnsigned(from, place, std::numeric_limits<T>::max(), uiValue);
        value = static_cast<T>(uiValue);
    } else {
        if (!from.isObject()) {
            return Fail(place, "must be an object");
        }
        CFieldReader reader(from, &place, m_fault, m_puiUnknown);
        T::Fields(reader, value);
        reader.End();
    }
}

template <typename T>
void CFieldReader::Read(const Json::Value& from, const CFieldPlace& place, std::vector<T>& values) {
    if (!from.isArray()) {
        return Fail(place, "must be a list");
    }
    values.clear();
    values.reserve(from.size());
    for (Json::ArrayIndex i = 0; i < from.size(); ++i) {
        Read(from[i], CFieldPlace{&place, nullptr, i}, values.emplace_back());
    }
}

template <typename T>
void CFieldReader::Read(const Json::Value& from, const CFieldPlace& place,
                        std::map<std::string, T>& values) {
    if (!from.isObject()) {
        return Fail(place, "must be an object");
    }
    values.clear();
    for (auto it = from.begin(); it != from.end(); ++it) {
        const std::string strKey = it.name();
        if (!IsUtf8(strKey)) {
            return Fail(place, "has a key that is no UTF-8");
        }
        Read(*it, CFieldPlace{&place, strKey.c_str(), 0}, values[strKey]);
    }
}

/// The struct as a JSON object.
template <typename T>
Json::Value ToJson(const T& value) {
    Json::Value json;
    CFieldWriter::Write(json, value);
    return json;
}

/// The struct as one line of JSON, its keys in the order of its fields.
template <typename T>
std::string JsonText(const T& value) {
    std::string strText;
    CFieldTextWriter::Write(strText, value);
    return strText;
}

/// Reads the struct from an object. On a fault the value is half read. With a counter, fields that
/// the struct does not have are counted and passed over.
template <typename T>
bool FromJson(const Json::Value& json, T& value, CFieldFault& fault,
              std::size_t* puiUnknown = nullptr) {
    if (!json.isObject()) {
        fault = {"", "must be an object"};
        return false;
    }
    CFieldReader reader(json, nullptr, fault, puiUnknown);
    T::Fields(reader, value);
    reader.End();
    return fault.strFault.empty();
}
