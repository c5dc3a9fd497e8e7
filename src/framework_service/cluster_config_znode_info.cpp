#include "framework_service/cluster_config_znode_info.h"

#include "internal/json_text.h"
#include "internal/null_pointer.h"
#include "operation_log/operation_log.h"

using namespace framework_internal;
using namespace operation_log;

namespace {

constexpr char OPERATION_PARSE[] = "Cluster Config node info";
constexpr char MESSAGE_ILLEGAL[] = "null or illegal, json text[%s].";

}  // namespace

int32_t CClusterConfigZNodeInfo::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_DATA_INVALID);
    }
    Json::Value root;
    if (!ParseJsonText(pszJson, root)) {
        return LogFailure("Cluster Config node info, parse json fail", ORVA_DATA_INVALID,
                          "json text[%s].", pszJson);
    }
    bool bLoadBalance = false;
    bool bFaultShift = false;
    bool bLoadBalanceOnePeriod = false;
    CAnyMember thresholds;
    if (!ReadMembers<CLUSTER_CONFIG_KEYS>(
            root, To<PSZ_CLUSTER_LOAD_BALANCE>(bLoadBalance),
            To<PSZ_CLUSTER_FAULT_SHIFT>(bFaultShift),
            To<PSZ_CLUSTER_LOAD_BALANCE_ONE_PERIOD>(bLoadBalanceOnePeriod),
            To<PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD>(thresholds))) {
        return LogFailure(OPERATION_PARSE, ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    m_bLoadBalance = bLoadBalance;
    m_bFaultShift = bFaultShift;
    m_bLoadBalanceOnePeriod = bLoadBalanceOnePeriod;

    if (thresholds.pValue == nullptr || !thresholds.pValue->isArray()) {
        return ORVA_SUCCEED;
    }
    // Thresholds are looked for in an array alone, and an array has no members by name: the lookup
    // fails or is refused by the JSON library, so that stored thresholds never take effect.
    int iDisk = 0;
    int iNet = 0;
    int iChannel = 0;
    if (!ReadMembers<CLUSTER_THRESHOLD_KEYS>(
            *thresholds.pValue, To<PSZ_CLUSTER_DISK_THRESHOLD>(iDisk),
            To<PSZ_CLUSTER_NET_THRESHOLD>(iNet), To<PSZ_CLUSTER_CHANNEL_THRESHOLD>(iChannel))) {
        return LogFailure(OPERATION_PARSE, ORVA_DATA_INVALID, MESSAGE_ILLEGAL, pszJson);
    }
    m_iLoadBalanceDiskThreshold = iDisk;
    m_iLoadBalanceNetThreshold = iNet;
    m_iLoadBalanceChannelThreshold = iChannel;
    return ORVA_SUCCEED;
}

int32_t CClusterConfigZNodeInfo::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return LogNullPointer(OPERATION_NULL_JSON, ORVA_FAIL);
    }
    Json::Value root(Json::objectValue);
    root[PSZ_CLUSTER_LOAD_BALANCE] = m_bLoadBalance;
    root[PSZ_CLUSTER_FAULT_SHIFT] = m_bFaultShift;
    root[PSZ_CLUSTER_LOAD_BALANCE_ONE_PERIOD] = m_bLoadBalanceOnePeriod;
    Json::Value& thresholds = root[PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD];
    thresholds[PSZ_CLUSTER_DISK_THRESHOLD] = m_iLoadBalanceDiskThreshold;
    thresholds[PSZ_CLUSTER_NET_THRESHOLD] = m_iLoadBalanceNetThreshold;
    thresholds[PSZ_CLUSTER_CHANNEL_THRESHOLD] = m_iLoadBalanceChannelThreshold;
    WriteJsonText(root, pszJson, iMaxLen);
    return ORVA_SUCCEED;
}
