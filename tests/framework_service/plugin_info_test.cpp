#include "framework_service/plugin_info.h"

#include <cstdio>
#include <ostream>
#include <vector>

#include "common_service/directory.h"
#include "common_service/tarn_def.h"
#include "plugins/plugin_folder.h"
#include "support/host_fixture.h"
#include "support/reconfigure.h"

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

namespace {

constexpr int NUMERIC_PLUGIN_CODE = 5;  ///< what a fixture answers where it fails

CLogLine Call(const std::string& strPlugin, const std::string& strCall) {
    return Trace(strPlugin, strCall, "called");
}

CLogLine LoadFailure(int iCode, const std::string& strMessage) {
    return Err("plugin info load library.", iCode, "plugin_info", "LoadLibrary", strMessage);
}

CLogLine NullPlugin(const std::string& strFile) {
    return Err("plugin info unload library.", 0, "plugin_info", "UnLoadLibrary",
               "null plugin, name[" + strFile + "]");
}

CLogLine Thrown(const std::string& strFunction, const std::string& strFile,
                const std::string& strReason) {
    return Err("call plugin", 1, "plugin_info", strFunction,
               "plugin threw, name[" + strFile + "], reason" + strReason);
}

class PluginInfo : public CHostTest {
protected:
    const CPluginFolder m_folder;
};

TEST_F(PluginInfo, WithoutAFileNameItRefuses) {
    CPluginInfo info;
    EXPECT_EQ(info.LoadLibrary(), ORVA_FAIL);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(LoadFailure(1, "lib name is empty.")));
}

TEST_F(PluginInfo, PassesTheCodeOfTheLibraryDirectoryUp) {
    Reconfigure(&CHostSettings::strLibDir, "");
    std::string strDir;
    const int iCode = HALD::get_lib_directory(strDir);
    ASSERT_NE(iCode, 0);
    CPluginInfo info("alpha.so");
    EXPECT_EQ(info.LoadLibrary(), iCode);
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Err("plugin info load library", iCode, "plugin_info", "LoadLibrary",
                                "get lib dir failed.")));
}

TEST_F(PluginInfo, ConstructionTouchesNoFile) {
    {
        const CPluginInfo info("absent.so");
        EXPECT_EQ(info.GetName(), "");
        EXPECT_EQ(info.GetPlugin(), nullptr);
    }
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NullPlugin("absent.so")));
}

TEST_F(PluginInfo, TheDefaultRecordGoesWithItsEmptyName) {
    { const CPluginInfo info; }
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NullPlugin("")));
}

/// A file that the loader does not take, and what it says of it.
struct CNoLibrary {
    std::string strName;
    std::string strReason;
    void (*pMake)(const std::string& strPath);
};

std::ostream& operator<<(std::ostream& stream, const CNoLibrary& file) {
    return stream << file.strName;
}

void WriteText(const std::string& strPath, const char* pszText) {
    FILE* const pFile = std::fopen(strPath.c_str(), "w");
    ASSERT_NE(pFile, nullptr);
    EXPECT_GE(std::fputs(pszText, pFile), 0);
    EXPECT_EQ(std::fclose(pFile), 0);
}

class NoLibrary : public PluginInfo, public testing::WithParamInterface<CNoLibrary> {};

TEST_P(NoLibrary, TheResultOfTheOpenIsTheAnswer) {
    const std::string strPath = m_folder.File("broken.so");
    GetParam().pMake(strPath);
    {
        CPluginInfo info("broken.so");
        EXPECT_EQ(info.LoadLibrary(), -1);
        EXPECT_EQ(info.GetPlugin(), nullptr);
    }
    const auto lines = m_logger.GetLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], LoadFailure(-1, lines[0].strMessage));
    EXPECT_THAT(lines[0].strMessage,
                AllOf(StartsWith("failure to open library[" + strPath + "] as errno["),
                      HasSubstr(GetParam().strReason)));
    EXPECT_EQ(lines[1], NullPlugin("broken.so"));
}

INSTANTIATE_TEST_SUITE_P(
    , NoLibrary,
    testing::Values(CNoLibrary{"Absent", "No such file", [](const std::string&) {}},
                    CNoLibrary{"Empty", "file too short",
                               [](const std::string& strPath) { WriteText(strPath, ""); }},
                    CNoLibrary{"Text", "invalid ELF header",
                               [](const std::string& strPath) {
                                   WriteText(strPath, std::string(4096, 'x').c_str());
                               }}),
    [](const auto& instance) { return instance.param.strName; });

TEST_F(PluginInfo, WithoutAnEntryPointTheLibraryIsClosed) {
    const std::string strPath = m_folder.Add("no_entry", "no_entry.so");
    {
        CPluginInfo info("no_entry.so");
        EXPECT_EQ(info.LoadLibrary(), ORVA_FAIL);
        EXPECT_FALSE(IsMapped(strPath));
    }
    const auto lines = m_logger.GetLines();
    ASSERT_EQ(lines.size(), 2u);
    EXPECT_EQ(lines[0], LoadFailure(1, lines[0].strMessage));
    EXPECT_THAT(lines[0].strMessage,
                AllOf(StartsWith("failure to find the symbol of 'CreatePlugin', library[" +
                                 strPath + "], errno["),
                      HasSubstr("undefined symbol: CreatePlugin")));
    EXPECT_EQ(lines[1], NullPlugin("no_entry.so"));
}

/// An entry point or an Init that goes wrong.
struct CBadStart {
    std::string strFixture;
    int iCode;
    bool bObject;                 ///< does the record have an object afterwards?
    std::vector<CLogLine> lines;  ///< until LoadLibrary returns
};

std::ostream& operator<<(std::ostream& stream, const CBadStart& bad) {
    return stream << bad.strFixture;
}

std::vector<CBadStart> BadStarts() {
    const auto creation = [](const std::string& strFixture, int iCode) {
        return LoadFailure(iCode,
                           "failure to creat sdk, lib name[" + strFixture + ".so], errno[0].");
    };
    const auto init = [](const std::string& strFixture, int iCode) {
        return LoadFailure(iCode, "fail to init plugin, name[" + strFixture + ".so]");
    };
    const auto reason = [](const std::string& strWhat) { return "[" + strWhat + "]."; };
    const auto thrown = [&](const std::string& strFixture, const std::string& strReason) {
        return Thrown("LoadLibrary", strFixture + ".so", strReason);
    };
    return {
        {"no_object", 0, false, {Call("no_object", "CreatePlugin"), creation("no_object", 0)}},
        {"fails_create",
         NUMERIC_PLUGIN_CODE,
         false,
         {Call("fails_create", "CreatePlugin"), creation("fails_create", NUMERIC_PLUGIN_CODE)}},
        {"fails_create_object",
         NUMERIC_PLUGIN_CODE,
         true,
         {Call("fails_create_object", "CreatePlugin"),
          creation("fails_create_object", NUMERIC_PLUGIN_CODE)}},
        {"throws_create",
         ORVA_FAIL,
         false,
         {Call("throws_create", "CreatePlugin"),
          thrown("throws_create", reason("CreatePlugin of throws_create")),
          creation("throws_create", 1)}},
        {"throws_create_object",
         ORVA_FAIL,
         true,
         {Call("throws_create_object", "CreatePlugin"),
          thrown("throws_create_object", reason("CreatePlugin of throws_create_object")),
          creation("throws_create_object", 1)}},
        {"throws_int",
         ORVA_FAIL,
         false,
         {Call("throws_int", "CreatePlugin"), thrown("throws_int", " unknown."),
          creation("throws_int", 1)}},
        {"fails_Init",
         NUMERIC_PLUGIN_CODE,
         true,
         {Call("fails_Init", "CreatePlugin"), Call("fails_Init", "Init"),
          init("fails_Init", NUMERIC_PLUGIN_CODE)}},
        {"throws_Init",
         ORVA_FAIL,
         true,
         {Call("throws_Init", "CreatePlugin"), Call("throws_Init", "Init"),
          thrown("throws_Init", reason("Init of throws_Init")), init("throws_Init", 1)}},
        {"throws_name",
         ORVA_FAIL,
         true,
         {Call("throws_name", "CreatePlugin"), Call("throws_name", "Init"),
          Call("throws_name", "GetName"), thrown("throws_name", reason("GetName of throws_name")),
          init("throws_name", 1)}},
    };
}

class BadStart : public PluginInfo, public testing::WithParamInterface<CBadStart> {};

TEST_P(BadStart, IsLoggedAndItsCodeIsTheAnswer) {
    const CBadStart& bad = GetParam();
    const std::string strFile = bad.strFixture + ".so";
    const std::string strPath = m_folder.Add(bad.strFixture, strFile);
    std::vector<CLogLine> expected = bad.lines;
    {
        CPluginInfo info(strFile);
        EXPECT_EQ(info.LoadLibrary(), bad.iCode);
        EXPECT_EQ(info.GetName(), "");
        EXPECT_EQ(info.GetPlugin() != nullptr, bad.bObject);
        EXPECT_EQ(IsMapped(strPath), bad.bObject);
        EXPECT_EQ(m_logger.GetLines(), expected);
    }
    expected.push_back(bad.bObject ? Call(bad.strFixture, "UnInit") : NullPlugin(strFile));
    EXPECT_EQ(m_logger.GetLines(), expected);
}

INSTANTIATE_TEST_SUITE_P(, BadStart, testing::ValuesIn(BadStarts()),
                         [](const auto& instance) { return instance.param.strFixture; });

TEST_F(PluginInfo, AnEmptyRecordRefusesEveryQuestion) {
    m_folder.Add("no_object", "no_object.so");
    CPluginInfo info("no_object.so");
    ASSERT_EQ(info.LoadLibrary(), 0);
    m_logger.Clear();

    std::list<unsigned int> jobList{9};
    std::list<std::string> containerList{"kept"};
    ContainerTypeBindMap bindMap{{"kept", {}}};
    EXPECT_EQ(info.GetSupportedJobs(jobList), ORVA_PARA_INVALID);
    EXPECT_EQ(info.GetSupportedContainers(containerList), ORVA_PARA_INVALID);
    EXPECT_EQ(info.GetContainerBindTable(bindMap), ORVA_PARA_INVALID);
    EXPECT_EQ(info.GetSupportFaultShiftContainers(containerList), ORVA_PARA_INVALID);
    EXPECT_EQ(info.GetSupportLoadBalanceContainers(containerList), ORVA_PARA_INVALID);

    EXPECT_THAT(jobList, ElementsAre(9u));
    EXPECT_THAT(containerList, ElementsAre("kept"));
    EXPECT_EQ(bindMap.count("kept"), 1u);
    std::vector<CLogLine> expected;
    for (const char* pszFunction :
         {"GetSupportedJobs", "GetSupportedContainers", "GetContainerBindTable",
          "GetSupportFaultShiftContainers", "GetSupportLoadBalanceContainers"}) {
        expected.push_back(Err("Point m_pPlugin is null.", 1, "plugin_info", pszFunction,
                               "Make sure there is something wrong"));
    }
    EXPECT_EQ(m_logger.GetLines(), expected);
}

/// A fixture that loads: linked with the library or not, of static storage or not.
class GoodPlugin : public PluginInfo, public testing::WithParamInterface<const char*> {
protected:
    const std::string m_strFixture = GetParam();
    const std::string m_strFile = m_strFixture + ".so";
};

TEST_P(GoodPlugin, IsLoadedInThisOrder) {
    m_folder.Add(m_strFixture, m_strFile);
    CPluginInfo info(m_strFile);
    EXPECT_EQ(info.LoadLibrary(), 0);
    ASSERT_NE(info.GetPlugin(), nullptr);
    EXPECT_EQ(info.GetName(), m_strFixture);
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(Call(m_strFixture, "CreatePlugin"), Call(m_strFixture, "Init"),
                    Call(m_strFixture, "GetName"),
                    Info("plugin info load library.", "plugin_info", "LoadLibrary",
                         "success to load library[" + m_strFixture + ":" + m_strFile + "].")));
}

TEST_P(GoodPlugin, EveryUnloadAndTheRecordsEndCallUnInit) {
    const std::string strPath = m_folder.Add(m_strFixture, m_strFile);
    {
        CPluginInfo info(m_strFile);
        ASSERT_EQ(info.LoadLibrary(), 0);
        IPlugin* const pPlugin = info.GetPlugin();
        m_logger.Clear();
        EXPECT_EQ(info.UnLoadLibrary(), 0);
        EXPECT_EQ(info.UnLoadLibrary(), 0);
        EXPECT_EQ(info.GetPlugin(), pPlugin);
        EXPECT_EQ(info.GetName(), m_strFixture);
    }
    const CLogLine unInit = Call(m_strFixture, "UnInit");
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(unInit, unInit, unInit));
    EXPECT_TRUE(IsMapped(strPath));
}

TEST_P(GoodPlugin, LoadsAgainAfterAnUnload) {
    m_folder.Add(m_strFixture, m_strFile);
    CPluginInfo info(m_strFile);
    ASSERT_EQ(info.LoadLibrary(), 0);
    ASSERT_EQ(info.UnLoadLibrary(), 0);
    EXPECT_EQ(info.LoadLibrary(), 0);
    std::list<unsigned int> jobList;
    EXPECT_EQ(info.GetSupportedJobs(jobList), 0);
    EXPECT_EQ(jobList.front(), 7u);
}

TEST_P(GoodPlugin, GetsTheQuestionsAsTheyAre) {
    m_folder.Add(m_strFixture, m_strFile);
    CPluginInfo info(m_strFile);
    ASSERT_EQ(info.LoadLibrary(), 0);
    m_logger.Clear();
    const std::string strType = m_strFixture + "Type";
    std::list<std::string> containerList;
    EXPECT_EQ(info.GetSupportedContainers(containerList), 0);
    EXPECT_THAT(containerList, ElementsAre("Shared", strType));
    containerList.clear();
    EXPECT_EQ(info.GetSupportFaultShiftContainers(containerList), 0);
    EXPECT_THAT(containerList, ElementsAre("Shared", strType));
    containerList.clear();
    EXPECT_EQ(info.GetSupportLoadBalanceContainers(containerList), 0);
    EXPECT_THAT(containerList, ElementsAre("Shared"));
    ContainerTypeBindMap bindMap;
    EXPECT_EQ(info.GetContainerBindTable(bindMap), 0);
    EXPECT_THAT(bindMap.at(strType), ElementsAre(m_strFixture + "One", m_strFixture + "Two"));
    EXPECT_THAT(m_logger.GetLines(),
                ElementsAre(Call(m_strFixture, "GetSupportedContainers"),
                            Call(m_strFixture, "GetSupportFaultShiftContainers"),
                            Call(m_strFixture, "GetSupportLoadBalanceContainers"),
                            Call(m_strFixture, "GetContainerBindTable")));
}

INSTANTIATE_TEST_SUITE_P(, GoodPlugin, testing::Values("alpha", "beta", "heap"),
                         [](const auto& instance) { return std::string(instance.param); });

TEST_F(PluginInfo, WhatUnInitAnswersIsIgnored) {
    m_folder.Add("fails_UnInit", "fails_UnInit.so");
    CPluginInfo info("fails_UnInit.so");
    ASSERT_EQ(info.LoadLibrary(), 0);
    m_logger.Clear();
    EXPECT_EQ(info.UnLoadLibrary(), 0);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Call("fails_UnInit", "UnInit")));
}

TEST_F(PluginInfo, AThrowingUnInitIsLoggedAndIgnored) {
    m_folder.Add("throws_UnInit", "throws_UnInit.so");
    CPluginInfo info("throws_UnInit.so");
    ASSERT_EQ(info.LoadLibrary(), 0);
    m_logger.Clear();
    EXPECT_EQ(info.UnLoadLibrary(), 0);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Call("throws_UnInit", "UnInit"),
                                                 Thrown("UnLoadLibrary", "throws_UnInit.so",
                                                        "[UnInit of throws_UnInit].")));
}

TEST_F(PluginInfo, UnloadingARecordWithoutAnObjectIsAnError) {
    CPluginInfo info("absent.so");
    EXPECT_EQ(info.UnLoadLibrary(), ORVA_PARA_INVALID);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(NullPlugin("absent.so")));
}

TEST_F(PluginInfo, SymbolsAreVisibleToPluginsThatOpenLater) {
    m_folder.Add("lender", "1.so");
    m_folder.Add("borrower", "2.so");
    CPluginInfo lender("1.so");
    CPluginInfo borrower("2.so");
    ASSERT_EQ(lender.LoadLibrary(), 0);
    ASSERT_EQ(borrower.LoadLibrary(), 0);
    CTaskContainerMap taskBindTable;
    unsigned long long ullDecisionVerNum = 0;
    EXPECT_EQ(borrower.GetPlugin()->TaskSchedule("", {}, taskBindTable, ullDecisionVerNum, false),
              42);
}

}  // namespace
