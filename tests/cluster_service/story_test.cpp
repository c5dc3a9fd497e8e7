#include <filesystem>

#include "service_fixture.h"

namespace {

namespace fs = std::filesystem;

/// The files of the folder "story": a cluster, and stories of it with what is shown of each. When
/// one comes out otherwise, a person reads it before the text is kept.
std::vector<std::string> StoryNames() {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(PSZ_STORY_DIR)) {
        if (entry.path().extension() == ".jsonl") {
            names.push_back(entry.path().stem());
        }
    }
    return names;
}

/// All but the last line, whose numbers tell nothing to a reader.
std::string WithoutSummary(const std::string& strOutput) {
    return strOutput.substr(0, strOutput.rfind("\n\n") + 1);
}

class Story : public CServiceTest, public ::testing::WithParamInterface<std::string> {};

TEST_P(Story, IsToldAsItWasRead) {
    const std::string strStory = std::string(PSZ_STORY_DIR "/") + GetParam();
    ASSERT_EQ(Run({"import", "--yes", PSZ_STORY_DIR "/cluster"}).iExitCode, 0);
    const CProcessResult result = Run({"play", strStory + ".jsonl"});
    EXPECT_EQ(result.iExitCode, 0) << result.strErrors;
    EXPECT_EQ(WithoutSummary(result.strOutput), ReadText(strStory + ".txt"));
}

INSTANTIATE_TEST_SUITE_P(Each, Story, ::testing::ValuesIn(StoryNames()),
                         [](const auto& one) { return one.param; });

}  // namespace
