#include "reference_host/host_settings.h"

#include "common_service/directory.h"
#include "common_service/global_config.h"
#include "common_service/tarn_conf.h"
#include "common_service/tarn_def.h"

namespace {

CHostSettings& Settings() {
    static CHostSettings& settings = *new CHostSettings;
    return settings;
}

int GetIfSet(const std::string& strSource, std::string& strDir) {
    if (strSource.empty()) {
        return ORVA_FAIL;
    }
    strDir = strSource;
    return ORVA_SUCCEED;
}

}  // namespace

void Configure(const CHostSettings& settings) {
    Settings() = settings;
}

const CHostSettings& GetHostSettings() {
    return Settings();
}

CTARNConf CTARNConf::m_oConf;

std::string CTARNConf::GetCstClusterCode() {
    return Settings().strClusterCode;
}

std::string CGlobalConfig::GetLocalIp() {
    return Settings().strLocalIp;
}

namespace HALD {

int get_lib_directory(std::string& strDir) {
    return GetIfSet(Settings().strLibDir, strDir);
}

int get_config_directory(std::string& strDir) {
    return GetIfSet(Settings().strConfigDir, strDir);
}

}  // namespace HALD
