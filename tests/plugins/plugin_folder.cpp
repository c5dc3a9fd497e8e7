#include "plugins/plugin_folder.h"

#include <dlfcn.h>

#include <filesystem>

#include "support/reconfigure.h"

CPluginFolder::CPluginFolder() {
    std::filesystem::create_directory(m_dir.File("plugins"));
    Reconfigure(&CHostSettings::strLibDir, m_dir.GetPath());
}

std::string CPluginFolder::Add(const std::string& strFixture,
                               const std::string& strFileName) const {
    const std::string strPath = File(strFileName);
    std::filesystem::copy_file(PLUGIN_FIXTURE_DIR "/" + strFixture + ".so", strPath);
    return strPath;
}

std::string CPluginFolder::File(const std::string& strFileName) const {
    return m_dir.File("plugins/" + strFileName);
}

bool IsMapped(const std::string& strPath) {
    void* const pHandle = dlopen(strPath.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (pHandle != nullptr) {
        dlclose(pHandle);
    }
    return pHandle != nullptr;
}
