#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "reference_host/zookeeper_store.h"
#include "zookeeper_server.h"

namespace {

class ZooKeeperEnsemble : public testing::Test {
protected:
    ZooKeeperEnsemble() {
        std::string strConfig = "initLimit=50\nsyncLimit=25\n";
        for (int iMember = 1; iMember <= 3; ++iMember) {
            strConfig += "server." + std::to_string(iMember) +
                         "=127.0.0.1:" + std::to_string(FreeLoopbackPort()) + ":" +
                         std::to_string(FreeLoopbackPort()) + "\n";
        }
        for (int iMember = 1; iMember <= 3; ++iMember) {
            m_servers.push_back(std::make_unique<CZooKeeperServer>(iMember, strConfig));
            m_servers.back()->Start();
        }
        for (const auto& pServer : m_servers) {
            pServer->AwaitServing();
            m_strServers += (m_strServers.empty() ? "" : ",") + pServer->Address();
        }
    }

    CZooKeeperServer& Leader() {
        return **std::find_if(m_servers.begin(), m_servers.end(),
                              [](const auto& pServer) { return pServer->IsLeader(); });
    }

    std::vector<std::unique_ptr<CZooKeeperServer>> m_servers;
    std::string m_strServers;
};

TEST_F(ZooKeeperEnsemble, KilledLeaderLosesNoAcknowledgedWrite) {
    constexpr int iWrites = 60;
    CZooKeeperStore store({m_strServers, std::chrono::seconds(2), std::chrono::seconds(15)});
    for (int iWrite = 0; iWrite < iWrites; ++iWrite) {
        if (iWrite == iWrites / 2) {
            Leader().Kill();
        }
        ASSERT_EQ(store.Write("/document/" + std::to_string(iWrite), std::to_string(iWrite)), 0);
    }
    for (int iWrite = 0; iWrite < iWrites; ++iWrite) {
        CStoreAnswer answer;
        ASSERT_EQ(store.Read("/document/" + std::to_string(iWrite), nullptr, answer), 0);
        EXPECT_EQ(answer.text, std::to_string(iWrite));
    }
}

}  // namespace
