#include "common_service/net_factory.h"

#include "common_service/tarn_def.h"

namespace HALD {

CNetFactory& CNetFactory::Instance() {
    static CNetFactory& instance = *new CNetFactory;
    return instance;
}

int CNetFactory::AddValidatedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_mapAddress[iType].insert(strIp);
    return ORVA_SUCCEED;
}

int CNetFactory::DelValidatedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_mapAddress[iType].erase(strIp);
    return ORVA_SUCCEED;
}

bool CNetFactory::IsValidatedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto it = m_mapAddress.find(iType);
    return it != m_mapAddress.end() && it->second.count(strIp) != 0;
}

void CNetFactory::Clear() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_mapAddress.clear();
}

}  // namespace HALD
