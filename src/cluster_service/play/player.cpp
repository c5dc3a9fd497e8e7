#include "play/player.h"

#include <algorithm>

#include "play/container_table.h"
#include "play/json_match.h"

void CPlayer::Play(const CStory& story, const CEngineSettings& settings) {
    if (!story.lines.empty()) {
        m_iNow = story.lines.front().iTime;
    }
    TakeEvents();  // what the load has to say
    if (m_pReplay != nullptr) {
        m_pReplay->BeginInput(story.chances);
    }
    m_record.Begin(m_engine, settings);
    for (const CStoryLine& line : story.lines) {
        PlayLine(story, line);
    }
}

void CPlayer::PlayLine(const CStory& story, const CStoryLine& line) {
    if (!story.bJournal) {
        GoOnTo(line.iTime, story.bMakesTicks);
    }
    if (std::holds_alternative<CInput>(line.content)) {
        return PlayInput(story, line);
    }
    ++m_uiExpectations;
    if (const auto* const pCommit = std::get_if<CJournalCommit>(&line.content);
        pCommit != nullptr) {
        Commit();
        JudgeDigest(line, *pCommit);
    } else {
        Judge(line, std::get<CExpectation>(line.content));
    }
}

void CPlayer::PlayInput(const CStory& story, const CStoryLine& line) {
    m_recent.clear();
    if (m_pReplay != nullptr) {
        m_pReplay->BeginInput(line.chances);
    }
    const auto& input = std::get<CInput>(line.content);
    const CAnswer answer = Apply(input);
    if (!story.bJournal) {
        Commit();
    }
    ShowAnswer(line, input, answer);
    if (line.iEvery != 0) {
        m_again[{line.iTime + line.iEvery, line.uiLine}] = &line;
    }
    if (line.wantedAnswer) {
        ++m_uiExpectations;
        JudgeAnswer(line, answer);
    }
}

void CPlayer::GoOnTo(int64_t iTime, bool bTicks) {
    while (m_iNow < iTime) {
        ++m_iNow;
        if (bTicks) {
            Apply({m_iNow, CTick()});
            Commit();
        }
        PlayDue();
    }
    m_iNow = iTime;  // a clock may go back
}

void CPlayer::PlayDue() {
    while (!m_again.empty() && m_again.begin()->first.first <= m_iNow) {
        const auto node = m_again.extract(m_again.begin());
        const CStoryLine& line = *node.mapped();
        const int64_t iDue = node.key().first;
        if (iDue > line.iUntil) {
            continue;
        }
        CInput input = std::get<CInput>(line.content);
        input.iTime = iDue;
        const CAnswer answer = Apply(input);
        Commit();
        ShowAnswer(line, input, answer);
        m_again[{iDue + line.iEvery, line.uiLine}] = &line;
    }
}

CAnswer CPlayer::Apply(const CInput& input) {
    m_record.Take(input);
    CAnswer answer = m_engine.Apply(input);
    m_record.Take(answer);
    return answer;
}

void CPlayer::ShowAnswer(const CStoryLine& line, const CInput& input, const CAnswer& answer) {
    if (!std::holds_alternative<CTick>(input.body)) {
        ++m_uiInputs;
        m_timeline.ShowAnswer(line.uiLine, input, answer);
    }
}

void CPlayer::Commit() {
    m_iCommitCode = m_engine.Commit();
    TakeEvents();
    m_strDigest = m_record.GetDigest();
    m_record.Committed(m_engine, m_iCommitCode, !m_gate.IsAway());
}

void CPlayer::TakeEvents() {
    std::vector<CEvent> events = m_events.TakeAll();
    for (const CEvent& event : events) {
        m_record.Take(event);
    }
    m_timeline.ShowEvents(events);
    m_uiEvents += events.size();
    m_recent.insert(m_recent.end(), std::make_move_iterator(events.begin()),
                    std::make_move_iterator(events.end()));
}

void CPlayer::Judge(const CStoryLine& line, const CExpectation& expectation) {
    const Json::Value& wanted = expectation.wanted;
    if (wanted.isMember("container")) {
        Json::Value rows;
        rows["containers"] = PlayedContainers().ToJson();
        Json::Value wantedRows;
        wantedRows["containers"].append(wanted);
        if (!HasWanted(rows, wantedRows)) {
            Unmet(line, "no such container: " + JsonLine(wanted));
        }
        return;
    }
    const auto iFound = std::count_if(m_recent.begin(), m_recent.end(), [&](const CEvent& event) {
        return HasWanted(ToJson(event), wanted);
    });
    if (expectation.times ? iFound != *expectation.times : iFound == 0) {
        const std::string strTimes =
            expectation.times ? std::to_string(*expectation.times) + " times" : "at least once";
        Unmet(line, "expected " + strTimes + ", happened " + std::to_string(iFound) +
                        " times since the last input: " + JsonLine(wanted));
    }
}

void CPlayer::JudgeAnswer(const CStoryLine& line, const CAnswer& answer) {
    const Json::Value json = AnswerToJson(answer);
    if (!HasWanted(json, *line.wantedAnswer)) {
        Unmet(line,
              "expected the answer " + JsonLine(*line.wantedAnswer) + ", it is " + JsonLine(json));
    }
}

void CPlayer::JudgeDigest(const CStoryLine& line, const CJournalCommit& commit) {
    if (commit.iCode == m_iCommitCode && commit.strDigest == m_strDigest) {
        return;
    }
    if (m_bDiffers) {
        ++m_uiUnmet;
        return;
    }
    m_bDiffers = true;
    Unmet(line, "the first commit that is not as it was: the journal has code " +
                    std::to_string(commit.iCode) + " and digest " + commit.strDigest + ", it is " +
                    std::to_string(m_iCommitCode) + " and " + m_strDigest);
}

void CPlayer::Unmet(const CStoryLine& line, const std::string& strText) {
    ++m_uiUnmet;
    m_timeline.ShowUnmet(line.uiLine, strText);
}
