#include "command/play.h"

#include <memory>

#include "cluster_engine/engine.h"
#include "command/exit_code.h"
#include "play/container_table.h"
#include "play/player.h"
#include "play/story.h"
#include "play/timeline.h"
#include "reference_host/shown_text.h"
#include "shell/direct_runner.h"
#include "shell/gate_store.h"
#include "shell/recorded_runner.h"
#include "shell/recorded_store.h"
#include "shell/replay.h"
#include "shell/run_record.h"

namespace {

void ShowSummary(const CPlayer& player, std::ostream& output) {
    output << '\n'
           << player.GetInputs() << " inputs, " << player.GetEvents() << " events; "
           << player.GetExpectations() - player.GetUnmet() << " of " << player.GetExpectations()
           << " expectations were met; digest " << player.GetDigest() << '\n';
}

int ExitCodeOf(const CPlayer& player, const CRunRecord& record, bool bReplayed,
               std::ostream& errors) {
    if (!record.GetFault().empty()) {
        errors << ShownText(record.GetFault()) << '\n';
        return EXIT_COULD_NOT;
    }
    if (player.GetUnmet() != 0) {
        return EXIT_REFUSED;
    }
    if (player.GetCommitCode() != 0 && !bReplayed) {
        errors << "the store does not hold all that was played: code " << player.GetCommitCode()
               << '\n';
        return EXIT_COULD_NOT;
    }
    return EXIT_DONE;
}

/// The journal's own state, or what the store has at the time of the first line.
int Load(CClusterEngine& engine, const CStory& story, std::string& strWhy) {
    return story.header.state.isNull() ? engine.Load(story.lines.front().iTime, strWhy)
                                       : engine.Load(story.header.state, strWhy);
}

}  // namespace

int Play(CStage& stage, IStepClock& clock, const CPlayOptions& options, std::ostream& output,
         std::ostream& errors) {
    CStory story;
    if (!ReadStoryFile(options.strFile, story, errors)) {
        return EXIT_COULD_NOT;
    }
    const std::shared_ptr<CReplay> pReplay =
        story.header.state.isNull() ? nullptr : std::make_shared<CReplay>(story.header);
    if (pReplay == nullptr && !options.bDryRun) {
        if (const int iResult = options.mayChange(); iResult != EXIT_DONE) {
            return iResult;
        }
    }
    const std::shared_ptr<IStore> pStore = pReplay != nullptr ? pReplay
                                           : options.bDryRun  ? stage.shared_from_this()
                                                              : stage.GetStore();
    const auto pRecorded = std::make_shared<CRecordedStore>(pStore, story.header);
    const auto pGate = std::make_shared<CGateStore>(pRecorded);
    SetStore(pGate);
    CPlayedEvents events;
    CDirectRunner direct;
    CRecordedRunner runner(pReplay != nullptr ? *pReplay : static_cast<IPluginRunner&>(direct),
                           *pRecorded);
    const CEngineSettings settings = story.header.settings.value_or(CEngineSettings());
    CClusterEngine engine({events, runner, clock, *pGate}, settings);
    std::string strWhy;
    if (const int iCode = Load(engine, story, strWhy); iCode != 0) {
        errors << strWhy << ": code " << iCode << ", the log says why\n";
        return EXIT_COULD_NOT;
    }
    CRunRecord record(*pRecorded, runner, options.journal);
    const std::unique_ptr<ITimeline> pTimeline = MakeTimeline(options.bJson, output);
    pTimeline->ShowContainers("before", PlayedContainers());
    CPlayer player(engine, events, *pTimeline, record, *pGate, pReplay.get());
    player.Play(story, settings);
    pTimeline->ShowContainers("after", PlayedContainers());
    if (!options.bJson) {
        ShowSummary(player, output);
    }
    return ExitCodeOf(player, record, pReplay != nullptr, errors);
}
