#pragma once

#include <string>

#include "common_service/directory.h"
#include "common_service/tarn_def.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

/// The folder that every plug-in lies in. Returns 0, or the host's code with strDir empty.
inline int GetPluginFolder(std::string& strDir) {
    std::string strLibDir;
    const int iRet = HALD::get_lib_directory(strLibDir);
    strDir = iRet == ORVA_SUCCEED ? strLibDir + "/plugins" : std::string();
    return iRet;
}

}  // namespace framework_internal
