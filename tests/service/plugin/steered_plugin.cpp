#include <chrono>
#include <cstdlib>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

#include "common/schedule_plugin.h"
#include "common_service/tarn_def.h"

namespace {

constexpr unsigned int JOB_STEERED = 9001;
constexpr char CONTAINER_TYPE_IMAGE_EXPORT[] = "ImgExport";

/// What the file says that STEERED_PLUGIN names: "well", or how a decision is to go wrong.
std::string Word() {
    const char* const pszFile = std::getenv("STEERED_PLUGIN");
    std::string strWord = "well";
    if (pszFile != nullptr) {
        std::ifstream(pszFile) >> strWord;
    }
    return strWord;
}

/// Schedules as the shipped plug-ins do, until a test makes it misbehave.
class CSteeredPlugin : public CSchedulePlugin {
public:
    CSteeredPlugin()
        : CSchedulePlugin({"steered",
                           CONTAINER_TYPE_IMAGE_EXPORT,
                           {},
                           {JOB_STEERED},
                           [](const CContainerLoad& load) {
                               return static_cast<double>(load.GetTaskCount());
                           }}) {}

    int TaskSchedule(const std::string& strNodeId, const std::list<CResourceTask>& resTaskList,
                     CTaskContainerMap& taskBindTable, unsigned long long& ullDecisionVerNum,
                     bool bReschedule) override {
        const std::string strWord = Word();
        if (strWord == "throw") {
            throw std::runtime_error("told to");
        }
        if (strWord == "lie") {
            for (const CResourceTask& task : resTaskList) {
                taskBindTable[task.GetTaskId()] =
                    CContainerAddr("nobody", CONTAINER_TYPE_IMAGE_EXPORT);
            }
            return ORVA_SUCCEED;
        }
        if (strWord == "slow") {
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
        while (Word() == "hang") {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        return CSchedulePlugin::TaskSchedule(strNodeId, resTaskList, taskBindTable,
                                             ullDecisionVerNum, bReschedule);
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CSteeredPlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
