#include <algorithm>

#include "contract/host_contract.h"

using namespace host_contract;

namespace {

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

}  // namespace
