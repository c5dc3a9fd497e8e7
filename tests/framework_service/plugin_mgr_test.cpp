#include "framework_service/plugin_mgr.h"

#include <algorithm>
#include <filesystem>
#include <ostream>
#include <utility>
#include <vector>

#include "common_service/directory.h"
#include "common_service/memstat.h"
#include "common_service/tarn_def.h"
#include "plugins/plugin_folder.h"
#include "support/host_fixture.h"
#include "support/reconfigure.h"

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

constexpr int NUMERIC_PLUGIN_CODE = 5;  ///< what a fixture answers where it fails

CPluginMgr& Manager() {
    return CPluginMgr::Instance();
}

CLogLine Call(const std::string& strPlugin, const std::string& strCall) {
    return Trace(strPlugin, strCall, "called");
}

CLogLine Failure(const std::string& strOperation, int iCode, const std::string& strFunction,
                 const std::string& strMessage) {
    return Err(strOperation, iCode, "plugin_mgr", strFunction, strMessage);
}

/// The questions in their order, and what the log says when one fails.
struct CQuestion {
    std::string strName;
    std::string strMessage;
};

const std::vector<CQuestion> QUESTIONS = {
    {"GetSupportedJobs", "fail to get job capability, name["},
    {"GetSupportedContainers", "fail to get container capability, name["},
    {"GetContainerBindTable", "fail to get container bind table, name["},
    {"GetSupportFaultShiftContainers",
     "fail to get support fault shift container capability, name["},
    {"GetSupportLoadBalanceContainers",
     "fail to get support load balance container capability, name["},
};

class PluginManager : public CHostTest {
protected:
    PluginManager() : m_uiRecords(g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO]) {}
    ~PluginManager() override { Manager().UnLoadAllPlugin(); }

    /// The records that the host counts beyond those of earlier tests.
    uint32_t Records() const { return g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO] - m_uiRecords; }

    /// How often the plug-in got that call.
    std::ptrdiff_t CountCalls(const std::string& strPlugin, const std::string& strCall) const {
        const auto lines = m_logger.GetLines();
        return std::count(lines.begin(), lines.end(), Call(strPlugin, strCall));
    }

    void ExpectNothingIsKnown() {
        EXPECT_EQ(Manager().GetPluginByJobType(7), nullptr);
        EXPECT_EQ(Manager().GetPluginByContainerType("Shared"), nullptr);
        EXPECT_EQ(Manager().GetPluginByName("alpha"), nullptr);
        EXPECT_FALSE(Manager().IsContainerSupportFaultShift("Shared"));
        std::list<std::string> logicTypeList{"stale"};
        EXPECT_EQ(Manager().GetLogicContainerTypeByRealType("Shared", logicTypeList), ORVA_FAIL);
        EXPECT_THAT(logicTypeList, IsEmpty());
    }

    std::list<std::string> LogicTypes(const std::string& strRealType) {
        std::list<std::string> logicTypeList{"stale"};
        EXPECT_EQ(Manager().GetLogicContainerTypeByRealType(strRealType, logicTypeList), 0);
        return logicTypeList;
    }

    const CPluginFolder m_folder;
    const uint32_t m_uiRecords;
};

TEST_F(PluginManager, AnEmptyFolderIsASuccessWithoutPlugins) {
    EXPECT_EQ(Manager().LoadAllPlugin(), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    ExpectNothingIsKnown();
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(
            Failure("get plugin by job type", 1, "GetPluginByJobType",
                    "find plugin failed, type[7]"),
            Failure("get plugin by container type", 1, "GetPluginByContainerType",
                    "find plugin failed, name[Shared]"),
            Failure("get plugin by name", 1, "GetPluginByName", "find plugin failed, name[alpha]"),
            Failure("is container support fault shift", 1, "IsContainerSupportFaultShift",
                    "do not support, type[Shared]"),
            Failure("get logic container by real type", 1, "GetLogicContainerTypeByRealType",
                    "can not find, type[Shared]")));
}

TEST_F(PluginManager, PassesTheCodeOfTheLibraryDirectoryUp) {
    Reconfigure(&CHostSettings::strLibDir, "");
    std::string strDir;
    const int iCode = HALD::get_lib_directory(strDir);
    EXPECT_EQ(Manager().LoadAllPlugin(), iCode);
    EXPECT_THAT(
        m_logger.GetLines(),
        ElementsAre(Failure("find all plugin", iCode, "FindAllPlugin", "get lib dir failed."),
                    Failure("load all plugin", iCode, "LoadAllPlugin", "find plugin failed.")));
}

TEST_F(PluginManager, PassesTheCodeOfTheListingUp) {
    const CTempDir dirWithoutPlugins;
    Reconfigure(&CHostSettings::strLibDir, dirWithoutPlugins.GetPath());
    EXPECT_EQ(Manager().LoadAllPlugin(), ORVA_FAIL);
    EXPECT_THAT(m_logger.GetOperLines(),
                ElementsAre(Failure("find all plugin", 1, "FindAllPlugin",
                                    "get file list from dir[" + dirWithoutPlugins.GetPath() +
                                        "/plugins] failed."),
                            Failure("load all plugin", 1, "LoadAllPlugin", "find plugin failed.")));
}

TEST_F(PluginManager, AsksEverythingOnceAndInOrder) {
    m_folder.Add("alpha", "alpha.so");
    EXPECT_EQ(Manager().LoadAllPlugin(), 0);
    std::vector<CLogLine> expected{Call("alpha", "CreatePlugin"), Call("alpha", "Init"),
                                   Call("alpha", "GetName"),
                                   Info("plugin info load library.", "plugin_info", "LoadLibrary",
                                        "success to load library[alpha:alpha.so].")};
    for (const CQuestion& question : QUESTIONS) {
        expected.push_back(Call("alpha", question.strName));
    }
    EXPECT_EQ(m_logger.GetLines(), expected);
    EXPECT_EQ(Records(), 1u);
}

TEST_F(PluginManager, FindsAPluginByEveryKey) {
    m_folder.Add("alpha", "alpha.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    m_logger.Clear();
    IPlugin* const pPlugin = Manager().GetPluginByName("alpha");
    ASSERT_NE(pPlugin, nullptr);
    EXPECT_EQ(Manager().GetPluginByJobType(7), pPlugin);
    EXPECT_EQ(Manager().GetPluginByJobType(101), pPlugin);
    EXPECT_EQ(Manager().GetPluginByContainerType("Shared"), pPlugin);
    EXPECT_EQ(Manager().GetPluginByContainerType("alphaType"), pPlugin);
    EXPECT_TRUE(Manager().IsContainerSupportFaultShift("alphaType"));
    EXPECT_THAT(LogicTypes("alphaType"), ElementsAre("alphaOne", "alphaTwo"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(PluginManager, NeitherAPrefixNorAnotherCaseOfATypeIsTheType) {
    m_folder.Add("alpha", "alpha.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    for (const char* pszType : {"alphaTyp", "alphaTypes", "AlphaType", ""}) {
        EXPECT_FALSE(Manager().IsContainerSupportFaultShift(pszType));
        EXPECT_EQ(Manager().GetPluginByContainerType(pszType), nullptr);
    }
}

TEST_F(PluginManager, FoldersAreNoPluginsAndAnyFileNameIs) {
    std::filesystem::create_directory(m_folder.File("a_folder.so"));
    m_folder.Add("alpha", "name without suffix");
    EXPECT_EQ(Manager().LoadAllPlugin(), 0);
    EXPECT_NE(Manager().GetPluginByName("alpha"), nullptr);
}

/// A file that does not become a plug-in.
struct CBadPlugin {
    std::string strFixture;
    int iCode;
    std::string strMessage;
    bool bThrows;
};

std::ostream& operator<<(std::ostream& stream, const CBadPlugin& bad) {
    return stream << bad.strFixture;
}

std::vector<CBadPlugin> BadPlugins() {
    const std::string strLoad = "fail to load plugin, name[";
    std::vector<CBadPlugin> bad = {
        {"no_entry", ORVA_FAIL, strLoad, false},
        {"fails_create", NUMERIC_PLUGIN_CODE, strLoad, false},
        {"fails_create_object", NUMERIC_PLUGIN_CODE, strLoad, false},
        {"throws_create", ORVA_FAIL, strLoad, true},
        {"throws_create_object", ORVA_FAIL, strLoad, true},
        {"throws_int", ORVA_FAIL, strLoad, true},
        {"throws_name", ORVA_FAIL, strLoad, true},
        {"fails_Init", NUMERIC_PLUGIN_CODE, strLoad, false},
        {"throws_Init", ORVA_FAIL, strLoad, true},
        {"no_object", ORVA_PARA_INVALID, QUESTIONS[0].strMessage, false}};
    for (const CQuestion& question : QUESTIONS) {
        bad.push_back(
            {"fails_" + question.strName, NUMERIC_PLUGIN_CODE, question.strMessage, false});
        bad.push_back({"throws_" + question.strName, ORVA_FAIL, question.strMessage, true});
    }
    return bad;
}

class BadPlugin : public PluginManager, public testing::WithParamInterface<CBadPlugin> {};

TEST_P(BadPlugin, EndsTheLoadingLeavesNoTraceAndGoesBeforeItsErrorLine) {
    const CBadPlugin& bad = GetParam();
    m_folder.Add(bad.strFixture, "1.so");
    m_folder.Add("beta", "2.so");
    EXPECT_EQ(Manager().LoadAllPlugin(), bad.iCode);

    const auto lines = m_logger.GetLines();
    ASSERT_GE(lines.size(), 3u);
    const CLogLine& end = lines[lines.size() - 3];
    EXPECT_TRUE(end == Call(bad.strFixture, "UnInit") ||
                end.strMessage == "null plugin, name[1.so]")
        << end;
    EXPECT_EQ(lines[lines.size() - 2], Failure("load single plugin.", bad.iCode, "LoadSinglePlugin",
                                               bad.strMessage + "1.so]"));
    EXPECT_EQ(lines.back(),
              Failure("load all plugin", 1, "LoadAllPlugin", "load single plugin, name[1.so]"));
    EXPECT_EQ(std::any_of(lines.begin(), lines.end(),
                          [](const CLogLine& line) { return line.strOperation == "call plugin"; }),
              bad.bThrows);
    EXPECT_EQ(CountCalls("beta", "CreatePlugin"), 0);
    EXPECT_EQ(Records(), 0u);
    ExpectNothingIsKnown();
}

INSTANTIATE_TEST_SUITE_P(, BadPlugin, testing::ValuesIn(BadPlugins()),
                         [](const auto& instance) { return instance.param.strFixture; });

TEST_F(PluginManager, WhatIsLoadedBeforeAFailureStays) {
    m_folder.Add("alpha", "1.so");
    m_folder.Add("fails_Init", "2.so");
    m_folder.Add("beta", "3.so");
    EXPECT_EQ(Manager().LoadAllPlugin(), NUMERIC_PLUGIN_CODE);
    EXPECT_NE(Manager().GetPluginByName("alpha"), nullptr);
    EXPECT_EQ(Manager().GetPluginByName("beta"), nullptr);
    EXPECT_EQ(Records(), 1u);
}

/// The same two plug-ins in both orders of the listing.
class Conflict : public PluginManager,
                 public testing::WithParamInterface<std::pair<std::string, std::string>> {};

TEST_P(Conflict, TheFirstOfTheListingHasTheSharedClaims) {
    const auto& [strFirst, strSecond] = GetParam();
    m_folder.Add(strFirst, "1.so");
    m_folder.Add(strSecond, "2.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    m_logger.Clear();
    IPlugin* const pFirst = Manager().GetPluginByName(strFirst);
    IPlugin* const pSecond = Manager().GetPluginByName(strSecond);
    ASSERT_NE(pFirst, pSecond);
    EXPECT_EQ(Manager().GetPluginByJobType(7), pFirst);
    EXPECT_EQ(Manager().GetPluginByContainerType("Shared"), pFirst);
    EXPECT_EQ(Manager().GetPluginByContainerType(strFirst + "Type"), pFirst);
    EXPECT_EQ(Manager().GetPluginByContainerType(strSecond + "Type"), pSecond);
    EXPECT_THAT(LogicTypes("Shared"), ElementsAre(strFirst + "Logic"));
    EXPECT_THAT(LogicTypes(strSecond + "Type"), ElementsAre(strSecond + "One", strSecond + "Two"));
    EXPECT_TRUE(Manager().IsContainerSupportFaultShift("Shared"));
    EXPECT_TRUE(Manager().IsContainerSupportFaultShift(strSecond + "Type"));
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
    EXPECT_EQ(Records(), 2u);
}

INSTANTIATE_TEST_SUITE_P(BothOrders, Conflict,
                         testing::Values(std::make_pair("alpha", "beta"),
                                         std::make_pair("beta", "alpha")));

TEST_F(PluginManager, APluginWhoseNameIsTakenKeepsItsOtherClaims) {
    m_folder.Add("alpha", "1.so");
    m_folder.Add("alpha_twin", "2.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    IPlugin* const pAlpha = Manager().GetPluginByName("alpha");
    IPlugin* const pTwin = Manager().GetPluginByJobType(104);
    ASSERT_NE(pTwin, nullptr);
    EXPECT_NE(pTwin, pAlpha);
    EXPECT_EQ(Manager().GetPluginByJobType(101), pAlpha);
    EXPECT_EQ(Manager().GetPluginByContainerType("alpha_twinType"), pTwin);
    EXPECT_EQ(Records(), 2u);
}

TEST_F(PluginManager, APluginWhoseNameIsTakenIsNeitherRoutedNorUnloaded) {
    m_folder.Add("alpha", "1.so");
    m_folder.Add("alpha_twin", "2.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    Manager().RoutingAll();
    EXPECT_EQ(Manager().UnLoadAllPlugin(), 0);
    EXPECT_EQ(CountCalls("alpha", "Routing"), 1);
    EXPECT_EQ(CountCalls("alpha", "UnInit"), 2);
    EXPECT_EQ(CountCalls("alpha_twin", "Routing"), 0);
    EXPECT_EQ(CountCalls("alpha_twin", "UnInit"), 0);
    EXPECT_EQ(Manager().GetPluginByJobType(104), nullptr);
    EXPECT_EQ(Records(), 1u);
}

TEST_F(PluginManager, RoutesInTheOrderOfTheNames) {
    m_folder.Add("heap", "1.so");
    m_folder.Add("beta", "2.so");
    m_folder.Add("alpha", "3.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    m_logger.Clear();
    Manager().RoutingAll();
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Call("alpha", "Routing"), Call("beta", "Routing"),
                                                 Call("heap", "Routing")));
}

TEST_F(PluginManager, UnloadsInTheOrderOfTheNamesWithTwoUnInitsEach) {
    m_folder.Add("heap", "1.so");
    m_folder.Add("beta", "2.so");
    m_folder.Add("alpha", "3.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    EXPECT_EQ(Records(), 3u);
    m_logger.Clear();
    EXPECT_EQ(Manager().UnLoadAllPlugin(), 0);
    EXPECT_THAT(m_logger.GetLines(), ElementsAre(Call("alpha", "UnInit"), Call("alpha", "UnInit"),
                                                 Call("beta", "UnInit"), Call("beta", "UnInit"),
                                                 Call("heap", "UnInit"), Call("heap", "UnInit")));
    EXPECT_EQ(Records(), 0u);
    ExpectNothingIsKnown();
}

TEST_F(PluginManager, UnloadingNothingIsASuccess) {
    EXPECT_EQ(Manager().UnLoadAllPlugin(), 0);
    EXPECT_EQ(Manager().UnLoadAllPlugin(), 0);
    EXPECT_THAT(m_logger.GetLines(), IsEmpty());
}

TEST_F(PluginManager, LoadsAgainFromAnEmptyTable) {
    const std::string strAlpha = m_folder.Add("alpha", "1.so");
    m_folder.Add("beta", "2.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    ASSERT_EQ(Manager().UnLoadAllPlugin(), 0);
    std::filesystem::remove(strAlpha);
    EXPECT_EQ(Manager().LoadAllPlugin(), 0);
    EXPECT_EQ(Manager().GetPluginByName("alpha"), nullptr);
    EXPECT_EQ(Manager().GetPluginByJobType(7), Manager().GetPluginByName("beta"));
    EXPECT_EQ(Records(), 1u);
}

TEST_F(PluginManager, ASecondLoadLeavesTheClaimsOfTheFirst) {
    m_folder.Add("heap", "1.so");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    IPlugin* const pFirst = Manager().GetPluginByName("heap");
    ASSERT_EQ(Manager().LoadAllPlugin(), 0);
    EXPECT_EQ(Manager().GetPluginByName("heap"), pFirst);
    EXPECT_EQ(Manager().GetPluginByJobType(7), pFirst);
    EXPECT_EQ(CountCalls("heap", "CreatePlugin"), 2);
    EXPECT_EQ(Records(), 2u);
    Manager().UnLoadAllPlugin();
    EXPECT_EQ(CountCalls("heap", "UnInit"), 2);
    EXPECT_EQ(Records(), 1u);
}

}  // namespace
