#include "common_service/directory.h"

#include "common_service/tarn_def.h"

namespace {

std::string& LibDirectory() {
    static std::string& strDir = *new std::string;
    return strDir;
}

std::string& ConfigDirectory() {
    static std::string& strDir = *new std::string;
    return strDir;
}

int GetIfSet(const std::string& strSource, std::string& strDir) {
    if (strSource.empty()) {
        return ORVA_FAIL;
    }
    strDir = strSource;
    return ORVA_SUCCEED;
}

}  // namespace

namespace HALD {

int get_lib_directory(std::string& strDir) {
    return GetIfSet(LibDirectory(), strDir);
}

int get_config_directory(std::string& strDir) {
    return GetIfSet(ConfigDirectory(), strDir);
}

void set_lib_directory(const std::string& strDir) {
    LibDirectory() = strDir;
}

void set_config_directory(const std::string& strDir) {
    ConfigDirectory() = strDir;
}

}  // namespace HALD
