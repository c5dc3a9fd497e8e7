#pragma once

#include "common_service/data/communication_data.h"

/// The two version numbers of the cluster as one document. Its JSON form belongs to the host; it
/// carries both numbers in full and fits a buffer of 512 bytes.
class [[gnu::visibility("default")]] CVersionZNode : public CBaseJsonObject {
public:
    int32_t ParseJson(const char* pszJson) override;
    int32_t ToJson(char* pszJson, uint32_t iMaxLen) override;

    unsigned long long GetDecisionVerNum();
    void SetDecisionVerNum(unsigned long long ullDecisionVerNum);
    unsigned long long GetMasterVerNum();
    void SetMasterVerNum(unsigned long long ullMasterVerNum);

private:
    unsigned long long m_ullDecisionVerNum = 0;
    unsigned long long m_ullMasterVerNum = 0;
};
