#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "cluster_engine/engine.h"
#include "cluster_engine/journal.h"
#include "play/story.h"
#include "play/timeline.h"
#include "shell/replay.h"
#include "shell/run_record.h"

/// Keeps the events of an engine until they are taken.
class CPlayedEvents : public IEventSink {
public:
    void Take(const CEvent& event) override { m_events.push_back(event); }
    std::vector<CEvent> TakeAll() { return std::exchange(m_events, {}); }

private:
    std::vector<CEvent> m_events;
};

/// Plays a story to an engine that is loaded: each input at its second, a tick each second in
/// between, a commit after each. Of a journal only what stands in it, ticks and commits too.
class CPlayer {
public:
    /// All of them outlive the player. pReplay, which may be null, answers the engine as it was
    /// answered when the journal was written.
    CPlayer(CClusterEngine& engine, CPlayedEvents& events, ITimeline& timeline, CRunRecord& record,
            IStoreGate& gate, CReplay* pReplay)
        : m_engine(engine),
          m_events(events),
          m_timeline(timeline),
          m_record(record),
          m_gate(gate),
          m_pReplay(pReplay) {}

    void Play(const CStory& story, const CEngineSettings& settings);

    std::size_t GetInputs() const { return m_uiInputs; }
    std::size_t GetEvents() const { return m_uiEvents; }
    std::size_t GetExpectations() const { return m_uiExpectations; }
    std::size_t GetUnmet() const { return m_uiUnmet; }

    /// What the last commit answered: 0, or the store's code, and it does not hold all.
    int GetCommitCode() const { return m_iCommitCode; }

    /// As of the last commit.
    const std::string& GetDigest() const { return m_strDigest; }

private:
    void PlayLine(const CStory& story, const CStoryLine& line);
    void PlayInput(const CStory& story, const CStoryLine& line);

    /// Time goes on to this second, with the inputs that come again.
    void GoOnTo(int64_t iTime, bool bTicks);
    void PlayDue();
    CAnswer Apply(const CInput& input);
    void ShowAnswer(const CStoryLine& line, const CInput& input, const CAnswer& answer);
    void Commit();
    void TakeEvents();

    void Judge(const CStoryLine& line, const CExpectation& expectation);
    void JudgeAnswer(const CStoryLine& line, const CAnswer& answer);
    void JudgeDigest(const CStoryLine& line, const CJournalCommit& commit);
    void Unmet(const CStoryLine& line, const std::string& strText);

    CClusterEngine& m_engine;
    CPlayedEvents& m_events;
    ITimeline& m_timeline;
    CRunRecord& m_record;
    IStoreGate& m_gate;
    CReplay* const m_pReplay;
    std::string m_strDigest;
    bool m_bDiffers = false;  ///< a commit was not as in the journal, and so is none behind it
    int64_t m_iNow = 0;
    /// By the second when it comes next, and its place in the file.
    std::map<std::pair<int64_t, std::size_t>, const CStoryLine*> m_again;
    std::vector<CEvent> m_recent;  ///< since the last input of the file
    std::size_t m_uiInputs = 0;
    std::size_t m_uiEvents = 0;
    std::size_t m_uiExpectations = 0;
    std::size_t m_uiUnmet = 0;
    int m_iCommitCode = 0;
};
