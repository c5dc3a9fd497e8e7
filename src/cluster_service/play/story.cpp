#include "play/story.h"

#include <ctime>
#include <fstream>
#include <limits>
#include <utility>

#include "reference_host/shown_text.h"

namespace {

constexpr int32_t NUMERIC_STORY_VERSION = 1;
constexpr char PSZ_STORY[] = "story";
constexpr char PSZ_EVERY[] = "every";
constexpr char PSZ_UNTIL[] = "until";
constexpr char PSZ_EXPECT[] = "expect";
constexpr char PSZ_TIMES[] = "times";

struct CStoryHeader {
    int32_t iVersion = NUMERIC_STORY_VERSION;
    std::string strName;
    std::string strDay;
    bool bTicks = true;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_STORY, self.iVersion);
        form.May("name", self.strName);
        form.May("day", self.strDay);
        form.May("ticks", self.bTicks, true);
    }
};

/// What a story has beside the input of a line.
struct CStoryFields {
    int64_t iTime = 0;
    std::optional<int64_t> every;
    std::optional<int64_t> until;
    std::optional<Json::Value> expect;
    std::optional<int32_t> times;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need(PSZ_INPUT_TIME, self.iTime);
        form.May(PSZ_EVERY, self.every);
        form.May(PSZ_UNTIL, self.until);
        form.May(PSZ_EXPECT, self.expect);
        form.May(PSZ_TIMES, self.times);
    }
};

class CStoryReader {
public:
    CStoryReader(std::istream& stream, CStory& story, CJournalFault& fault)
        : m_lines(stream), m_story(story), m_fault(fault) {}

    bool Read();

private:
    bool ReadFirst(const Json::Value& json);
    bool ReadHeader(const Json::Value& json);
    bool ReadJournalLine(const Json::Value& json);
    bool ReadStoryLine(Json::Value json);
    bool ReadFields(Json::Value& json, CStoryFields& fields);
    bool ReadRepeat(const CStoryFields& fields, CStoryLine& line);
    bool ReadExpectation(const CStoryFields& fields, CStoryLine& line);
    bool ResolveTime(Json::Value& json, const char* pszKey);
    bool Fail(std::string strPlace, std::string strFault,
              EJournalFault eFault = EJournalFault::BAD_FIELD);

    CLineReader m_lines;
    CStory& m_story;
    CJournalFault& m_fault;
    std::optional<int64_t> m_midnight;  ///< of the story's day
    int64_t m_iTime = 0;
    std::size_t m_uiInput = 0;  ///< of a journal: where the last input stands, from 1
};

bool IsComment(const std::string& strLine) {
    const std::size_t uiFirst = strLine.find_first_not_of(" \t\r");
    return uiFirst == std::string::npos || strLine[uiFirst] == '#';
}

/// The text of a form such as "2026-03-04", whole; nothing when it is of another.
std::optional<std::tm> ParseTime(const std::string& strText, const char* pszForm) {
    std::tm parts{};
    const char* const pszEnd = strptime(strText.c_str(), pszForm, &parts);
    return pszEnd != nullptr && *pszEnd == '\0' ? std::optional(parts) : std::nullopt;
}

bool CStoryReader::Read() {
    std::string strLine;
    for (bool bFirst = true; m_lines.Next(strLine);) {
        Json::Value json;
        m_fault.uiLine = m_lines.GetLine();
        if (!m_story.bJournal && IsComment(strLine)) {
            continue;
        }
        if (!m_lines.Parse(strLine, json, m_fault)) {
            return false;
        }
        const bool bRead = bFirst             ? ReadFirst(json)
                           : m_story.bJournal ? ReadJournalLine(json)
                                              : ReadStoryLine(std::move(json));
        if (!bRead) {
            return false;
        }
        bFirst = false;
    }
    return true;
}

bool CStoryReader::ReadFirst(const Json::Value& json) {
    m_story.bJournal = json.isMember(PSZ_JOURNAL);
    if (m_story.bJournal) {
        return ReadJournalHeader(json, m_story.header, m_fault);
    }
    return json.isMember(PSZ_STORY) ? ReadHeader(json) : ReadStoryLine(json);
}

bool CStoryReader::ReadHeader(const Json::Value& json) {
    CStoryHeader header;
    if (!FromJson(json, header, m_fault.where)) {
        m_fault.eFault = EJournalFault::BAD_FIELD;
        return false;
    }
    if (header.iVersion != NUMERIC_STORY_VERSION) {
        return Fail(PSZ_STORY, "must be " + std::to_string(NUMERIC_STORY_VERSION),
                    EJournalFault::FOREIGN_VERSION);
    }
    m_story.strName = header.strName;
    m_story.bMakesTicks = header.bTicks;
    if (header.strDay.empty()) {
        return true;
    }
    std::optional<std::tm> day = ParseTime(header.strDay, "%Y-%m-%d");
    if (!day) {
        return Fail("day", "must be a day such as 2026-03-04");
    }
    m_midnight = timegm(&*day);
    return true;
}

bool CStoryReader::ReadJournalLine(const Json::Value& json) {
    CJournalEntry entry;
    if (!ReadJournalEntry(json, entry, m_fault)) {
        return false;
    }
    if (const auto* const pChance = std::get_if<CChance>(&entry); pChance != nullptr) {
        std::vector<CChance>& chances =
            m_uiInput != 0 ? m_story.lines[m_uiInput - 1].chances : m_story.chances;
        chances.push_back(*pChance);
        return true;
    }
    CStoryLine line;
    line.uiLine = m_lines.GetLine();
    if (auto* const pInput = std::get_if<CInput>(&entry); pInput != nullptr) {
        m_iTime = pInput->iTime;
        m_uiInput = m_story.lines.size() + 1;
        line.content = std::move(*pInput);
    } else {
        line.content = std::get<CJournalCommit>(std::move(entry));
    }
    line.iTime = m_iTime;
    m_story.lines.push_back(std::move(line));
    return true;
}

bool CStoryReader::ReadStoryLine(Json::Value json) {
    if (json.isMember(PSZ_COMMIT)) {
        return Fail(PSZ_COMMIT, "stands in a journal alone", EJournalFault::UNKNOWN_KIND);
    }
    CStoryFields fields;
    if (!ReadFields(json, fields)) {
        return false;
    }
    CStoryLine line;
    line.uiLine = m_lines.GetLine();
    line.iTime = fields.iTime;
    if (!json.isMember(PSZ_INPUT_KIND) && fields.expect) {
        json.removeMember(PSZ_INPUT_TIME);
        if (!json.empty()) {
            return Fail(json.getMemberNames().front(), "is no field of an expectation");
        }
        return ReadExpectation(fields, line);
    }
    CJournalEntry entry;
    if (!ReadJournalEntry(json, entry, m_fault)) {
        return false;
    }
    auto* const pInput = std::get_if<CInput>(&entry);
    if (pInput == nullptr) {
        return Fail("", "stands in a journal alone", EJournalFault::UNKNOWN_KIND);
    }
    line.content = std::move(*pInput);
    line.wantedAnswer = fields.expect;
    return ReadRepeat(fields, line);
}

/// Takes what is not the input's out of the object.
bool CStoryReader::ReadFields(Json::Value& json, CStoryFields& fields) {
    if (!ResolveTime(json, PSZ_INPUT_TIME) || !ResolveTime(json, PSZ_UNTIL)) {
        return false;
    }
    Json::Value own(Json::objectValue);
    for (const char* const pszKey : {PSZ_EVERY, PSZ_UNTIL, PSZ_EXPECT, PSZ_TIMES}) {
        json.removeMember(pszKey, &own[pszKey]);
        if (own[pszKey].isNull()) {
            own.removeMember(pszKey);
        }
    }
    if (json.isMember(PSZ_INPUT_TIME)) {
        own[PSZ_INPUT_TIME] = json[PSZ_INPUT_TIME];
    }
    m_fault.eFault = EJournalFault::BAD_FIELD;
    const bool bRead = FromJson(own, fields, m_fault.where);
    m_fault.eFault = bRead ? EJournalFault::NONE : m_fault.eFault;
    return bRead;
}

bool CStoryReader::ReadRepeat(const CStoryFields& fields, CStoryLine& line) {
    if (fields.times) {
        return Fail(PSZ_TIMES, "belongs to the expectation of an event");
    }
    if (fields.every.has_value() != fields.until.has_value()) {
        return Fail(PSZ_EVERY, "and \"until\" come together");
    }
    if (fields.every) {
        line.iEvery = *fields.every;
        line.iUntil = *fields.until;
        if (line.iEvery < 1 || line.iUntil < line.iTime) {
            return Fail(PSZ_EVERY, "must be a second at least, and \"until\" not before \"time\"");
        }
        if (line.wantedAnswer) {
            return Fail(PSZ_EXPECT, "belongs to an input that comes once");
        }
    }
    m_story.lines.push_back(std::move(line));
    return true;
}

bool CStoryReader::ReadExpectation(const CStoryFields& fields, CStoryLine& line) {
    const Json::Value& wanted = *fields.expect;
    const bool bEvent = wanted.isObject() && wanted.isMember("event");
    if (!bEvent && !(wanted.isObject() && wanted.isMember("container"))) {
        return Fail(PSZ_EXPECT, "must have an \"event\" or a \"container\"");
    }
    if (!bEvent && fields.times) {
        return Fail(PSZ_TIMES, "belongs to the expectation of an event");
    }
    line.content = CExpectation{wanted, fields.times};
    m_story.lines.push_back(std::move(line));
    return true;
}

/// A time of the story's day becomes its second.
bool CStoryReader::ResolveTime(Json::Value& json, const char* pszKey) {
    if (!json.isMember(pszKey) || !json[pszKey].isString()) {
        return true;
    }
    const std::optional<std::tm> time = ParseTime(json[pszKey].asString(), "%H:%M:%S");
    if (!time) {
        return Fail(pszKey, "must be a second, or a time such as 06:30:00");
    }
    if (!m_midnight) {
        return Fail(pszKey, "is a time of the day, and the first line names no \"day\"");
    }
    const int64_t iMinutes = time->tm_hour * int64_t{60} + time->tm_min;
    json[pszKey] = Json::Int64{*m_midnight + iMinutes * 60 + time->tm_sec};
    return true;
}

bool CStoryReader::Fail(std::string strPlace, std::string strFault, EJournalFault eFault) {
    m_fault.eFault = eFault;
    m_fault.where = {std::move(strPlace), std::move(strFault)};
    return false;
}

}  // namespace

bool ReadStory(std::istream& stream, CStory& story, CJournalFault& fault) {
    return CStoryReader(stream, story, fault).Read();
}

bool ReadStoryFile(const std::string& strFile, CStory& story, std::ostream& errors) {
    std::ifstream stream(strFile, std::ios::binary);
    CJournalFault fault;
    std::string strWhy;
    if (!ReadStory(stream, story, fault)) {
        strWhy = ShownText(fault.Text()) + "\nnothing was played";
    } else if (!stream.is_open() || stream.bad()) {
        strWhy = "cannot be read";
    } else if (story.lines.empty()) {
        strWhy = "has no input";
    }
    if (!strWhy.empty()) {
        errors << ShownText(strFile) << ": " << strWhy << '\n';
    }
    return strWhy.empty();
}
