#pragma once

#include <cstddef>
#include <cstdint>

#include "cluster_engine/json_fields.h"

/// What the rules go by. Times are in seconds.
struct CEngineSettings {
    int64_t iSilence = 90;          ///< who has not reported for longer is silent
    int64_t iNobodyWatched = 10;    ///< ticks further apart than that begin settling anew
    uint32_t uiHoldContainers = 3;  ///< so many silent ones of a type hold its shifts, if they are
    uint32_t uiHoldOneIn = 3;       ///< more than one in so many of the type
    int64_t iHoldSilences = 10;     ///< a hold and an unsteady mark end after so many silence times
    int64_t iTakeUp = 300;          ///< a task that is not taken up for that long goes elsewhere
    int64_t iFirstPause = 10;       ///< before work that waits is tried again; it doubles
    int64_t iLongestPause = 600;
    int64_t iTriesEnd = 86400;  ///< work that waited for so long is no longer tried by time
    int64_t iRoomPause = 10;    ///< reports let a type's waiting work be tried no more often
    int64_t iBalancePeriod = 300;
    uint32_t uiBalanceMoves = 10;   ///< of what a balance decides, so much is carried out
    int64_t iStorageCounts = 60;    ///< an allocation that is not reported counts for so long
    uint32_t uiPluginFailures = 3;  ///< in a row, and the plug-in is out of service
    uint32_t uiTasksPerJob = 10000;
    uint32_t uiTasksPerContainer = 2000;
    uint32_t uiListLength = 10000;  ///< of any list in an input
    uint32_t uiXmlBytes = 16777216;
    uint32_t uiDecisionsKept = 10;  ///< of a task
    uint32_t uiEndedKept = 10000;   ///< tasks that are nowhere any more, for their decisions

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        const CEngineSettings defaults;
        form.May("silence", self.iSilence, defaults.iSilence);
        form.May("nobody_watched", self.iNobodyWatched, defaults.iNobodyWatched);
        form.May("hold_containers", self.uiHoldContainers, defaults.uiHoldContainers);
        form.May("hold_one_in", self.uiHoldOneIn, defaults.uiHoldOneIn);
        form.May("hold_silences", self.iHoldSilences, defaults.iHoldSilences);
        form.May("take_up", self.iTakeUp, defaults.iTakeUp);
        form.May("first_pause", self.iFirstPause, defaults.iFirstPause);
        form.May("longest_pause", self.iLongestPause, defaults.iLongestPause);
        form.May("tries_end", self.iTriesEnd, defaults.iTriesEnd);
        form.May("room_pause", self.iRoomPause, defaults.iRoomPause);
        form.May("balance_period", self.iBalancePeriod, defaults.iBalancePeriod);
        form.May("balance_moves", self.uiBalanceMoves, defaults.uiBalanceMoves);
        form.May("storage_counts", self.iStorageCounts, defaults.iStorageCounts);
        form.May("plugin_failures", self.uiPluginFailures, defaults.uiPluginFailures);
        form.May("tasks_per_job", self.uiTasksPerJob, defaults.uiTasksPerJob);
        form.May("tasks_per_container", self.uiTasksPerContainer, defaults.uiTasksPerContainer);
        form.May("list_length", self.uiListLength, defaults.uiListLength);
        form.May("xml_bytes", self.uiXmlBytes, defaults.uiXmlBytes);
        form.May("decisions_kept", self.uiDecisionsKept, defaults.uiDecisionsKept);
        form.May("ended_kept", self.uiEndedKept, defaults.uiEndedKept);
    }
};
