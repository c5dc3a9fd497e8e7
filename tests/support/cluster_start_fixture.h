#pragma once

#include <algorithm>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "reference_host/accepted_links.h"
#include "support/host_fixture.h"
#include "support/registry_fixture.h"

namespace cluster_start {

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr char FILE_STEM[] = "framework_common";

inline CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

inline CLogLine Progress(const std::string& strFunction, const std::string& strMessage) {
    return Info("init framework", FILE_STEM, strFunction, strMessage);
}

inline CLogLine Failure(const std::string& strFunction, int iCode, const std::string& strMessage) {
    return Err("init framework", iCode, FILE_STEM, strFunction, strMessage);
}

/// What the store may hold in place of a good document, and the code of the read that meets it.
struct CBadText {
    std::string strName;
    std::string strText;
    int iCode = ORVA_DATA_INVALID;
};

inline std::ostream& operator<<(std::ostream& stream, const CBadText& bad) {
    return stream << bad.strName;
}

inline std::string Repeat(const std::string& strText, int iTimes) {
    std::string strAll;
    for (int i = 0; i < iTimes; ++i) {
        strAll += strText;
    }
    return strAll;
}

/// The texts that no document takes.
inline std::vector<CBadText> BadTexts(std::vector<CBadText> ofThisDocument) {
    const std::vector<CBadText> common = {
        {"Malformed", "no json"},   {"Unclosed", R"({"ClusterName":"c")"},
        {"PercentSigns", "%s%n%d"}, {"EmptyObject", "{}"},
        {"NullRoot", "null"},       {"ArrayRoot", R"([{"ClusterName":"c"}])"},
        {"TextRoot", R"("text")"},  {"NumberRoot", "3"},
        {"TrueRoot", "true"},       {"NestedForEver", Repeat("[", 200)},
    };
    ofThisDocument.insert(ofThisDocument.end(), common.begin(), common.end());
    return ofThisDocument;
}

inline std::string PadTo(const std::string& strText, std::size_t size) {
    return strText + std::string(size - strText.size(), ' ');
}

inline const auto NAME_OF_BAD_TEXT = [](const testing::TestParamInfo<CBadText>& info) {
    return info.param.strName;
};

/// An entry of the cloud storage document; strAllocs is the text of its "NodeList".
inline std::string EntryText(const std::string& strNodeId, int iReqStorage,
                             const std::string& strAllocs = "[]") {
    return R"({"NvrCode":")" + strNodeId + R"(","ServiceType":"S","ProductType":"P","ReqSize":)" +
           std::to_string(iReqStorage) + R"(,"ReqPicSize":-3,"LowpriBit":4,"NodeList":)" +
           strAllocs + "}";
}

inline std::string CloudStorageText(const std::string& strEntries) {
    return R"({"CloudStorageSet":[)" + strEntries + "]}";
}

inline constexpr char ALLOCS[] =
    R"([{"Code":"c2","AllocSize":20,"UsedSize":2,"Dns":"d2","Path":"/2"},)"
    R"({"Code":"c1","AllocSize":10,"UsedSize":1,"Dns":"d1","Path":"/1"}])";

/// What becomes of each address on its way to a container, no plug-in being loaded.
inline std::vector<CLogLine> GenLines(const std::vector<CContainerAddr>& addresses,
                                      std::size_t uiLoaded = std::string::npos) {
    const auto textOf = [](const CContainerAddr& addr) {
        return "node=" + addr.GetNodeId() + " container type=" + addr.GetContainerType() + " ";
    };
    std::vector<CLogLine> lines;
    for (const CContainerAddr& addr : addresses) {
        lines.push_back(Info("Gen Container Table", FILE_STEM, "GenContainerTable", textOf(addr)));
    }
    for (std::size_t i = 0; i < std::min(uiLoaded, addresses.size()); ++i) {
        lines.push_back(Err("is container support fault shift", 1, "plugin_mgr",
                            "IsContainerSupportFaultShift",
                            "do not support, type[" + addresses[i].GetContainerType() + "]"));
        lines.push_back(
            Info("load Container info", FILE_STEM, "LoadContainerInfo", textOf(addresses[i])));
    }
    return lines;
}

inline const CLogLine INSERT_FAILED =
    Err("load container info", 1, FILE_STEM, "LoadContainerInfo", "insert map failed");
inline const CLogLine LOAD_FAILED =
    Err("init container mgr", 1, FILE_STEM, "GenContainerTable", "load container info fail.");
inline const CLogLine GEN_FAILED = Err("framework common, init container mgr", 1, FILE_STEM,
                                       "InitContainerMgr", "gen container table fail.");
inline const CLogLine CONTAINER_MGR_FAILED =
    Err("framework common, init node and contiaer", 1, FILE_STEM, "InitNodeAndContainer",
        "init contianer manager fail.");

inline std::vector<CLogLine> operator+(std::vector<CLogLine> lhs,
                                       const std::vector<CLogLine>& rhs) {
    lhs.insert(lhs.end(), rhs.begin(), rhs.end());
    return lhs;
}

class ClusterStart : public CHostTest {
protected:
    ClusterStart() { EmptyRegistries(); }
    ~ClusterStart() override { EmptyRegistries(); }

    static void EmptyRegistries() {
        CNodeMgr::Instance().Init({});
        CContainerMgr::Instance().Init({});
    }

    void PutCluster(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/Cluster"), text);
    }

    void PutCloudStorage(const std::optional<std::string>& text) {
        m_pStore->Put(Path("/CloudStorage"), text);
    }

    /// A first load, of which later ones find the traces.
    void LoadFormer(const std::vector<CStoredNode>& members) {
        PutCluster(ClusterText(members, 7));
        ASSERT_EQ(Framework().InitNodeAndContainerFromZK(), 0);
        m_logger.Clear();
    }

    static std::vector<CContainerAddr> ContainerAddrs() { return AddressesOf(AllContainers()); }

    static CContainer CloudStorage(const std::string& strNodeId) {
        return AllContainers()[CContainerAddr(strNodeId, CONTAINER_TYPE_CLOUD_STORAGE)];
    }

    static std::vector<CResourceTask> Tasks(const CContainer& container) {
        std::list<CResourceTask> taskList;
        container.GetResoureTask(taskList);
        return {taskList.begin(), taskList.end()};
    }

    static bool IsLinked(const std::string& strIp) { return IsAcceptedLink(strIp, 70106); }

    std::vector<CLogLine> Lines() const { return m_logger.GetLinesOf(FILE_STEM); }

    static constexpr char FUNCTION[] = "InitNodeAndContainerFromZK";
    const CLogLine BEGIN = Info("init node and container from zk", FILE_STEM, FUNCTION, "");
    const CLogLine NO_CLOUD_STORAGE =
        Progress(FUNCTION, "cloud storage info is empty, not need to init framework.");
};

inline constexpr int NUMERIC_DEEP = 10000;

}  // namespace cluster_start
