#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/registry_fixture.h"

namespace cg_registry {

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr char FILE_STEM[] = "framework_common";

inline CFrameworkCGCommon& Registry() {
    return CFrameworkCGCommon::Instance();
}

/// An entry, in short.
struct CEntry {
    std::string strNode;
    std::string strFloatCode;
    std::string strFloatIp;
    std::string strDecVerNum = "0";

    friend bool operator==(const CEntry& lhs, const CEntry& rhs) {
        return lhs.strNode == rhs.strNode && lhs.strFloatCode == rhs.strFloatCode &&
               lhs.strFloatIp == rhs.strFloatIp && lhs.strDecVerNum == rhs.strDecVerNum;
    }

    friend std::ostream& operator<<(std::ostream& stream, const CEntry& entry) {
        return stream << entry.strNode << '/' << entry.strFloatCode << '/' << entry.strFloatIp
                      << '/' << entry.strDecVerNum;
    }
};

using Entries = std::vector<CEntry>;

inline CClusterCGInfo ToInfo(const CEntry& entry) {
    return MakeCG(entry.strNode, entry.strFloatCode, entry.strFloatIp, entry.strDecVerNum);
}

inline CClusterCGInfoList ToList(const Entries& entries) {
    CClusterCGInfoList list;
    for (const CEntry& entry : entries) {
        list.AddClusterCGInfo(ToInfo(entry));
    }
    return list;
}

inline Entries FromList(const CClusterCGInfoList& list) {
    std::list<CClusterCGInfo> infos;
    list.GetClusterCGInfoList(infos);
    Entries entries;
    for (const CClusterCGInfo& info : infos) {
        entries.push_back(
            {info.GetNodeCode(), info.GetFloatCode(), info.GetFloatIp(), info.GetDecVerNum()});
    }
    return entries;
}

inline Entries Cached() {
    CClusterCGInfoList list;
    Registry().GetClusterCGInfoList(list);
    return FromList(list);
}

/// The document, to the letter as the library writes it.
inline std::string TextOf(const Entries& entries) {
    std::string strText;
    for (const CEntry& entry : entries) {
        strText += (strText.empty() ? "[" : ",") + (R"({"DecisionVerNum":")" + entry.strDecVerNum) +
                   R"(","FloatCGCode":")" + entry.strFloatCode + R"(","FloatIP":")" +
                   entry.strFloatIp + R"(","NVRCode":")" + entry.strNode + R"("})";
    }
    return strText.empty() ? "" : strText + "]\n";
}

inline CLogLine WriteFailed(const std::string& strOperation, const std::string& strFunction,
                            int iCode = NUMERIC_STORE_CODE) {
    return Err(strOperation, iCode, FILE_STEM, strFunction, "set cg data into zk fail.");
}

inline const CEntry E1{"n1", "f1", "10.1.0.1"};
inline const CEntry E2{"n2", "f2", "10.1.0.2"};
inline const CEntry E3{"n3", "f3", "10.1.0.3"};

class CGRegistry : public CRegistryTest {
protected:
    /// Nodes n1, n2, ... up to the count, of no matter which member status.
    static void SetNodes(unsigned int uiCount) {
        std::list<CNode> nodes;
        for (unsigned int i = 1; i <= uiCount; ++i) {
            nodes.push_back(MakeStoredNode("n" + std::to_string(i), {}));
            nodes.back().SetMemberStatus(static_cast<int>(i % 2));
        }
        CNodeMgr::Instance().Init(nodes);
    }

    /// Fills cache and store alike.
    void Fill(const Entries& entries) {
        Put(TextOf(entries));
        ASSERT_EQ(Registry().ReloadClusterCGInfoList(), 0);
        ASSERT_EQ(Cached(), entries);
        m_logger.Clear();
        m_uiCallsBefore = m_pStore->GetCallCount();
    }

    void Put(const std::optional<std::string>& text) { m_pStore->Put(Path("/MERO/CGList"), text); }
    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/MERO/CGList")); }
    unsigned int Calls() const { return m_pStore->GetCallCount() - m_uiCallsBefore; }

    unsigned int m_uiCallsBefore = 0;
};

inline constexpr char SINGLE[] = "AddSingleClusterCGInfo";

inline constexpr char BATCH[] = "AddClusterCGInfo";

struct CWrite {
    std::string strName;
    std::function<int()> call;
    std::string strOperation;
    std::string strFunction;
    Entries cachedAfterFailure;
    Entries storedAfter;
};

inline std::ostream& operator<<(std::ostream& stream, const CWrite& write) {
    return stream << write.strName;
}

class CGWrite : public CGRegistry, public testing::WithParamInterface<CWrite> {};

}  // namespace cg_registry
