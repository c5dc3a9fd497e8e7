#pragma once

#include <string>

/// A fresh folder for one test, gone with everything in it when the object goes.
class CTempDir {
public:
    CTempDir();
    ~CTempDir();
    CTempDir(const CTempDir&) = delete;
    CTempDir& operator=(const CTempDir&) = delete;

    const std::string& GetPath() const { return m_strPath; }

    /// The path of a file in the folder; WriteFile also writes it.
    std::string File(const std::string& strName) const;
    std::string WriteFile(const std::string& strName, const std::string& strText) const;

private:
    std::string m_strPath;
};
