#pragma once

#include <optional>
#include <string>

#include "support/json_document.h"
#include "support/registry_fixture.h"

namespace database_front {

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr char FILE_STEM[] = "framework_common";

inline CFrameworkCommon& Framework() {
    return CFrameworkCommon::Instance();
}

inline constexpr char ARRANGEMENT[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n2\",\"NodeIp\":\"i2\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n3\",\"NodeIp\":\"i3\"}]}\n";

inline constexpr char PROMOTED[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n3\",\"NodeIp\":\"new\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n2\",\"NodeIp\":\"i2\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}]}\n";

inline constexpr char MOVED_SLAVE[] =
    "{\"MasterDB\":{\"DBPort\":6001,\"DBToken\":\"000\",\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"},"
    "\"SlaveDB\":[{\"DBPort\":6002,\"DBToken\":\"001\",\"NodeCode\":\"n9\",\"NodeIp\":\"i9\"},"
    "{\"DBPort\":6003,\"DBToken\":\"002\",\"NodeCode\":\"n3\",\"NodeIp\":\"i3\"}]}\n";

inline constexpr char MANAGER[] = "{\"MasterMGR\":{\"NodeCode\":\"n1\",\"NodeIp\":\"i1\"}}\n";

inline CClusterDBInfo MakeDB(int iType, const std::string& strNode, const std::string& strIp,
                             const std::string& strToken = "") {
    CClusterDBInfo info;
    info.SetDBType(iType);
    info.SetNodeId(strNode);
    info.SetNodeIp(strIp);
    info.SetCDBToken(strToken);
    info.SetPort(9999);
    return info;
}

inline std::string CachedText() {
    return TextOf(Framework().GetClusterDBInfo());
}

class DatabaseFront : public CRegistryTest {
protected:
    void Load() {
        m_pStore->Put(Path("/CenterDB"), ARRANGEMENT);
        ASSERT_EQ(Framework().ParseCDBFromZK(false), 0);
        ASSERT_EQ(CachedText(), ARRANGEMENT);
        m_uiCallsBefore = m_pStore->GetCallCount();
    }

    std::optional<std::string> Stored() const { return m_pStore->Get(Path("/CenterDB")); }
    unsigned int Calls() const { return m_pStore->GetCallCount() - m_uiCallsBefore; }

    unsigned int m_uiCallsBefore = 0;
};

}  // namespace database_front
