#include <filesystem>
#include <fstream>
#include <sstream>

#include "cluster_engine/engine_fixture.h"
#include "cluster_engine/life.h"
#include "cluster_engine/random_run.h"
#include "play/player.h"
#include "shell/recorded_runner.h"
#include "shell/recorded_store.h"
#include "shell/replay.h"
#include "shell/run_record.h"
#include "support/temp_dir.h"

namespace {

namespace fs = std::filesystem;

constexpr int NUMERIC_INPUTS = 4000;

/// Now and then a call is late, before or behind its decision, and its plug-in busy for some time.
class CLateRunner : public IPluginRunner {
public:
    explicit CLateRunner(unsigned int uiSeed) : m_dice(uiSeed) {}

    bool Run(const std::string& /*strPlugin*/, const std::string& /*strOperation*/,
             std::shared_ptr<std::function<void()>> pCall) override {
        const std::size_t uiDraw = m_dice.Below(200);
        if (uiDraw == 0) {
            unsigned long long ullDecision = 0;
            CScheduleMgr::Instance().IncreaseDecisionVerNum(ullDecision);
        }
        if (uiDraw > 1) {
            (*pCall)();
        }
        return uiDraw > 1;
    }

    bool IsBusy(const std::string& /*strPlugin*/) override { return m_dice.Below(2) == 0; }

private:
    CDice m_dice;
};

/// A run is written down in several files, and each of them is played alone.
class Replay : public CEngineTest, public ::testing::WithParamInterface<unsigned int> {
protected:
    std::string File() const { return m_dir.File("journal"); }

    /// Everything goes wrong now and then.
    void Disturb(CDice& dice) {
        switch (dice.Below(40)) {
            case 0:
                m_pStore->FailCall(1 + static_cast<unsigned int>(dice.Below(4)), -4);
                break;
            case 1:
                m_pStore->FailCall(1 + static_cast<unsigned int>(dice.Below(4)), -9);
                break;
            case 2:
                m_pStore->Put(Path("/ClusterConfig"),
                              R"({"IsLoadBalance":true,"IsFaultShift":true,)"
                              R"("IsLoadBalanceOnePeriod":false})");
                break;
            case 3:
                m_pStore->Put(Path("/Cluster"), CRandomInputs::Cluster());
                break;
            case 4:
                m_pStore->Erase(Path("/MERO/CGList"));
                break;
            default:
                break;
        }
    }

    InputBody Reloaded(CDice& dice) {
        CDocumentChanged changed;
        changed.eDocument = static_cast<EDocument>(dice.Below(7));
        return changed;
    }

    /// Writes the journal; the last state.
    std::string WriteDown(unsigned int uiSeed, uint64_t ullBytes) {
        m_pStore->Put(Path("/Cluster"), CRandomInputs::Cluster());
        const auto pRecorded = std::make_shared<CRecordedStore>(m_pStore);
        const auto pGate = std::make_shared<CGateStore>(pRecorded);
        SetStore(pGate);
        CLateRunner late(uiSeed);
        CRecordedRunner runner(late, *pRecorded);
        CClusterEngine engine({m_events, runner, m_clock, *pGate}, m_settings);
        std::string strWhy;
        EXPECT_EQ(engine.Load(NUMERIC_START, strWhy), 0) << strWhy;
        m_events.Clear();
        CRunRecord record(*pRecorded, runner, {File(), ullBytes, 0});
        record.Begin(engine, m_settings);
        CRandomInputs inputs(uiSeed, NUMERIC_START);
        CDice dice(uiSeed);
        for (int i = 0; i < NUMERIC_INPUTS; ++i) {
            Disturb(dice);
            CInput input = inputs.Next();
            if (dice.Below(50) == 0) {
                input.body = Reloaded(dice);
            }
            record.Take(input);
            record.Take(engine.Apply(input));
            const int iCode = dice.Below(4) != 0 ? engine.Commit() : -1;
            if (iCode == -1) {
                continue;  // inputs that wait together share a commit
            }
            for (const CEvent& event : m_events.Get()) {
                record.Take(event);
            }
            m_events.Clear();
            record.Committed(engine, iCode, !pGate->IsAway());
        }
        return record.GetFault();
    }

    /// Plays the file; what was not as it was.
    std::string PlayFile(const std::string& strFile) {
        CStory story;
        CJournalFault fault;
        std::ifstream stream(strFile);
        EXPECT_TRUE(ReadStory(stream, story, fault)) << fault.Text();
        const auto pReplay = std::make_shared<CReplay>(story.header);
        const auto pRecorded = std::make_shared<CRecordedStore>(pReplay, story.header);
        const auto pGate = std::make_shared<CGateStore>(pRecorded);
        SetStore(pGate);
        CPlayedEvents events;
        CRecordedRunner runner(*pReplay, *pRecorded);
        CClusterEngine engine({events, runner, m_clock, *pGate}, *story.header.settings);
        std::string strWhy;
        EXPECT_EQ(engine.Load(story.header.state, strWhy), 0) << strWhy;
        CRunRecord record(*pRecorded, runner, {strFile + "-again", ~uint64_t{0}, 0});
        std::ostringstream output;
        CJsonTimeline timeline(output);
        CPlayer player(engine, events, timeline, record, *pGate, pReplay.get());
        player.Play(story, *story.header.settings);
        EXPECT_EQ(player.GetUnmet(), 0U)
            << output.str().substr(std::min(output.str().find("unmet"), output.str().size()), 300);
        return std::to_string(player.GetExpectations());
    }

    CTempDir m_dir;
};

std::string TextOfFile(const std::string& strFile) {
    std::ifstream stream(strFile, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    return text.str();
}

TEST_P(Replay, OfEachFileAloneIsTheRunToTheByte) {
    EXPECT_EQ(InLife([&] { return WriteDown(GetParam(), 400'000); }), "");
    std::vector<std::string> files;
    for (const auto& entry : fs::directory_iterator(m_dir.GetPath())) {
        files.push_back(entry.path());
    }
    EXPECT_GE(files.size(), 2U);
    std::string strAll;
    for (const std::string& strFile : files) {
        SCOPED_TRACE(fs::path(strFile).filename());
        const std::string strCommits = InLife([&] { return PlayFile(strFile); });
        EXPECT_GT(std::stoi("0" + strCommits), 0);
        const std::string strText = TextOfFile(strFile);
        EXPECT_TRUE(TextOfFile(strFile + "-again") == strText) << "what is played is written so";
        strAll += strText;
    }
    for (const char* const pszKind :
         {R"("store_failed":)", R"("foreign_text":)", R"("late_call":)", R"("still_busy":)"}) {
        EXPECT_NE(strAll.find(pszKind), std::string::npos) << pszKind;
    }
}

TEST_P(Replay, FullDiskIsSaidAndAnotherFileIsTriedLater) {
    fs::create_symlink("/dev/full", File());
    const std::string strFault = InLife([&] { return WriteDown(GetParam(), ~uint64_t{0}); });
    EXPECT_EQ(strFault, File() + ": cannot be written: No space left on device");
    ASSERT_TRUE(fs::exists(File() + ".2")) << "there is room again";
    EXPECT_FALSE(fs::exists(File() + ".3"));
    EXPECT_NE(InLife([&] { return PlayFile(File() + ".2"); }), "0");
}

INSTANTIATE_TEST_SUITE_P(Seeds, Replay, ::testing::Range(1U, 9U));

}  // namespace
