#include "cluster_engine/json_fields.h"

#include <json/reader.h>
#include <json/writer.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <sstream>

namespace {

constexpr int NUMERIC_MAX_DEPTH = 64;

Json::CharReaderBuilder StrictReader() {
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    builder["strictRoot"] = false;
    builder["stackLimit"] = NUMERIC_MAX_DEPTH;
    return builder;
}

Json::StreamWriterBuilder LineWriter() {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["emitUTF8"] = true;
    return builder;
}

/// The length of the UTF-8 sequence that begins here, 0 when none does: no overlong forms, no
/// surrogates, nothing above U+10FFFF.
std::size_t SequenceLength(const std::string& strText, std::size_t uiAt) {
    const auto byteAt = [&](std::size_t ui) {
        return ui < strText.size() ? static_cast<unsigned char>(strText[ui]) : 0U;
    };
    const unsigned uiLead = byteAt(uiAt);
    if (uiLead < 0x80) {
        return 1;
    }
    const std::size_t uiLength = uiLead < 0xC2   ? 0
                                 : uiLead < 0xE0 ? 2
                                 : uiLead < 0xF0 ? 3
                                 : uiLead < 0xF5 ? 4
                                                 : 0;
    for (std::size_t ui = 1; ui < uiLength; ++ui) {
        if ((byteAt(uiAt + ui) & 0xC0U) != 0x80) {
            return 0;
        }
    }
    const unsigned uiSecond = byteAt(uiAt + 1);
    const bool bOutOfRange =
        (uiLead == 0xE0 && uiSecond < 0xA0) || (uiLead == 0xED && uiSecond >= 0xA0) ||
        (uiLead == 0xF0 && uiSecond < 0x90) || (uiLead == 0xF4 && uiSecond >= 0x90);
    return bOutOfRange ? 0 : uiLength;
}

bool IsControl(const std::string& strText, std::size_t uiAt) {
    const auto uiByte = static_cast<unsigned char>(strText[uiAt]);
    const bool bC1 = uiByte == 0xC2 && static_cast<unsigned char>(strText[uiAt + 1]) < 0xA0;
    return uiByte < 0x20 || uiByte == 0x7F || bC1;
}

constexpr char PSZ_NO_ID[] = "must be an id: printable, of 1 to 128 bytes";

/// Is the text UTF-8, and each of its characters as wanted?
template <typename Predicate>
bool IsUtf8Of(const std::string& strText, const Predicate& isWanted) {
    for (std::size_t uiAt = 0; uiAt < strText.size();) {
        const std::size_t uiLength = SequenceLength(strText, uiAt);
        if (uiLength == 0 || !isWanted(uiAt)) {
            return false;
        }
        uiAt += uiLength;
    }
    return true;
}

}  // namespace

bool IsId(const std::string& strText) {
    return !strText.empty() && strText.size() <= NUMERIC_MAX_ID_BYTES &&
           IsUtf8Of(strText, [&](std::size_t uiAt) { return !IsControl(strText, uiAt); });
}

bool IsUtf8(const std::string& strText) {
    return IsUtf8Of(strText, [](std::size_t) { return true; });
}

bool ParseJsonText(const char* pszBegin, const char* pszEnd, Json::Value& value,
                   CFieldFault& fault) {
    static const Json::CharReaderBuilder BUILDER = StrictReader();
    const std::unique_ptr<Json::CharReader> pReader(BUILDER.newCharReader());
    std::string strErrors;
    try {
        if (pReader->parse(pszBegin, pszEnd, &value, &strErrors)) {
            return true;
        }
    } catch (const std::exception&) {
        strErrors = "nested too deep";  // the one thing that the reader throws for
    }
    std::replace(strErrors.begin(), strErrors.end(), '\n', ' ');
    fault = {"", "is no JSON: " + strErrors};
    return false;
}

std::string JsonLine(const Json::Value& value) {
    // A writer costs more to make than a short line to write.
    thread_local const std::unique_ptr<Json::StreamWriter> pWriter(LineWriter().newStreamWriter());
    std::ostringstream line;
    pWriter->write(value, &line);
    return line.str();
}

void CFieldTextWriter::WriteText(std::string& strTo, std::string_view text) {
    const bool bPlain = std::none_of(text.begin(), text.end(), [](char cByte) {
        return static_cast<unsigned char>(cByte) < 0x20 || cByte == '"' || cByte == '\\';
    });
    if (bPlain) {
        ((strTo += '"') += text) += '"';
    } else {
        strTo += JsonLine(Json::Value(std::string(text)));
    }
}

void CFieldTextWriter::BeginField(std::string_view key) {
    if (m_bAnyField) {
        m_strText += ',';
    }
    m_bAnyField = true;
    WriteText(m_strText, key);
    m_strText += ':';
}

std::string CFieldPlace::Text() const {
    const std::string strParent = pParent != nullptr ? pParent->Text() : "";
    if (pszKey == nullptr) {
        return strParent + '[' + std::to_string(uiIndex) + ']';
    }
    return strParent.empty() ? pszKey : strParent + '.' + pszKey;
}

void CFieldReader::Id(const char* pszKey, std::string& strValue) {
    Need(pszKey, strValue);
    if (m_object.isMember(pszKey) && !IsId(strValue)) {
        Fail({m_pPlace, pszKey, 0}, PSZ_NO_ID);
    }
}

void CFieldReader::MayId(const char* pszKey, std::string& strValue) {
    if (m_object.isMember(pszKey)) {
        Id(pszKey, strValue);
    } else {
        May(pszKey, strValue);
    }
}

void CFieldReader::Ids(const char* pszKey, std::vector<std::string>& values) {
    Need(pszKey, values);
    const CFieldPlace place{m_pPlace, pszKey, 0};
    for (std::size_t ui = 0; ui < values.size(); ++ui) {
        if (!IsId(values[ui])) {
            return Fail({&place, nullptr, ui}, PSZ_NO_ID);
        }
    }
}

void CFieldReader::MayIds(const char* pszKey, std::vector<std::string>& values) {
    if (m_object.isMember(pszKey)) {
        Ids(pszKey, values);
    } else {
        values.clear();
    }
}

void CFieldReader::End() {
    if (m_object.size() == m_asked.size()) {
        return;
    }
    for (auto it = m_object.begin(); it != m_object.end(); ++it) {
        const std::string strKey = it.name();
        const bool bAsked = std::any_of(m_asked.begin(), m_asked.end(),
                                        [&](const char* pszKey) { return strKey == pszKey; });
        if (bAsked) {
            continue;
        }
        if (m_puiUnknown == nullptr) {
            return Fail({m_pPlace, strKey.c_str(), 0}, "is not known");
        }
        ++*m_puiUnknown;
    }
}

const Json::Value* CFieldReader::Find(const char* pszKey) {
    const Json::Value* const pFound =
        m_object.find(pszKey, pszKey + std::char_traits<char>::length(pszKey));
    if (pFound != nullptr) {
        m_asked.push_back(pszKey);
    }
    return pFound;
}

void CFieldReader::Fail(const CFieldPlace& place, std::string strFault) {
    if (m_fault.strFault.empty()) {
        m_fault = {place.Text(), std::move(strFault)};
    }
}

void CFieldReader::Read(const Json::Value& from, const CFieldPlace& place, std::string& strValue) {
    if (!from.isString()) {
        return Fail(place, "must be a text");
    }
    strValue = from.asString();
    if (!IsUtf8(strValue)) {
        Fail(place, "must be UTF-8");
    }
}

void CFieldReader::Read(const Json::Value& from, const CFieldPlace& place, bool& bValue) {
    if (!from.isBool()) {
        return Fail(place, "must be true or false");
    }
    bValue = from.asBool();
}

void CFieldReader::Read(const Json::Value& from, const CFieldPlace& /*place*/, Json::Value& value) {
    value = from;
}

void CFieldReader::ReadSigned(const Json::Value& from, const CFieldPlace& place, int64_t iMin,
                              int64_t iMax, int64_t& iValue) {
    const bool bInteger = from.type() == Json::intValue || from.type() == Json::uintValue;
    if (!bInteger || !from.isInt64() || from.asInt64() < iMin || from.asInt64() > iMax) {
        return Fail(place, "must be a whole number from " + std::to_string(iMin) + " to " +
                               std::to_string(iMax));
    }
    iValue = from.asInt64();
}

void CFieldReader::ReadUnsigned(const Json::Value& from, const CFieldPlace& place, uint64_t uiMax,
                                uint64_t& uiValue) {
    const bool bInteger = from.type() == Json::intValue || from.type() == Json::uintValue;
    if (!bInteger || !from.isUInt64() || from.asUInt64() > uiMax) {
        return Fail(place, "must be a whole number from 0 to " + std::to_string(uiMax));
    }
    uiValue = from.asUInt64();
}

void CFieldReader::ReadName(const Json::Value& from, const CFieldPlace& place,
                            const char* const* ppszNames, std::size_t uiNames,
                            std::size_t& uiValue) {
    std::string strNames;
    for (std::size_t ui = 0; ui < uiNames; ++ui) {
        if (from.isString() && from.asString() == ppszNames[ui]) {
            uiValue = ui;
            return;
        }
        strNames += (ui == 0 ? "" : ", ") + std::string(ppszNames[ui]);
    }
    Fail(place, "must be one of: " + strNames);
}
