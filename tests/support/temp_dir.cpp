#include "support/temp_dir.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <stdexcept>

CTempDir::CTempDir()
    : m_strPath((std::filesystem::temp_directory_path() / "framework_service_XXXXXX").string()) {
    if (mkdtemp(m_strPath.data()) == nullptr) {
        throw std::runtime_error("cannot make a folder like " + m_strPath);
    }
}

CTempDir::~CTempDir() {
    std::error_code error;
    std::filesystem::remove_all(m_strPath, error);
}

std::string CTempDir::File(const std::string& strName) const {
    return m_strPath + "/" + strName;
}

std::string CTempDir::WriteFile(const std::string& strName, const std::string& strText) const {
    const std::string strFile = File(strName);
    std::ofstream stream(strFile, std::ios::binary);
    if (!(stream << strText << std::flush)) {
        throw std::runtime_error("cannot write " + strFile);
    }
    return strFile;
}
