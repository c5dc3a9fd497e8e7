#include "common_service/global_config.h"

#include <mutex>

#include "reference_host/host_settings.h"

namespace {

struct CHandedOver {
    std::mutex mutex;
    CHandedOverSettings settings;  ///< guarded by mutex
};

CHandedOver& HandedOver() {
    static CHandedOver& handedOver = *new CHandedOver;
    return handedOver;
}

template <typename Value>
void Set(Value CHandedOverSettings::*pSetting, Value value) {
    const std::lock_guard<std::mutex> guard(HandedOver().mutex);
    HandedOver().settings.*pSetting = value;
}

}  // namespace

CHandedOverSettings GetHandedOverSettings() {
    const std::lock_guard<std::mutex> guard(HandedOver().mutex);
    return HandedOver().settings;
}

CGlobalConfig& CGlobalConfig::Instance() {
    static CGlobalConfig instance;
    return instance;
}

void CGlobalConfig::SetLoadBalance(bool bLoadBalance) {
    Set(&CHandedOverSettings::bLoadBalance, bLoadBalance);
}

void CGlobalConfig::SetFaultShift(bool bFaultShift) {
    Set(&CHandedOverSettings::bFaultShift, bFaultShift);
}

void CGlobalConfig::SetLoadBalanceOnePeriod(bool bOnePeriod) {
    Set(&CHandedOverSettings::bLoadBalanceOnePeriod, bOnePeriod);
}

void CGlobalConfig::SetLoadBalanceDiskThreshold(int iThreshold) {
    Set(&CHandedOverSettings::iLoadBalanceDiskThreshold, iThreshold);
}

void CGlobalConfig::SetLoadBalanceNetThreshold(int iThreshold) {
    Set(&CHandedOverSettings::iLoadBalanceNetThreshold, iThreshold);
}

void CGlobalConfig::SetLoadBalanceChannelThreshold(int iThreshold) {
    Set(&CHandedOverSettings::iLoadBalanceChannelThreshold, iThreshold);
}

void CGlobalConfig::SetClusterForwardType(int iForwardType) {
    Set(&CHandedOverSettings::iClusterForwardType, iForwardType);
}
