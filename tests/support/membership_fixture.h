#pragma once

#include <string>
#include <vector>

#include "support/registry_fixture.h"

namespace membership {

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr char FILE_STEM[] = "framework_common";

inline CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

inline CLogLine FromCache(const std::string& strFunction, const std::string& strMessage) {
    return Info("framework common, Remove node container from cache", FILE_STEM, strFunction,
                strMessage);
}

/// What a removal tells of the registries.
inline std::vector<CLogLine> CacheLines(const std::string& strNodeId, const std::string& strType,
                                        unsigned int uiLeft) {
    std::vector<CLogLine> lines = {FromCache(
        "RemoveNodeContainer", "node id[" + strNodeId + "], container id[" + strType +
                                   "], left container num[" + std::to_string(uiLeft) + "].")};
    if (uiLeft == 0) {
        lines.push_back(FromCache("RemoveNodeContainerAndFlush", "node id[" + strNodeId + "]."));
    }
    return lines;
}

/// What a removal tells that reached the store.
inline std::vector<CLogLine> FlushedLines(const std::string& strNodeId, const std::string& strType,
                                          unsigned int uiLeft) {
    std::vector<CLogLine> lines = CacheLines(strNodeId, strType, uiLeft);
    lines.push_back(Info("framework common, remove container and flush from zk", FILE_STEM,
                         "RemoveNodeContainerAndFlush",
                         "node id[" + strNodeId + "], container id[" + strType +
                             "], container num[" + std::to_string(uiLeft) + "] left."));
    return lines;
}

class Membership : public CRegistryTest {
protected:
    void Add(const std::string& strId, const std::list<std::string>& containers) {
        ASSERT_EQ(Framework().AddNodeAndContainer({{strId, MakeStoredNode(strId, containers)}}), 0);
        m_logger.Clear();
    }

    void Put(const std::optional<std::string>& text) { m_pStore->Put(Path("/Cluster"), text); }
    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/Cluster")); }
};

class AvailableContainers : public Membership {
protected:
    AvailableContainers() {
        for (const char* pszId : {"n1", "n2", "n3"}) {
            Add(pszId, {"A", "B"});
        }
    }

    /// The containers of type "A" that are available, by node.
    std::vector<std::string> Available() {
        m_logger.Clear();
        ContainerMap containerMap;
        Framework().GetAvailableContainer("A", containerMap);
        std::vector<std::string> ids;
        for (const auto& [addr, container] : containerMap) {
            EXPECT_EQ(addr.GetContainerType(), "A");
            EXPECT_EQ(addr.GetNodeId(), container.GetNodeId());
            ids.push_back(addr.GetNodeId());
        }
        return ids;
    }

    static CLogLine Kept(const std::string& strNodeId) {
        return Trace(FILE_STEM, "GetAvailableContainer",
                     "orva plugin, available orva container, node id[" + strNodeId + "].");
    }
};

}  // namespace membership
