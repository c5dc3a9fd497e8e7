#include "common_service/data/version_znode.h"

#include <json/writer.h>

#include <string>

#include "common_service/bounded_string.h"
#include "common_service/tarn_def.h"
#include "reference_host/strict_json.h"
#include "reference_host/version_keys.h"

namespace {

// isUInt64 alone holds for 1.0 too, which does not carry a 64-bit number in full.
bool IsVersionNumber(const Json::Value& value) {
    return value.type() != Json::realValue && value.isUInt64();
}

}  // namespace

int32_t CVersionZNode::ParseJson(const char* pszJson) {
    if (pszJson == nullptr) {
        return ORVA_DATA_INVALID;
    }
    Json::Value root;
    if (ParseStrictJson(pszJson, root) || !root.isObject()) {
        return ORVA_DATA_INVALID;
    }
    const Json::Value& decision = root[PSZ_DECISION_VER_NUM];
    const Json::Value& master = root[PSZ_MASTER_VER_NUM];
    if (!IsVersionNumber(decision) || !IsVersionNumber(master)) {
        return ORVA_DATA_INVALID;
    }
    m_ullDecisionVerNum = decision.asUInt64();
    m_ullMasterVerNum = master.asUInt64();
    return ORVA_SUCCEED;
}

int32_t CVersionZNode::ToJson(char* pszJson, uint32_t iMaxLen) {
    if (pszJson == nullptr) {
        return ORVA_FAIL;
    }
    Json::Value root;
    root[PSZ_DECISION_VER_NUM] = Json::UInt64{m_ullDecisionVerNum};
    root[PSZ_MASTER_VER_NUM] = Json::UInt64{m_ullMasterVerNum};
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    const std::string strText = Json::writeString(builder, root) + "\n";
    memset_s(pszJson, iMaxLen, 0, iMaxLen);
    if (iMaxLen != 0) {
        strncpy_s(pszJson, iMaxLen, strText.c_str(), iMaxLen - 1);
    }
    return ORVA_SUCCEED;
}

unsigned long long CVersionZNode::GetDecisionVerNum() {
    return m_ullDecisionVerNum;
}

void CVersionZNode::SetDecisionVerNum(unsigned long long ullDecisionVerNum) {
    m_ullDecisionVerNum = ullDecisionVerNum;
}

unsigned long long CVersionZNode::GetMasterVerNum() {
    return m_ullMasterVerNum;
}

void CVersionZNode::SetMasterVerNum(unsigned long long ullMasterVerNum) {
    m_ullMasterVerNum = ullMasterVerNum;
}
