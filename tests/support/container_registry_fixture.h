#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "framework_service/container_mgr.h"
#include "support/fake_clock.h"
#include "support/host_fixture.h"
#include "support/model_values.h"

namespace container_registry {

using testing::ElementsAre;

inline constexpr int REPORT = 3979;
inline constexpr std::time_t NOW = 1000000;

inline const CContainerAddr CAM("N1", "Cam");
inline const CContainerAddr IMG_DEV("N1", "MeroImgDev");
inline const CContainerAddr UNKNOWN("N9", "Cam");

using ShownTable = std::map<std::string, Shown>;

inline ShownTable Show(const ContainerMap& containerMap) {
    ShownTable table;
    for (const auto& [containerAddr, container] : containerMap) {
        table[containerAddr.GetNodeId() + ":" + containerAddr.GetContainerType()] =
            ::Show(container);
    }
    return table;
}

inline ContainerMap MakeTable(const std::vector<CContainerAddr>& addresses) {
    ContainerMap containerMap;
    for (const CContainerAddr& addr : addresses) {
        containerMap[addr] = MakeContainer(addr.GetNodeId(), addr.GetContainerType());
    }
    return containerMap;
}

/// The registry with two containers, CAM and IMG_DEV; empty again afterwards.
class ContainerRegistry : public CHostTest {
protected:
    ContainerRegistry() {
        SetClock(NOW);
        m_registry.Init(MakeTable({CAM, IMG_DEV}));
    }
    ~ContainerRegistry() override { m_registry.Init({}); }

    ContainerMap Table() const {
        ContainerMap containerMap;
        m_registry.GetAllContainer(containerMap);
        return containerMap;
    }

    CContainer Get(const CContainerAddr& addr) const { return Table().at(addr); }

    /// The one line that was logged.
    void ExpectLine(const CLogLine& line) const {
        EXPECT_THAT(m_logger.GetLines(), ElementsAre(line));
    }

    CContainerMgr& m_registry = CContainerMgr::Instance();
};

/// An operation that does not reach its container, and what it logs when there is none.
struct CUnreached {
    std::string strName;
    std::function<void(CContainerMgr&, const CContainerAddr&)> apply;
    std::vector<CLogLine> lines = {};
};

inline std::ostream& operator<<(std::ostream& stream, const CUnreached& unreached) {
    return stream << unreached.strName;
}

class ContainerRegistryUnreached : public ContainerRegistry,
                                   public testing::WithParamInterface<CUnreached> {};

inline const CContainerAddr CLOUD("N1", "MeroCloudStorage");

inline std::string Entry(const std::string& strNodeId) {
    return "{\"LowpriBit\":0,\"NvrCode\":\"" + strNodeId +
           "\",\"ProductType\":\"\",\"ReqPicSize\":0,\"ReqSize\":0,\"ServiceType\":\"\"}";
}

inline std::string Document(const std::string& strEntries) {
    return "{\"CloudStorageSet\":[" + strEntries + "]}\n";
}

class ContainerRegistrySave : public ContainerRegistry {
protected:
    ContainerRegistrySave() {
        m_registry.Init(MakeTable({CAM, CLOUD}));
        m_pStore->Put(Path("/CloudStorage"), Document(Entry("N0")));
    }

    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/CloudStorage")); }
};

}  // namespace container_registry
