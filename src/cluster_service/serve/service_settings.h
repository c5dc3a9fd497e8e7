#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "cluster_engine/settings.h"
#include "shell/journal_files.h"

/// What a service is started with.
struct CServiceSettings {
    std::string strListen = "127.0.0.1:8390";
    CEngineSettings engine;
    int64_t iPluginMilliseconds = 2000;  ///< a call of a plug-in may take, beside its store calls
    std::size_t uiQueueInputs = 10000;   ///< may wait for the engine
    CJournalSettings journal;
};
