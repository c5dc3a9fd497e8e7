#pragma once

#include <string>

#include "support/temp_dir.h"

/// A library directory of its own for one test, with the folder that plug-ins lie in. The host is
/// told of it.
class CPluginFolder {
public:
    CPluginFolder();

    /// Copies a fixture there, under a name that decides its place in the order of loading. Each
    /// copy is a library of its own for the loader. Returns its path.
    std::string Add(const std::string& strFixture, const std::string& strFileName) const;

    const std::string& GetLibDir() const { return m_dir.GetPath(); }

    /// The path of a file in the folder.
    std::string File(const std::string& strFileName) const;

private:
    CTempDir m_dir;
};

/// Has the process mapped that file as a library?
bool IsMapped(const std::string& strPath);
