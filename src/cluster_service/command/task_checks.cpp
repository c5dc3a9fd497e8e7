#include <algorithm>
#include <cstdint>
#include <filesystem>
#include <set>
#include <vector>

#include "command/checks.h"
#include "command/document_file.h"
#include "common_service/directory.h"
#include "common_service/xml.h"
#include "common_service/xml_common.h"

namespace {

namespace fs = std::filesystem;

/// The files that a load of the standard tasks reads, in the order of their names.
std::vector<fs::path> TaskFiles() {
    std::string strConfigDir;
    HALD::get_config_directory(strConfigDir);
    std::vector<fs::path> files;
    std::error_code error;
    for (fs::directory_iterator it(fs::path(strConfigDir) / "taskmodel", error), end;
         !error && it != end; it.increment(error)) {
        if (it->path().extension() == ".xml") {
            files.push_back(it->path());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

/// Why a load takes no model, or not every one, from the file; empty if it takes all.
std::string FindTaskFault(const fs::path& file, std::set<std::string>& names) {
    std::error_code error;
    const std::uintmax_t size = fs::file_size(file, error);
    std::string strText;
    const std::string strError = ReadTextFile(file, error ? 0 : size, strText);
    if (!strError.empty()) {
        return "cannot be read: " + strError;
    }
    PELU::CXml xml(nullptr);
    if (!xml.Parse(strText.c_str())) {
        return "is no XML document";
    }
    if (!xml.FindElemEx("TaskList")) {
        return "has no element \"TaskList\" at its root";
    }
    if (!xml.FindElem("Task")) {
        return "has no element \"Task\" in its \"TaskList\"";
    }
    std::size_t count = 0;
    do {
        ++count;
        std::string strName;
        if (!CXmlCommon::Instance().GetElemValue(xml, "Task", strName, false)) {
            return "has no name in its task " + std::to_string(count) +
                   ": it and those behind it are not loaded";
        }
        names.insert(strName);
    } while (xml.NextElem());
    return "";
}

}  // namespace

void CheckTasks(const CCheckedStore&, Findings& findings) {
    std::set<std::string> names;
    const std::vector<fs::path> files = TaskFiles();
    for (const fs::path& file : files) {
        const std::string strWhat = FindTaskFault(file, names);
        if (!strWhat.empty()) {
            findings.push_back({EWeight::ERROR,
                                "taskmodel/" + file.filename().string(),
                                {std::nullopt, "", strWhat}});
        }
    }
    if (!files.empty() && names.count("DEFAULT") == 0) {
        findings.push_back(
            {EWeight::WARNING,
             "taskmodel",
             {std::nullopt, "",
              "has no task \"DEFAULT\": a task without a model of its own has none"}});
    }
}
