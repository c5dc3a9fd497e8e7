#include <cstdarg>
#include <fstream>
#include <list>
#include <ostream>
#include <string>
#include <vector>

#include "framework_service/plugin_info.h"
#include "framework_service/plugin_mgr.h"
#include "plugins/plugin_folder.h"
#include "support/host_fixture.h"

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

namespace {

/// Keeps the text that the line about a failed entry point has where its format says a number.
class CEntryPointLogger : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*,
                      const char* pszFormat, ...) override {
        if (std::string(pszFormat).find("failure to creat sdk") == std::string::npos) {
            return;
        }
        va_list arguments;
        va_start(arguments, pszFormat);
        va_arg(arguments, const char*);
        const char* const pszText = va_arg(arguments, const char*);
        m_strText = pszText != nullptr ? pszText : "nothing";
        va_end(arguments);
    }

    void writeTraceLog(const char*, int, const char*, const char*, ...) override {}

    const std::string& GetText() const { return m_strText; }

private:
    std::string m_strText = "no line";
};

class PluginLoad : public CHostTest {
protected:
    const CPluginFolder m_folder;
};

TEST_F(PluginLoad, TheLineAboutAFailedEntryPointTellsWhatTheLoaderSaidInIt) {
    m_folder.Add("needs_library", "1.so");
    CEntryPointLogger logger;
    OMAdapter::getInstance().setLogger(&logger);
    CPluginInfo info("1.so");
    EXPECT_EQ(info.LoadLibrary(), 5);
    OMAdapter::getInstance().setLogger(&m_logger);
    EXPECT_THAT(logger.GetText(), HasSubstr("absent_library.so"));
}

/// A lost claim in words.
std::string LostText(const CLostClaim& claim) {
    const char* const KINDS[] = {"name", "job", "container", "bind"};
    return std::string(KINDS[claim.eKind]) + " " + claim.strKey + " to " + claim.strFile;
}

std::list<std::string> LostTexts(const CPluginFile& file) {
    std::list<std::string> texts;
    for (const CLostClaim& claim : file.lost) {
        texts.push_back(LostText(claim));
    }
    return texts;
}

class PluginFiles : public PluginLoad {
protected:
    ~PluginFiles() override { Manager().UnLoadAllPlugin(); }

    static CPluginMgr& Manager() { return CPluginMgr::Instance(); }

    static std::vector<CPluginFile> Files() {
        const std::list<CPluginFile> files = Manager().GetPluginFiles();
        return {files.begin(), files.end()};
    }
};

TEST_F(PluginFiles, TellWhatAPluginHolds) {
    m_folder.Add("alpha", "1.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Files().size(), 1u);
    const CPluginFile file = Files()[0];
    EXPECT_EQ(file.strFile, "1.so");
    EXPECT_EQ(file.strFailure, "");
    EXPECT_EQ(file.pPlugin, Manager().GetPluginByName("alpha"));
    EXPECT_EQ(file.strName, "alpha");
    EXPECT_THAT(file.held.jobs, ElementsAre(7, 101));
    EXPECT_THAT(file.held.containers, ElementsAre("Shared", "alphaType"));
    EXPECT_THAT(file.held.containerBinds,
                ElementsAre(Pair("Shared", ElementsAre("alphaLogic")),
                            Pair("alphaType", ElementsAre("alphaOne", "alphaTwo"))));
    EXPECT_THAT(file.held.faultShiftContainers, ElementsAre("Shared", "alphaType"));
    EXPECT_THAT(file.held.loadBalanceContainers, ElementsAre("Shared"));
    EXPECT_THAT(file.lost, IsEmpty());
}

TEST_F(PluginFiles, TellWhoHasWhatAPluginLost) {
    m_folder.Add("beta", "1.so");
    m_folder.Add("alpha", "2.so");
    m_folder.Add("alpha_twin", "3.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    const std::vector<CPluginFile> files = Files();
    ASSERT_EQ(files.size(), 3u);
    EXPECT_THAT(files[0].lost, IsEmpty());
    EXPECT_THAT(files[1].held.jobs, ElementsAre(101));
    EXPECT_THAT(files[1].held.containers, ElementsAre("alphaType"));
    EXPECT_THAT(files[1].held.faultShiftContainers, ElementsAre("Shared", "alphaType"));
    EXPECT_THAT(LostTexts(files[1]),
                ElementsAre("job 7 to 1.so", "container Shared to 1.so", "bind Shared to 1.so"));
    EXPECT_EQ(files[2].strName, "alpha");
    EXPECT_EQ(files[2].pPlugin, Manager().GetPluginByJobType(104));
    EXPECT_THAT(LostTexts(files[2]), ElementsAre("job 7 to 1.so", "container Shared to 1.so",
                                                 "bind Shared to 1.so", "name alpha to 2.so"));
}

TEST_F(PluginFiles, AnOldCopyBesideTheNewOneHasEverything) {
    m_folder.Add("heap", "plugin-1.so");
    m_folder.Add("heap", "plugin-2.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    const std::vector<CPluginFile> files = Files();
    ASSERT_EQ(files.size(), 2u);
    EXPECT_THAT(files[1].held.jobs, IsEmpty());
    EXPECT_THAT(files[1].held.containers, IsEmpty());
    EXPECT_THAT(files[1].held.containerBinds, IsEmpty());
    EXPECT_EQ(files[1].lost.size(), 7u);
    EXPECT_EQ(files[1].lost.back().strFile, "plugin-1.so");
}

TEST_F(PluginFiles, AClaimThatAPluginMakesTwiceIsNotLost) {
    m_folder.Add("claims_twice", "1.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_THAT(Files()[0].held.jobs, ElementsAre(7));
    EXPECT_THAT(Files()[0].lost, IsEmpty());
}

TEST_F(PluginFiles, AskNoPluginAnything) {
    m_folder.Add("alpha", "1.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    m_logger.Clear();
    Files();
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(PluginFiles, EndWithTheUnloadAndStandTwiceAfterASecondLoad) {
    EXPECT_THAT(Files(), IsEmpty());
    m_folder.Add("heap", "1.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Files().size(), 2u);
    EXPECT_EQ(Files()[1].lost.size(), 7u);
    Manager().UnLoadAllPlugin();
    EXPECT_THAT(Files(), IsEmpty());
}

/// A file that does not load, and why.
struct CFailure {
    std::string strFixture;
    std::string strWords;
};

std::ostream& operator<<(std::ostream& stream, const CFailure& failure) {
    return stream << failure.strFixture;
}

class FailedFile : public PluginFiles, public testing::WithParamInterface<CFailure> {};

TEST_P(FailedFile, SaysWhyInWords) {
    m_folder.Add("beta", "1.so");
    m_folder.Add(GetParam().strFixture, "2.so");
    m_folder.Add("alpha", "3.so");
    EXPECT_NE(Manager().LoadAllPlugin(), 0);
    const std::vector<CPluginFile> files = Files();
    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0].strFailure, "");
    EXPECT_THAT(files[1].strFailure, EndsWith(GetParam().strWords));
    EXPECT_EQ(files[1].pPlugin, nullptr);
    EXPECT_THAT(files[1].held.jobs, IsEmpty());
    EXPECT_EQ(files[2].strFile, "3.so");
    EXPECT_EQ(files[2].strFailure, "not tried, since a file before it did not load");
}

INSTANTIATE_TEST_SUITE_P(
    , FailedFile,
    testing::Values(CFailure{"no_entry", "/2.so: undefined symbol: CreatePlugin"},
                    CFailure{"no_object", "CreatePlugin made no object"},
                    CFailure{"fails_create", "CreatePlugin answered 5"},
                    CFailure{"throws_create", "CreatePlugin threw: CreatePlugin of throws_create"},
                    CFailure{"throws_int", "CreatePlugin threw"},
                    CFailure{"fails_Init", "Init answered 5"},
                    CFailure{"throws_name", "GetName threw: GetName of throws_name"},
                    CFailure{"fails_GetContainerBindTable", "GetContainerBindTable answered 5"},
                    CFailure{
                        "throws_GetSupportedJobs",
                        "GetSupportedJobs threw: GetSupportedJobs of throws_GetSupportedJobs"}),
    [](const auto& instance) { return instance.param.strFixture; });

TEST_F(PluginFiles, AFileThatIsNoLibrarySaysWhatTheLoaderSays) {
    std::ofstream(m_folder.File("1.so")) << std::string(4096, 'x');
    EXPECT_NE(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Files().size(), 1u);
    EXPECT_THAT(Files()[0].strFailure, HasSubstr("invalid ELF header"));
}

}  // namespace
