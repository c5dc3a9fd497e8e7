#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <map>
#include <string>

#include "common_service/tarn_def.h"
#include "framework_service/plugin_mgr.h"
#include "plugins/plugin_folder.h"
#include "support/recording_logger.h"

// Ends with plug-ins that were loaded on the road that the argument names. What they were told
// until then is checked after everything that the library does at exit.

namespace {

CRecordingLogger& TheLogger() {
    static auto* const pLogger = new CRecordingLogger;
    return *pLogger;
}

int Load() {
    return CPluginMgr::Instance().LoadAllPlugin();
}

int UnLoad() {
    return CPluginMgr::Instance().UnLoadAllPlugin();
}

struct CRoad {
    int (*pRun)();
    std::ptrdiff_t iUnInits;  ///< of each plug-in that has its name
};

const std::map<std::string, CRoad> ROADS = {
    {"loaded", {[] { return Load(); }, 2}},
    {"unloaded", {[] { return Load() + UnLoad(); }, 2}},
    {"reloaded", {[] { return Load() + UnLoad() + Load(); }, 4}},
    {"loaded_twice", {[] { return Load() + Load(); }, 2}},
};

const CRoad* g_pRoad = nullptr;

void CheckUnInits() {
    const std::map<std::string, std::ptrdiff_t> expected = {{"alpha", g_pRoad->iUnInits},
                                                            {"alpha_twin", 0},
                                                            {"beta", g_pRoad->iUnInits},
                                                            {"heap", g_pRoad->iUnInits},
                                                            {"throws_UnInit", g_pRoad->iUnInits}};
    for (const auto& [strPlugin, iExpected] : expected) {
        const auto lines = TheLogger().GetLines();
        const auto iCount =
            std::count(lines.begin(), lines.end(), Trace(strPlugin, "UnInit", "called"));
        if (iCount != iExpected) {
            std::cerr << strPlugin << ": UnInit came " << iCount << " times" << std::endl;
            std::_Exit(EXIT_FAILURE);
        }
    }
}

}  // namespace

int main(int iArguments, char** ppszArguments) {
    const auto it = iArguments == 2 ? ROADS.find(ppszArguments[1]) : ROADS.end();
    if (it == ROADS.end()) {
        return EXIT_FAILURE;
    }
    g_pRoad = &it->second;
    OMAdapter::getInstance().setLogger(&TheLogger());
    std::atexit(CheckUnInits);

    const CPluginFolder folder;
    for (const char* pszFixture : {"alpha", "alpha_twin", "beta", "heap", "throws_UnInit"}) {
        folder.Add(pszFixture, std::string(pszFixture) + ".so");
    }
    return g_pRoad->pRun() == ORVA_SUCCEED ? EXIT_SUCCESS : EXIT_FAILURE;
}
