#pragma once

#include <list>
#include <string>

class [[gnu::visibility("default")]] CFileCommon {
public:
    /// Appends the bare names of the files in strDir, sorted bytewise; folders are left out, links
    /// are followed. The order decides which of two plug-ins wins a claim. Returns 0, or ORVA_FAIL
    /// with fileList untouched when the directory cannot be read.
    static int GetDirFileList(const std::string& strDir, std::list<std::string>& fileList);
};
