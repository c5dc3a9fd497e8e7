#pragma once

#include <cstdint>

#include "common_service/data/communication_data.h"
#include "common_service/tarn_def.h"
#include "framework_service/document_keys.h"
#include "framework_service/store_path.h"

inline constexpr ORVA_STORE_NODE STORE_NODE_CLUSTER_CONFIG{"/ClusterConfig", 512};

inline constexpr char PSZ_CLUSTER_LOAD_BALANCE[] = "IsLoadBalance";
inline constexpr char PSZ_CLUSTER_FAULT_SHIFT[] = "IsFaultShift";
inline constexpr char PSZ_CLUSTER_LOAD_BALANCE_ONE_PERIOD[] = "IsLoadBalanceOnePeriod";
inline constexpr char PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD[] = "LoadBalanceThreshold";
inline constexpr char PSZ_CLUSTER_DISK_THRESHOLD[] = "DiskThreshold";
inline constexpr char PSZ_CLUSTER_NET_THRESHOLD[] = "NetThreshold";
inline constexpr char PSZ_CLUSTER_CHANNEL_THRESHOLD[] = "ChannelThreshold";

inline constexpr CDocumentKey CLUSTER_THRESHOLD_KEYS[] = {
    {PSZ_CLUSTER_DISK_THRESHOLD, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_NET_THRESHOLD, EKeyType::INTEGER, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_CHANNEL_THRESHOLD, EKeyType::INTEGER, EKeyNeed::REQUIRED},
};

/// The thresholds are written and not read; an array in their place refuses the document.
inline constexpr CDocumentKey CLUSTER_CONFIG_KEYS[] = {
    {PSZ_CLUSTER_LOAD_BALANCE, EKeyType::BOOLEAN, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_FAULT_SHIFT, EKeyType::BOOLEAN, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_LOAD_BALANCE_ONE_PERIOD, EKeyType::BOOLEAN, EKeyNeed::REQUIRED},
    {PSZ_CLUSTER_LOAD_BALANCE_THRESHOLD, EKeyType::OBJECT, EKeyNeed::OPTIONAL,
     CLUSTER_THRESHOLD_KEYS},
};

inline constexpr CDocumentKey CLUSTER_CONFIG_DOCUMENT{"", EKeyType::OBJECT, EKeyNeed::REQUIRED,
                                                      CLUSTER_CONFIG_KEYS};

/// The cluster's behaviour switches and load balance thresholds. The thresholds are written as an
/// object and never read back: they reach an object only through the setters.
class CClusterConfigZNodeInfo : public CBaseJsonObject {
public:
    bool IsLoadBalance() const { return m_bLoadBalance; }
    bool IsFaultShift() const { return m_bFaultShift; }
    bool IsLoadBalanceOnePeriod() const { return m_bLoadBalanceOnePeriod; }
    void SetLoadBalance(bool bLoadBalance) { m_bLoadBalance = bLoadBalance; }
    void SetFaultShift(bool bFaultShift) { m_bFaultShift = bFaultShift; }
    void SetLoadBalanceOnePeriod(bool bOnePeriod) { m_bLoadBalanceOnePeriod = bOnePeriod; }
    int GetLoadBalanceDiskThreshold() const { return m_iLoadBalanceDiskThreshold; }
    int GetLoadBalanceNetThreshold() const { return m_iLoadBalanceNetThreshold; }
    int GetLoadBalanceChannelThreshold() const { return m_iLoadBalanceChannelThreshold; }
    void SetLoadBalanceDiskThreshold(int iThreshold) { m_iLoadBalanceDiskThreshold = iThreshold; }
    void SetLoadBalanceNetThreshold(int iThreshold) { m_iLoadBalanceNetThreshold = iThreshold; }
    void SetLoadBalanceChannelThreshold(int iThreshold) {
        m_iLoadBalanceChannelThreshold = iThreshold;
    }

    /// Takes the three switches, all required. On failure the object keeps what it had, except
    /// that thresholds given as an array fail after the switches have been taken.
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

private:
    bool m_bLoadBalance = true;
    bool m_bFaultShift = true;
    bool m_bLoadBalanceOnePeriod = true;
    int m_iLoadBalanceDiskThreshold = 10;
    int m_iLoadBalanceNetThreshold = 10;
    int m_iLoadBalanceChannelThreshold = 10;
};
