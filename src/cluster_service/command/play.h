#pragma once

#include <cstdint>
#include <functional>
#include <ostream>
#include <string>

#include "cluster_engine/host.h"
#include "command/stage.h"
#include "shell/journal_files.h"

/// What the command line says about playing a file.
struct CPlayOptions {
    std::string strFile;
    CJournalSettings journal;  ///< a new file for what is played
    bool bDryRun = false;      ///< the store stays as it is
    bool bJson = false;        ///< for programs

    /// Asked before the store is changed; an exit code other than EXIT_DONE ends it there.
    std::function<int()> mayChange = nullptr;
};

/// Loads the cluster as a service does, under the time of the file's first line, plays the file to
/// it (play/story.h) and shows what happens, the containers before and after. The store is written
/// as a service would, or with a dry run the stage alone; a journal that begins with a state is
/// played to that and to its own texts, and the store is left alone. Nothing is loaded when the
/// file has a fault: it is said with its line. Returns an exit code: EXIT_REFUSED when something
/// was not as the file expects.
int Play(CStage& stage, IStepClock& clock, const CPlayOptions& options, std::ostream& output,
         std::ostream& errors);
