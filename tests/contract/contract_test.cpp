#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <future>
#include <limits>
#include <stdexcept>

#include "common_service/memstat.h"
#include "common_service/tarn_def.h"
#include "contract/minimal_host.h"
#include "framework_service/cluster_config_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"

namespace {

using Calls = std::vector<std::string>;

const auto NAME_OF_CASE = [](const auto& info) { return info.param.strName; };

constexpr int NUMERIC_STORE_CODE = 4711;
constexpr char PATH_CONFIG[] = "/CloudX/ClusterConfig";
constexpr char PATH_CLUSTER[] = "/CloudX/Cluster";
constexpr char PATH_CLOUD_STORAGE[] = "/CloudX/CloudStorage";

/// What the host was asked before this executable's own objects were built, and so before main.
const Calls CALLS_WHILE_LOADING = CMinimalHost::Instance().m_calls;

class HostContract : public testing::Test {
protected:
    HostContract() { Reset(); }
    ~HostContract() override { Reset(); }

    void Reset() {
        CPluginMgr::Instance().UnLoadAllPlugin();
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
        m_host.Reset();
    }

    /// The log from here on, and the calls too.
    void Listen() {
        m_host.m_pLogger = &m_log;
        m_host.m_calls.clear();
    }

    Calls Log() const { return m_host.CallsTo({"log"}); }

    CMinimalHost& m_host = CMinimalHost::Instance();
    CRecordingLog m_log;
};

TEST_F(HostContract, LoadingTheLibraryCallsNoHost) {
    EXPECT_EQ(CALLS_WHILE_LOADING, Calls());
}

// ---------------------------------------------------------------- the configuration

constexpr char CONFIG[] =
    R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":false})";

const std::list<std::string> SETTERS = {"SetLoadBalance",
                                        "SetFaultShift",
                                        "SetLoadBalanceOnePeriod",
                                        "SetLoadBalanceDiskThreshold",
                                        "SetLoadBalanceNetThreshold",
                                        "SetLoadBalanceChannelThreshold"};

Calls SetterCalls(const std::string& strLoadBalance, const std::string& strFaultShift,
                  const std::string& strOnePeriod) {
    return {"SetLoadBalance " + strLoadBalance,        "SetFaultShift " + strFaultShift,
            "SetLoadBalanceOnePeriod " + strOnePeriod, "SetLoadBalanceDiskThreshold 10",
            "SetLoadBalanceNetThreshold 10",           "SetLoadBalanceChannelThreshold 10"};
}

Calls operator+(Calls lhs, const Calls& rhs) {
    lhs.insert(lhs.end(), rhs.begin(), rhs.end());
    return lhs;
}

TEST_F(HostContract, ConfigurationIsReadThenSetInOrder) {
    m_host.m_reads[PATH_CONFIG] = Text(CONFIG);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(m_host.m_calls, (Calls{"getLogger", "GetCstClusterCode",
                                     "GetDataFromZK /CloudX/ClusterConfig 512 unwatched filled",
                                     "CGlobalConfig::Instance"} +
                               SetterCalls("0", "1", "0")));
}

TEST_F(HostContract, TwoCallsReadTwiceAndSetTwelveTimes) {
    m_host.m_reads[PATH_CONFIG] = Text(CONFIG);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(CFrameworkCommon::Instance().InitClusterConfigFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK"}).size(), 2U);
    EXPECT_EQ(m_host.CallsTo(SETTERS), SetterCalls("0", "1", "0") + SetterCalls("0", "1", "0"));
}

TEST_F(HostContract, PathIsComposedForEachRead) {
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    m_host.m_strClusterCode = "/Y";
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    m_host.m_strClusterCode = "";
    CFrameworkCommon::Instance().InitClusterConfigFromZK();
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK"}),
              (Calls{"GetDataFromZK /CloudX/ClusterConfig 512 unwatched filled",
                     "GetDataFromZK /Cloud/Y/ClusterConfig 512 unwatched filled",
                     "GetDataFromZK /Cloud/ClusterConfig 512 unwatched filled"}));
}

// ---------------------------------------------------------------- the cluster's start

std::string ClusterText(const std::string& strNodes) {
    return R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":5,)"
           R"("ClusterNode":[)" +
           strNodes + "]}";
}

std::string NodeText(const std::string& strId, const std::string& strIp,
                     const std::string& strStatus = "Normal",
                     const std::string& strType = "MeroCloudStorage") {
    return R"({"NodeID":")" + strId + R"(","NodeIP":")" + strIp +
           R"(","NodeIPType":0,"NodeRole":0,"DomainRole":0,"Status":")" + strStatus +
           R"(","Container":[{"ContainerType":")" + strType + R"("}]})";
}

constexpr char CLOUD_STORAGE[] =
    R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"S","ProductType":"P","ReqSize":1,)"
    R"("ReqPicSize":2,"LowpriBit":3}]})";

TEST_F(HostContract, LinksAreAddedThenDeletedThenTheRegistriesChange) {
    m_host.m_strLocalIp = "10.0.0.2";
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1") + "," + NodeText("n2", "10.0.0.2") + "," +
                         NodeText("n3", "10.0.0.3") + "," + NodeText("n4", "10.0.0.4")));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);

    m_host.m_calls.clear();
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n5", "10.0.0.5") + "," + NodeText("n1", "10.0.0.1") + "," +
                         NodeText("n4", "10.0.0.4", "Removed")));
    m_host.m_reads[PATH_CLOUD_STORAGE] = Text(CLOUD_STORAGE);
    m_host.m_onDeleteLink = [this] {
        ContainerMap containerMap;
        CContainerMgr::Instance().GetAllContainer(containerMap);
        m_host.Record("registries " + std::to_string(CNodeMgr::Instance().GetSize()) + " " +
                      std::to_string(containerMap.size()));
    };
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK", "SetClusterForwardType", "AddValidatedLink",
                              "DelValidatedLink", "registries", "IntToStr"}),
              (Calls{"GetDataFromZK /CloudX/Cluster 65536 unwatched filled",
                     "SetClusterForwardType 5", "AddValidatedLink 10.0.0.5 70106",
                     "AddValidatedLink 10.0.0.1 70106", "DelValidatedLink 10.0.0.3 70106",
                     "registries 4 4", "DelValidatedLink 10.0.0.4 70106", "registries 4 4",
                     "GetDataFromZK /CloudX/CloudStorage 65536 unwatched filled", "IntToStr 1 0",
                     "IntToStr 2 0", "IntToStr 3 0"}));
    EXPECT_EQ(CNodeMgr::Instance().GetSize(), 3U);
}

TEST_F(HostContract, SameAddressTwiceIsAddedAndDeletedTwice) {
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1") + "," + NodeText("n2", "10.0.0.1")));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"AddValidatedLink", "DelValidatedLink"}),
              Calls(2, "AddValidatedLink 10.0.0.1 70106"));
    m_host.m_calls.clear();
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(""));
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"AddValidatedLink", "DelValidatedLink"}),
              Calls(2, "DelValidatedLink 10.0.0.1 70106"));
}

// ---------------------------------------------------------------- what a read may answer

/// One reader of the store and what it does on each combination of result and flag.
struct CReader {
    std::string strName;
    std::string strPath;
    std::string strText;  ///< what the read leaves in the document, failed or not
    std::function<int()> call;
    Calls whenEmpty;                   ///< the log's end after not 0, true
    Calls whenFailed;                  ///< the log's end after not 0, false
    Calls afterwards;                  ///< host calls by which the reader goes on with the document
    bool bGoesOnAfterFailure = false;  ///< and then answers 0
};

std::ostream& operator<<(std::ostream& stream, const CReader& reader) {
    return stream << reader.strName;
}

int InitConfig() {
    return CFrameworkCommon::Instance().InitClusterConfigFromZK();
}

int InitCluster() {
    return CFrameworkCommon::Instance().InitNodeAndContainerFromZK();
}

int SaveCloudStorage() {
    CContainer container;
    container.SetNodeId("n2");
    container.SetContainerType(CONTAINER_TYPE_CLOUD_STORAGE);
    container.SaveCloudStorageReportInfoToZK();
    return ORVA_SUCCEED;
}

/// What a save of "n2" writes beside the entry that was read.
constexpr char WRITTEN[] =
    R"(SetDataToZK /CloudX/CloudStorage 65536 0 {"CloudStorageSet":[)"
    R"({"LowpriBit":3,"NvrCode":"n1","ProductType":"P","ReqPicSize":2,"ReqSize":1,)"
    R"("ServiceType":"S"},{"LowpriBit":0,"NvrCode":"n2","ProductType":"","ReqPicSize":0,)"
    R"("ReqSize":0,"ServiceType":""}]})"
    "\n";

std::vector<CReader> Readers() {
    const std::string strInitConfig = " framework_common InitClusterConfigFromZK [init framework] ";
    const std::string strInitCluster =
        " framework_common InitNodeAndContainerFromZK [init framework] ";
    const std::string strCloudFailed = "<4711> get cloud storage info from cluster node fail.";
    const std::string strSaved =
        "log 6 container SaveCloudStorageReportInfoToZK [save cloud storage report info to zk] "
        "alloc info list=0";
    return {
        {"Configuration",
         PATH_CONFIG,
         CONFIG,
         &InitConfig,
         {"log 6" + strInitConfig + "cluster config info is empty, not need to init framework."},
         {"log 3" + strInitConfig + strCloudFailed},
         SetterCalls("0", "1", "0")},
        {"Cluster",
         PATH_CLUSTER,
         ClusterText(NodeText("n1", "10.0.0.1")),
         &InitCluster,
         {"log 6" + strInitCluster + "cluster node is empty, not need to init framework."},
         {"log 3" + strInitCluster + "<4711> get data from cluster node fail."},
         {"SetClusterForwardType 5", "AddValidatedLink 10.0.0.1 70106"}},
        {"CloudStorage",
         PATH_CLOUD_STORAGE,
         CLOUD_STORAGE,
         &InitCluster,
         {"log 6" + strInitCluster + "cloud storage info is empty, not need to init framework."},
         {"log 3" + strInitCluster + strCloudFailed},
         {"IntToStr 1 0", "IntToStr 2 0", "IntToStr 3 0"}},
        {"CloudStorageSave",
         PATH_CLOUD_STORAGE,
         CLOUD_STORAGE,
         &SaveCloudStorage,
         {strSaved},
         {"log 3 container SaveCloudStorageReportInfoToZK [GetDataFromZK] <4711> get cloud "
          "storage info from zk fail. nodeId: n2  cType: MeroCloudStorage",
          strSaved},
         {WRITTEN},
         true},
    };
}

class StoreReader : public HostContract, public testing::WithParamInterface<CReader> {
protected:
    StoreReader() { m_host.m_reads[PATH_CLUSTER] = Text(ClusterText("")); }

    int Read(int iRet, bool bDataEmpty) {
        m_host.m_reads[GetParam().strPath] = Answer(iRet, bDataEmpty, GetParam().strText);
        Listen();
        return GetParam().call();
    }

    void ExpectFailedRead(bool bDataEmpty, int iRet, const Calls& logEnd) {
        EXPECT_EQ(Read(NUMERIC_STORE_CODE, bDataEmpty), iRet);
        const Calls lines = Log();
        ASSERT_GE(lines.size(), logEnd.size());
        EXPECT_EQ(Calls(lines.end() - static_cast<std::ptrdiff_t>(logEnd.size()), lines.end()),
                  logEnd);
        EXPECT_EQ(HasGoneOn(), GetParam().bGoesOnAfterFailure);
    }

    /// Made all of the calls; some of them alone would be a fault.
    bool HasGoneOn() const {
        const auto isMade = [this](const std::string& strCall) {
            return std::count(m_host.m_calls.begin(), m_host.m_calls.end(), strCall) != 0;
        };
        const Calls& calls = GetParam().afterwards;
        const bool bAll = std::all_of(calls.begin(), calls.end(), isMade);
        EXPECT_EQ(bAll, std::any_of(calls.begin(), calls.end(), isMade));
        return bAll;
    }
};

TEST_P(StoreReader, FailureWithTheFlagMeansNothingToRead) {
    ExpectFailedRead(true, 0, GetParam().whenEmpty);
}

TEST_P(StoreReader, FailureWithoutTheFlagIsAFailure) {
    ExpectFailedRead(false, GetParam().bGoesOnAfterFailure ? 0 : NUMERIC_STORE_CODE,
                     GetParam().whenFailed);
}

TEST_P(StoreReader, SuccessGoesOnWhateverTheFlag) {
    for (const bool bDataEmpty : {true, false}) {
        SCOPED_TRACE(bDataEmpty);
        EXPECT_EQ(Read(0, bDataEmpty), 0);
        EXPECT_TRUE(HasGoneOn());
        for (const std::string& strLine : Log()) {
            EXPECT_NE(strLine.rfind("log 3 framework_common", 0), 0U) << strLine;
            EXPECT_NE(strLine.rfind("log 3 container ", 0), 0U) << strLine;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Of, StoreReader, testing::ValuesIn(Readers()), NAME_OF_CASE);

TEST_F(HostContract, SecondReadOfAStartTakesTheFlagAsTheFirstLeftIt) {
    m_host.m_reads[PATH_CLUSTER] = Answer(0, true);
    EXPECT_EQ(CFrameworkCommon::Instance().InitNodeAndContainerFromZK(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK"}),
              (Calls{"GetDataFromZK /CloudX/Cluster 65536 unwatched filled",
                     "GetDataFromZK /CloudX/CloudStorage 65536 unwatched empty"}));
}

TEST_F(HostContract, SaveReadsChangesAndWritesTheSharedDocument) {
    m_host.m_reads[PATH_CLOUD_STORAGE] = Text(CLOUD_STORAGE);
    EXPECT_EQ(SaveCloudStorage(), 0);
    EXPECT_EQ(m_host.CallsTo({"GetDataFromZK", "SetDataToZK"}),
              (Calls{"GetDataFromZK /CloudX/CloudStorage 65536 unwatched empty", WRITTEN}));
}

TEST_F(HostContract, FailedWriteEndsInTheLog) {
    m_host.m_onWrite = [](const std::string&) { return NUMERIC_STORE_CODE; };
    Listen();
    EXPECT_EQ(SaveCloudStorage(), 0);
    EXPECT_EQ(Log().back(),
              "log 3 container SaveCloudStorageReportInfoToZK [init cluster session, on "
              "successful response] <4711> set cloud storage info to zk fail.");
}

// ---------------------------------------------------------------- the log

TEST_F(HostContract, NullLoggerSilencesAndChangesNoResult) {
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    EXPECT_EQ(InitConfig(), NUMERIC_STORE_CODE);
    EXPECT_EQ(m_host.CallsTo({"getLogger", "log"}), Calls(2, "getLogger"));
}

TEST_F(HostContract, FailureIsFormattedIntoABufferOf512) {
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    InitConfig();
    EXPECT_EQ(m_host.CallsTo({"ORVA_LogFormatErrCode"}),
              Calls{"ORVA_LogFormatErrCode 512 4711 get cloud storage info from cluster node "
                    "fail."});
}

struct CFormatted {
    std::string strName;
    std::function<int(char* pszBuf, int iSize)> format;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CFormatted& formatted) {
    return stream << formatted.strName;
}

/// A formatter that writes the text, up to the whole buffer and unterminated, and answers so.
std::function<int(char*, int)> Writes(const std::string& strText, int iAnswer) {
    return [strText, iAnswer](char* pszBuf, int iSize) {
        std::memcpy(pszBuf, strText.data(),
                    std::min(strText.size(), static_cast<std::size_t>(iSize)));
        return iAnswer;
    };
}

class StrangeFormatter : public HostContract, public testing::WithParamInterface<CFormatted> {};

TEST_P(StrangeFormatter, CannotBreakTheLine) {
    m_host.m_formatErrCode = GetParam().format;
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    Listen();
    EXPECT_EQ(InitConfig(), NUMERIC_STORE_CODE);
    EXPECT_EQ(Log().back(), "log 3 framework_common InitClusterConfigFromZK [init framework] " +
                                GetParam().strMessage);
}

INSTANTIATE_TEST_SUITE_P(
    Host, StrangeFormatter,
    testing::Values(
        CFormatted{"FailsAndWritesNothing", Writes("", -1), ""},
        CFormatted{"FailsAfterWriting", Writes("half", -1), "half"},
        CFormatted{"FailsAtItsWorst", Writes("half", std::numeric_limits<int>::min()), "half"},
        CFormatted{"SaysLessThanItWrote", Writes("whole", 2), "wh"},
        CFormatted{"SaysNothingWasWritten", Writes("whole", 0), ""},
        CFormatted{"FillsTheBuffer", Writes(std::string(512, 'x'), 512), std::string(511, 'x')},
        CFormatted{"SaysMoreThanTheBuffer", Writes("text", 600), "text"},
        CFormatted{"SaysFarMore", Writes("text", std::numeric_limits<int>::max()), "text"}),
    NAME_OF_CASE);

// ---------------------------------------------------------------- exceptions of the host

CMinimalHost::ReadAnswer Throws() {
    return [](CBaseJsonObject&, bool&) -> int { throw std::runtime_error("host"); };
}

TEST_F(HostContract, ThrowingReadLeavesTheModelAsItWas) {
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(NodeText("n1", "10.0.0.1")));
    EXPECT_EQ(InitCluster(), 0);
    m_host.m_reads[PATH_CLUSTER] = Throws();
    EXPECT_THROW(InitCluster(), std::runtime_error);
    EXPECT_TRUE(CNodeMgr::Instance().IsNodeExist("n1"));
    m_host.m_reads[PATH_CONFIG] = Throws();
    EXPECT_THROW(InitConfig(), std::runtime_error);
    EXPECT_EQ(m_host.CallsTo(SETTERS), Calls());
}

TEST_F(HostContract, ThrowingStoreLeavesNoLockBehind) {
    m_host.m_reads[PATH_CLUSTER] = Text(ClusterText(NodeText("n1", "10.0.0.1")));
    EXPECT_EQ(InitCluster(), 0);
    m_host.m_reads[PATH_CLOUD_STORAGE] = Throws();
    EXPECT_THROW(
        CContainerMgr::Instance().SaveDataToZK(CContainerAddr("n1", CONTAINER_TYPE_CLOUD_STORAGE)),
        std::runtime_error);
    const std::future<void> other = std::async(std::launch::async, [] {
        ContainerMap containerMap;
        CContainerMgr::Instance().GetAllContainer(containerMap);
    });
    ASSERT_EQ(other.wait_for(std::chrono::seconds(30)), std::future_status::ready);
}

TEST_F(HostContract, DocumentThrowsOutOfItsParseWithNothingTakenOver) {
    for (const char* pszText : {"[1]", "\"text\"", "3"}) {
        SCOPED_TRACE(pszText);
        CClusterConfigZNodeInfo document;
        document.SetFaultShift(false);
        EXPECT_THROW(document.ParseJson(pszText), std::exception);
        EXPECT_TRUE(document.IsLoadBalance());
        EXPECT_FALSE(document.IsFaultShift());
    }
}

// ---------------------------------------------------------------- plug-ins

int AnswerPluginRoot(std::string& strDir) {
    strDir = PLUGIN_ROOT;
    return ORVA_SUCCEED;
}

TEST_F(HostContract, PluginsAreLookedForBelowTheLibraryDirectory) {
    m_host.m_libDirectory = &AnswerPluginRoot;
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    EXPECT_EQ(m_host.m_calls, (Calls{"get_lib_directory []",
                                     std::string("GetDirFileList ") + PLUGIN_ROOT + "/plugins 0"}));
}

TEST_F(HostContract, CodesOfTheFileServicesComeBack) {
    m_host.m_libDirectory = [](std::string&) { return NUMERIC_STORE_CODE; };
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), NUMERIC_STORE_CODE);
    EXPECT_EQ(m_host.CallsTo({"GetDirFileList"}), Calls());
    m_host.m_libDirectory = &AnswerPluginRoot;
    m_host.m_iFileListRet = NUMERIC_STORE_CODE;
    EXPECT_EQ(CPluginMgr::Instance().LoadAllPlugin(), NUMERIC_STORE_CODE);
}

TEST_F(HostContract, FaultShiftSupportComesFromThePluginAtTheStart) {
    m_host.m_libDirectory = &AnswerPluginRoot;
    m_host.m_files = {PLUGIN_FILE};
    ASSERT_EQ(CPluginMgr::Instance().LoadAllPlugin(), 0);
    EXPECT_EQ(g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO], 1U);
    m_host.m_reads[PATH_CLUSTER] =
        Text(ClusterText(NodeText("n1", "10.0.0.1", "Normal", "A") + "," +
                         NodeText("n2", "10.0.0.2", "Normal", "B")));
    Listen();
    EXPECT_EQ(InitCluster(), 0);
    EXPECT_EQ(Log(),
              (Calls{"log 6 framework_common InitNodeAndContainerFromZK [init node and container "
                     "from zk] ",
                     "log 6 framework_common GenContainerTable [Gen Container Table] node=n1 "
                     "container type=A ",
                     "log 6 framework_common GenContainerTable [Gen Container Table] node=n2 "
                     "container type=B ",
                     "log 6 framework_common LoadContainerInfo [load Container info] node=n1 "
                     "container type=A ",
                     "log 3 plugin_mgr IsContainerSupportFaultShift [is container support fault "
                     "shift] <1> do not support, type[B]",
                     "log 6 framework_common LoadContainerInfo [load Container info] node=n2 "
                     "container type=B ",
                     "log 6 framework_common InitNodeAndContainerFromZK [init framework] cloud "
                     "storage info is empty, not need to init framework."}));
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n1", "A"}));
    EXPECT_FALSE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n2", "B"}));
    EXPECT_EQ(CPluginMgr::Instance().UnLoadAllPlugin(), 0);
    EXPECT_EQ(g_hald_memstat[HALD_MEMSTAT_PLUGIN_INFO], 0U);
    EXPECT_TRUE(CContainerMgr::Instance().IsContainerSupportFaultShift({"n1", "A"}))
        << "settled when the container was created";
}

}  // namespace
