#include "common_service/tarn_conf.h"

CTARNConf CTARNConf::m_oConf;

std::string CTARNConf::GetCstClusterCode() {
    return m_strClusterCode;
}

void CTARNConf::SetCstClusterCode(const std::string& strClusterCode) {
    m_strClusterCode = strClusterCode;
}
