#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "plugins/plugin_folder.h"
#include "support/registry_fixture.h"

/// What an action works with, beside the registries.
struct CScene {
    CMemoryStore& store;
    CRecordingLogger& logger;  ///< Clear() after a preparation, whose lines do not count
    const CPluginFolder& folder;
    std::string strDir;  ///< of libraries and of the configuration; its lines call it DIR
};

/// An action on a fresh host and every line that it writes, in order, as "LEVEL|file|function|
/// operation|code|text". A text with placeholders stands before what became of it: "n=%d|n=5".
struct CScenario {
    std::string strName;
    void (*pAct)(CScene& scene);
    std::vector<std::string> lines;
};

std::ostream& operator<<(std::ostream& stream, const CScenario& scenario);

/// The library's lines. An executable's test file instantiates it with a table.
class LogLines : public CRegistryTest, public ::testing::WithParamInterface<CScenario> {
protected:
    LogLines();
    ~LogLines() override;

    /// The lines of the action; without placeholders when the texts alone count.
    std::vector<std::string> LinesOf(const CScenario& scenario, bool bPlaceholders);

    const CPluginFolder m_folder;
};

/// The lines of the host and of the plug-ins, whose texts alone count.
class LogTexts : public LogLines {};
