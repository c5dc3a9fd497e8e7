#include "agents/agents.h"

#include <chrono>
#include <csignal>
#include <memory>
#include <optional>
#include <string>
#include <thread>

#include "agents/http_client.h"
#include "agents/live_story.h"
#include "agents/service_answer.h"
#include "command/exit_code.h"
#include "play/story.h"
#include "play/timeline.h"
#include "reference_host/shown_text.h"

namespace {

constexpr std::chrono::seconds NUMERIC_START{10};
constexpr std::chrono::milliseconds NUMERIC_PAUSE{50};

/// False, with the reason told, when the service does not become ready.
bool AwaitReady(CHttpClient& client, std::ostream& errors) {
    const auto limit = std::chrono::steady_clock::now() + NUMERIC_START;
    for (;;) {
        const CHttpAnswer answer = client.Get("/readyz");
        if (answer.lStatus == 200) {
            return true;
        }
        if (std::chrono::steady_clock::now() > limit) {
            errors << "the service is not ready: " << ShownText(FaultOf(answer)) << '\n';
            return false;
        }
        std::this_thread::sleep_for(NUMERIC_PAUSE);
    }
}

/// What the service takes for silence; nothing, with the reason told, when it does not say.
std::optional<std::chrono::seconds> AskSilence(CHttpClient& client, std::ostream& errors) {
    const CHttpAnswer answer = client.Get("/api/v1/settings");
    const Json::Value& silence = answer.json["engine"]["silence"];
    if (answer.lStatus != 200 || !silence.isInt()) {
        errors << "the service does not tell its settings: " << ShownText(FaultOf(answer)) << '\n';
        return std::nullopt;
    }
    return std::chrono::seconds(silence.asInt());
}

volatile std::sig_atomic_t g_bInterrupted = 0;

/// Until Ctrl-C. False when something went wrong, which has been told then.
bool Stay(CLiveStory& live, const std::string& strServer, std::ostream& output) {
    for (const int iSignal : {SIGINT, SIGTERM}) {
        std::signal(iSignal, [](int) { g_bInterrupted = 1; });
    }
    output << "the agents go on; see " << strServer << "/ and end them with Ctrl-C" << std::endl;
    return live.GoOnUntil([] { return g_bInterrupted != 0; });
}

}  // namespace

int Agents(const CAgentsOptions& options, std::ostream& output, std::ostream& errors) {
    CStory story;
    if (!ReadStoryFile(options.strStory, story, errors)) {
        return EXIT_COULD_NOT;
    }
    if (story.bJournal) {
        errors << ShownText(options.strStory) << ": is a journal; agents live a story\n";
        return EXIT_COULD_NOT;
    }
    CHttpClient client(options.strServer);
    if (!AwaitReady(client, errors)) {
        return EXIT_COULD_NOT;
    }
    const auto silence = AskSilence(client, errors);
    if (!silence) {
        return EXIT_COULD_NOT;
    }
    const std::unique_ptr<ITimeline> pTimeline = MakeTimeline(options.bJson, output);
    const auto begun = std::chrono::steady_clock::now();
    CLiveStory live(options.strServer, *silence, *pTimeline);
    live.ShowContainers("before");
    const bool bLived = live.Live(story) && live.AwaitAgreement();
    live.ShowContainers("after");
    if (!options.bJson) {
        const auto took = std::chrono::duration_cast<std::chrono::seconds>(
            std::chrono::steady_clock::now() - begun);
        output << '\n'
               << live.GetInputs() << " inputs beside the reports, " << live.GetEvents()
               << " events in " << took.count() << " seconds; "
               << (bLived ? "all " + std::to_string(live.GetExpectations()) +
                                " expectations were met, and the agents do what the service shows"
                          : "the story was given up at the first line that did not come true")
               << '\n';
    }
    const bool bDone = bLived && (!options.bStay || Stay(live, options.strServer, output));
    return bDone ? EXIT_DONE : EXIT_REFUSED;
}
