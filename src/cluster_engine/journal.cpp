#include "cluster_engine/journal.h"

#include <cinttypes>
#include <cstdio>
#include <utility>

namespace {

constexpr uint64_t NUMERIC_FNV_PRIME = 1099511628211ULL;

bool Fail(CJournalFault& fault, EJournalFault eFault, CFieldFault where) {
    fault.eFault = eFault;
    fault.where = std::move(where);
    return false;
}

bool IsKnownInput(const CFieldFault& fault) {
    return fault.strPlace != PSZ_INPUT_KIND;
}

/// Reads the kind of chance whose key the object has. False when it has none.
template <std::size_t... KINDS>
bool ReadChance(const Json::Value& json, CChance& chance, CFieldFault& where,
                std::index_sequence<KINDS...>) {
    return ((json.isMember(std::variant_alternative_t<KINDS, CChance>::KEY) &&
             (FromJson(json, chance.emplace<KINDS>(), where), true)) ||
            ...);
}

}  // namespace

std::string CJournalFault::Text() const {
    const std::string strPlace = where.strPlace.empty() ? "" : '"' + where.strPlace + "\": ";
    return "line " + std::to_string(uiLine) + ": " + strPlace + where.strFault + " (" +
           NameOf(eFault) + ")";
}

bool CLineReader::Next(std::string& strLine) {
    if (!std::getline(m_stream, strLine)) {
        return false;
    }
    ++m_uiLine;
    m_bEnded = m_stream.eof();
    return true;
}

bool CLineReader::Parse(const std::string& strLine, Json::Value& value,
                        CJournalFault& fault) const {
    CFieldFault where;
    fault.uiLine = m_uiLine;
    if (!ParseJsonText(strLine.data(), strLine.data() + strLine.size(), value, where)) {
        return m_bEnded ? Fail(fault, EJournalFault::CUT, {"", "the file ends within this line"})
                        : Fail(fault, EJournalFault::NO_JSON, where);
    }
    return value.isObject() || Fail(fault, EJournalFault::BAD_FIELD, {"", "must be an object"});
}

bool ReadJournalHeader(const Json::Value& json, CJournalHeader& header, CJournalFault& fault) {
    CFieldFault where;
    if (!json.isMember(PSZ_JOURNAL)) {
        return Fail(fault, EJournalFault::NO_HEADER, {PSZ_JOURNAL, "is missing"});
    }
    const bool bForeign = json[PSZ_JOURNAL].isInt() && json[PSZ_JOURNAL] != NUMERIC_JOURNAL_VERSION;
    if (bForeign) {
        return Fail(fault, EJournalFault::FOREIGN_VERSION,
                    {PSZ_JOURNAL, "must be " + std::to_string(NUMERIC_JOURNAL_VERSION) +
                                      ": another release wrote this file"});
    }
    return FromJson(json, header, where) || Fail(fault, EJournalFault::BAD_FIELD, where);
}

bool ReadJournalEntry(const Json::Value& json, CJournalEntry& entry, CJournalFault& fault) {
    CFieldFault where;
    if (json.isMember(PSZ_COMMIT)) {
        return FromJson(json, entry.emplace<CJournalCommit>(), where) ||
               Fail(fault, EJournalFault::BAD_FIELD, where);
    }
    if (ReadChance(json, entry.emplace<CChance>(), where,
                   std::make_index_sequence<std::variant_size_v<CChance>>())) {
        return where.strFault.empty() || Fail(fault, EJournalFault::BAD_FIELD, where);
    }
    return InputFromJson(json, entry.emplace<CInput>(), where) ||
           Fail(fault, IsKnownInput(where) ? EJournalFault::BAD_FIELD : EJournalFault::UNKNOWN_KIND,
                where);
}

bool CJournalReader::Next(CJournalEntry& entry) {
    std::string strLine;
    Json::Value json;
    if (m_fault.eFault != EJournalFault::NONE) {
        return false;
    }
    const bool bFirst = GetLine() == 0;
    if (!m_lines.Next(strLine)) {
        return bFirst && Fail(m_fault, EJournalFault::NO_HEADER, {"", "the file is empty"});
    }
    if (!m_lines.Parse(strLine, json, m_fault)) {
        return false;
    }
    if (bFirst) {
        return ReadJournalHeader(json, m_header, m_fault) && Next(entry);
    }
    return ReadJournalEntry(json, entry, m_fault);
}

void CRunDigest::Take(const CAnswer& answer) {
    TakeLine(JsonLine(AnswerToJson(answer)));
}

void CRunDigest::Take(const CEvent& event) {
    TakeLine(JsonLine(ToJson(event)));
}

void CRunDigest::TakeWrite(const std::string& strPath, const std::string& strText) {
    TakeLine(strPath);
    TakeLine(strText);
}

void CRunDigest::TakeLine(const std::string& strLine) {
    const auto takeByte = [&](char cByte) {
        m_ullSum = (m_ullSum ^ static_cast<unsigned char>(cByte)) * NUMERIC_FNV_PRIME;
    };
    for (const char cByte : strLine) {
        takeByte(cByte);
    }
    takeByte('\n');
}

std::string CRunDigest::Text() const {
    char szText[17];
    std::snprintf(szText, sizeof(szText), "%016" PRIx64, m_ullSum);
    return szText;
}

CJournalWriter::CJournalWriter(std::ostream& stream, const CJournalHeader& header)
    : m_stream(stream) {
    m_stream << JsonLine(ToJson(header)) << '\n';
}

void CJournalWriter::Write(const CInput& input) {
    m_stream << JsonLine(InputToJson(input)) << '\n';
}

void CJournalWriter::Write(const CChance& chance) {
    std::visit([&](const auto& kind) { m_stream << JsonLine(ToJson(kind)) << '\n'; }, chance);
}

void CJournalWriter::Write(const CJournalCommit& commit) {
    m_stream << JsonLine(ToJson(commit)) << '\n' << std::flush;
}
