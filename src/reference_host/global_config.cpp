#include "common_service/global_config.h"

CGlobalConfig& CGlobalConfig::Instance() {
    static CGlobalConfig& instance = *new CGlobalConfig;
    return instance;
}

void CGlobalConfig::SetLoadBalance(bool bLoadBalance) {
    m_bLoadBalance = bLoadBalance;
}

void CGlobalConfig::SetFaultShift(bool bFaultShift) {
    m_bFaultShift = bFaultShift;
}

void CGlobalConfig::SetLoadBalanceOnePeriod(bool bOnePeriod) {
    m_bLoadBalanceOnePeriod = bOnePeriod;
}

void CGlobalConfig::SetLoadBalanceDiskThreshold(int iThreshold) {
    m_iLoadBalanceDiskThreshold = iThreshold;
}

void CGlobalConfig::SetLoadBalanceNetThreshold(int iThreshold) {
    m_iLoadBalanceNetThreshold = iThreshold;
}

void CGlobalConfig::SetLoadBalanceChannelThreshold(int iThreshold) {
    m_iLoadBalanceChannelThreshold = iThreshold;
}

void CGlobalConfig::SetClusterForwardType(int iForwardType) {
    m_iClusterForwardType = iForwardType;
}

std::string CGlobalConfig::GetLocalIp() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_strLocalIp;
}

bool CGlobalConfig::IsLoadBalance() const {
    return m_bLoadBalance;
}

bool CGlobalConfig::IsFaultShift() const {
    return m_bFaultShift;
}

bool CGlobalConfig::IsLoadBalanceOnePeriod() const {
    return m_bLoadBalanceOnePeriod;
}

int CGlobalConfig::GetLoadBalanceDiskThreshold() const {
    return m_iLoadBalanceDiskThreshold;
}

int CGlobalConfig::GetLoadBalanceNetThreshold() const {
    return m_iLoadBalanceNetThreshold;
}

int CGlobalConfig::GetLoadBalanceChannelThreshold() const {
    return m_iLoadBalanceChannelThreshold;
}

int CGlobalConfig::GetClusterForwardType() const {
    return m_iClusterForwardType;
}

void CGlobalConfig::SetLocalIp(const std::string& strIp) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_strLocalIp = strIp;
}
