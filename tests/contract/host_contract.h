#pragma once

#include <gtest/gtest.h>

#include "common_service/tarn_def.h"
#include "contract/minimal_host.h"
#include "framework_service/container_mgr.h"
#include "framework_service/framework_common.h"
#include "framework_service/node_mgr.h"
#include "framework_service/plugin_mgr.h"

namespace host_contract {

using Calls = std::vector<std::string>;

inline const auto NAME_OF_CASE = [](const auto& info) { return info.param.strName; };

inline constexpr int NUMERIC_STORE_CODE = 4711;
inline constexpr char PATH_CONFIG[] = "/CloudX/ClusterConfig";
inline constexpr char PATH_CLUSTER[] = "/CloudX/Cluster";
inline constexpr char PATH_CLOUD_STORAGE[] = "/CloudX/CloudStorage";

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

inline constexpr char CONFIG[] =
    R"({"IsLoadBalance":false,"IsFaultShift":true,"IsLoadBalanceOnePeriod":false})";

inline const std::list<std::string> SETTERS = {"SetLoadBalance",
                                               "SetFaultShift",
                                               "SetLoadBalanceOnePeriod",
                                               "SetLoadBalanceDiskThreshold",
                                               "SetLoadBalanceNetThreshold",
                                               "SetLoadBalanceChannelThreshold"};

inline Calls SetterCalls(const std::string& strLoadBalance, const std::string& strFaultShift,
                         const std::string& strOnePeriod) {
    return {"SetLoadBalance " + strLoadBalance,        "SetFaultShift " + strFaultShift,
            "SetLoadBalanceOnePeriod " + strOnePeriod, "SetLoadBalanceDiskThreshold 10",
            "SetLoadBalanceNetThreshold 10",           "SetLoadBalanceChannelThreshold 10"};
}

inline Calls operator+(Calls lhs, const Calls& rhs) {
    lhs.insert(lhs.end(), rhs.begin(), rhs.end());
    return lhs;
}

inline std::string ClusterText(const std::string& strNodes) {
    return R"({"ClusterName":"c","ClusterRemark":"r","ClusterCode":"X","ClusterForwardType":5,)"
           R"("ClusterNode":[)" +
           strNodes + "]}";
}

inline std::string NodeText(const std::string& strId, const std::string& strIp,
                            const std::string& strStatus = "Normal",
                            const std::string& strType = "MeroCloudStorage") {
    return R"({"NodeID":")" + strId + R"(","NodeIP":")" + strIp +
           R"(","NodeIPType":0,"NodeRole":0,"DomainRole":0,"Status":")" + strStatus +
           R"(","Container":[{"ContainerType":")" + strType + R"("}]})";
}

inline constexpr char CLOUD_STORAGE[] =
    R"({"CloudStorageSet":[{"NvrCode":"n1","ServiceType":"S","ProductType":"P","ReqSize":1,)"
    R"("ReqPicSize":2,"LowpriBit":3}]})";

inline int InitConfig() {
    return CFrameworkCommon::Instance().InitClusterConfigFromZK();
}

inline int InitCluster() {
    return CFrameworkCommon::Instance().InitNodeAndContainerFromZK();
}

inline int SaveCloudStorage() {
    CContainer container;
    container.SetNodeId("n2");
    container.SetContainerType(CONTAINER_TYPE_CLOUD_STORAGE);
    container.SaveCloudStorageReportInfoToZK();
    return ORVA_SUCCEED;
}

}  // namespace host_contract
