#include "common_service/net_factory.h"

#include <map>
#include <mutex>
#include <unordered_set>

#include "common_service/tarn_def.h"
#include "reference_host/accepted_links.h"

namespace {

struct CAcceptedLinks {
    std::mutex mutex;
    std::map<int, std::unordered_set<std::string>> mapAddress;  ///< by link type; guarded by mutex
};

CAcceptedLinks& Links() {
    static CAcceptedLinks& links = *new CAcceptedLinks;
    return links;
}

}  // namespace

bool IsAcceptedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(Links().mutex);
    const auto it = Links().mapAddress.find(iType);
    return it != Links().mapAddress.end() && it->second.count(strIp) != 0;
}

void ForgetAcceptedLinks() {
    const std::lock_guard<std::mutex> guard(Links().mutex);
    Links().mapAddress.clear();
}

namespace HALD {

CNetFactory& CNetFactory::Instance() {
    static CNetFactory instance;
    return instance;
}

int CNetFactory::AddValidatedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(Links().mutex);
    Links().mapAddress[iType].insert(strIp);
    return ORVA_SUCCEED;
}

int CNetFactory::DelValidatedLink(const std::string& strIp, int iType) {
    const std::lock_guard<std::mutex> guard(Links().mutex);
    Links().mapAddress[iType].erase(strIp);
    return ORVA_SUCCEED;
}

}  // namespace HALD
