#include "common_service/file_common.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "common_service/tarn_def.h"

int CFileCommon::GetDirFileList(const std::string& strDir, std::list<std::string>& fileList) {
    namespace fs = std::filesystem;
    std::vector<std::string> names;
    std::error_code error;
    for (fs::directory_iterator it(strDir, error), end; !error && it != end; it.increment(error)) {
        // A link that leads nowhere is no file, and no reason to fail.
        std::error_code linkError;
        if (it->is_regular_file(linkError)) {
            names.push_back(it->path().filename().string());
        }
    }
    if (error) {
        return ORVA_FAIL;
    }
    std::sort(names.begin(), names.end());
    fileList.insert(fileList.end(), names.begin(), names.end());
    return ORVA_SUCCEED;
}
