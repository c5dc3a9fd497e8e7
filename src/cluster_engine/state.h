#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/input.h"
#include "cluster_engine/state_fields.h"
#include "framework_service/base_data.h"
#include "framework_service/cluster_cloud_storage_znode_info.h"
#include "framework_service/container_mgr.h"
#include "framework_service/resource_task.h"

/// What the engine knows beside the registries, each with its JSON form. Containers go by their
/// addresses, tasks by container type and id. Nothing is kept in an order that differs from run to
/// run.

/// A task and where it belongs.
struct CAssignedTask {
    CResourceTask task;
    uint64_t ullDecision = 0;  ///< that put it there
    std::string strAsker;      ///< the node that asked for it; empty for an adopted one
    std::string strCameFrom;   ///< the node that it left
    bool bBalanced = true;     ///< may a load balance move it?

    /// @name Not kept in the store
    /// @{
    uint32_t uiDocument = 0;
    uint32_t uiBytes = 0;        ///< in its document
    uint64_t ullHanded = 0;      ///< the first answer that it was handed with; 0: with none yet
    uint64_t ullHandedLast = 0;  ///< the last one
    int64_t iMissed = 0;     ///< since when its container has known of it and not had it; 0: has it
    bool bReported = false;  ///< in its container's newest report
    /// @}

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        As<CTableTask>(form, "task", self.task);
        form.Need("decision", self.ullDecision);
        form.May("asker", self.strAsker);
        form.May("from", self.strCameFrom);
        form.May("balanced", self.bBalanced, true);
        form.May("document", self.uiDocument);
        form.Need("bytes", self.uiBytes);
        form.May("handed", self.ullHanded);
        form.May("handed_last", self.ullHandedLast);
        form.May("missed", self.iMissed);
        form.May("reported", self.bReported);
    }
};

/// A task that a container may still have, though it ended or moved away.
struct CGoneTask {
    uint32_t uiDocument = 0;  ///< that notes it
    /// The last answer that handed it: it may still be taken up from there.
    uint64_t ullHanded = 0;
    bool bFormerLife = false;  ///< noted before this start

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("document", self.uiDocument);
        form.May("handed", self.ullHanded);
        form.May("former_life", self.bFormerLife);
    }
};

/// What a container is told until it has been heard.
struct CMessage {
    std::string strXml;
    uint64_t ullHanded = 0;  ///< the answer that it was first handed with; 0: with none yet

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("xml", self.strXml);
        form.May("handed", self.ullHanded);
    }
};

/// Work of a container that has to go elsewhere.
struct CShift {
    std::set<std::string> waiting;  ///< ids of the tasks that found no room
    std::string strCause;
    int64_t iStarted = 0;
    int64_t iPause = 0;
    int64_t iNextTry = 0;
    bool bReschedule = false;  ///< the container is usable: it is drained
    bool bGivenUp = false;     ///< tried no longer by time, only when room appears

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        ListOf<std::string>(form, "waiting", self.waiting);
        form.Need("cause", self.strCause);
        form.Need("started", self.iStarted);
        form.Need("pause", self.iPause);
        form.Need("next_try", self.iNextTry);
        form.May("reschedule", self.bReschedule);
        form.May("given_up", self.bGivenUp);
    }
};

/// One container of the cluster.
struct CContainerRecord {
    std::map<std::string, CAssignedTask> tasks;  ///< by id: what it is to do
    std::map<std::string, CGoneTask> gone;       ///< not yet heard to be dropped
    std::set<std::string> foreign;  ///< in its newest report, and another container has it
    std::vector<uint32_t> documentBytes;
    std::set<uint32_t> unreadableDocuments;  ///< what stands there it may have to do too

    int64_t iLastReport = 0;
    bool bReported = false;  ///< since settling began, or it joined
    bool bReportedTasks = false;
    bool bSilent = false;
    bool bFaultMark = false;
    bool bShifted = false;            ///< since it fell silent
    bool bAnyMissed = false;          ///< it reports without a task that it knows of
    std::vector<int64_t> fellSilent;  ///< when, within the time that counts
    int64_t iUnsteadyUntil = 0;       ///< gets nothing new before; 0: steady
    bool bRemoved = false;            ///< its member status
    bool bDraining = false;
    std::deque<CMessage> messages;
    CFigures total;  ///< as last reported
    CFigures used;
    std::vector<CFigures> samples;  ///< that the library has, the newest last

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("tasks", self.tasks);
        form.Need("gone", self.gone);
        ListOf<std::string>(form, "foreign", self.foreign);
        form.May("document_bytes", self.documentBytes);
        ListOf<uint32_t>(form, "unreadable", self.unreadableDocuments);
        form.Need("last_report", self.iLastReport);
        form.May("reported", self.bReported);
        form.May("reported_tasks", self.bReportedTasks);
        form.May("silent", self.bSilent);
        form.May("fault_mark", self.bFaultMark);
        form.May("shifted", self.bShifted);
        form.May("any_missed", self.bAnyMissed);
        form.May("fell_silent", self.fellSilent);
        form.May("unsteady_until", self.iUnsteadyUntil);
        form.May("removed", self.bRemoved);
        form.May("draining", self.bDraining);
        ListOf<CMessage>(form, "messages", self.messages);
        form.May("total", self.total);
        form.May("used", self.used);
        form.May("samples", self.samples);
    }
};

struct CNodeRecord {
    int64_t iLastReport = 0;
    int64_t iEntered = 0;  ///< when the library's entry was made
    bool bSilent = false;
    std::vector<CFigures> samples;  ///< that the library has: the newest, the second, the third

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("last_report", self.iLastReport);
        form.Need("entered", self.iEntered);
        form.May("silent", self.bSilent);
        form.May("samples", self.samples);
    }
};

/// The member status that an input gave a node: it counts more than the cluster document's.
struct CMember {
    EMemberStatus eStatus = EMemberStatus::NORMAL;
    bool bDraining = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("status", self.eStatus);
        form.May("draining", self.bDraining);
    }
};

/// A container type whose shifts are held since too many fell silent together.
struct CHold {
    int64_t iSince = 0;
    bool bReleased = false;  ///< until no more than the share is silent

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("since", self.iSince);
        form.May("released", self.bReleased);
    }
};

/// A node's share of a request for cloud storage, or for less, that no report of it shows yet.
struct CStoragePending {
    std::string strNodeId;
    std::map<std::string, int64_t> sizes;  ///< by pool
    std::string strXml;                    ///< what the node is sent, until it has heard it
    bool bReleased = false;
    int64_t iUntil = 0;
    uint64_t ullHanded = 0;  ///< the answer that it was first handed with; 0: with none yet

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("node", self.strNodeId);
        form.Need("sizes", self.sizes);
        form.Need("xml", self.strXml);
        form.May("released", self.bReleased);
        form.Need("until", self.iUntil);
        form.May("handed", self.ullHanded);
    }
};

/// An NVR of one of the library's lists for high-speed downloads, which cannot be read there.
struct CNvrRecord {
    std::string strNvr;
    int64_t iTime = 0;
    int32_t iTotal = 0;
    int32_t iUsed = 0;
    int32_t iFree = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("nvr", self.strNvr);
        form.Need("time", self.iTime);
        form.Need("total", self.iTotal);
        form.Need("used", self.iUsed);
        form.Need("free", self.iFree);
    }
};

struct CClusterState {
    bool bLoaded = false;
    bool bStoreAway = false;  ///< and told
    int64_t iNow = 0;
    int64_t iLastTick = 0;     ///< as its shell said; 0: none since the load
    int64_t iTickStep = 0;     ///< from the tick before it; not above 0: the clock went back
    int64_t iClockBehind = 0;  ///< the shell's clock, behind iNow
    uint64_t ullAnswers = 0;
    uint64_t ullDecision = 0;         ///< as the last call left it
    uint64_t ullHighestDecision = 0;  ///< that any assignment has borne

    std::map<CContainerAddr, CContainerRecord> containers;
    std::map<std::string, CNodeRecord> nodes;
    std::map<std::string, CContainerRecord> homeless;  ///< by type: work whose container left
    std::set<CContainerAddr> withForeign;              ///< those with foreign tasks
    std::map<CContainerAddr, CShift> shifts;
    std::map<std::string, CShift> homelessShifts;  ///< by type
    std::map<std::string, CHold> holds;            ///< by type
    std::map<std::string, int64_t> roomTries;      ///< by type: the last by a report
    std::set<std::string> roomAppeared;            ///< types whose waiting work is to be tried
    std::set<std::string> roomReported;  ///< those that a report speaks for, as often as allowed
    bool bSettled = false;
    int64_t iNextBalance = 0;
    bool bBalancedOnce = false;
    std::map<std::string, CMember> members;  ///< by node: those whose status an input set
    bool bMembersDirty = false;
    /// By node: types that left, or did not get to join, and may stand in the cluster document.
    std::map<std::string, std::set<std::string>> unflushed;
    std::vector<CStoragePending> storagePending;
    std::map<std::string, CloudStorageInfo> storageKept;  ///< entries that a save may have lost
    std::set<CContainerAddr> storageUnsaved;  ///< reported an allocation that is not in the store
    std::map<std::string, CResourceTask> standardTasks;
    std::vector<CNvrRecord> nvrs;         ///< in the order of the library's list
    std::vector<CNvrRecord> pictureNvrs;  ///< those for pictures

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("store_away", self.bStoreAway);
        form.Need("now", self.iNow);
        form.Need("last_tick", self.iLastTick);
        form.Need("tick_step", self.iTickStep);
        form.Need("clock_behind", self.iClockBehind);
        form.Need("answers", self.ullAnswers);
        form.Need("decision", self.ullDecision);
        form.Need("highest_decision", self.ullHighestDecision);
        ListOf<CPlaced<CContainerRecord>>(form, "containers", self.containers);
        form.Need("nodes", self.nodes);
        form.Need("homeless", self.homeless);
        ListOf<CPlace>(form, "with_foreign", self.withForeign);
        ListOf<CPlaced<CShift>>(form, "shifts", self.shifts);
        form.Need("homeless_shifts", self.homelessShifts);
        form.Need("holds", self.holds);
        form.Need("room_tries", self.roomTries);
        ListOf<std::string>(form, "room_appeared", self.roomAppeared);
        ListOf<std::string>(form, "room_reported", self.roomReported);
        form.Need("settled", self.bSettled);
        form.Need("next_balance", self.iNextBalance);
        form.Need("balanced_once", self.bBalancedOnce);
        form.Need("members", self.members);
        form.May("storage_pending", self.storagePending);
        ListOf<CNamed<CStorageEntry, CloudStorageInfo>>(form, "storage_kept", self.storageKept);
        ListOf<CPlace>(form, "storage_unsaved", self.storageUnsaved);
        ListOf<CNamed<CTableTask, CResourceTask>>(form, "standard_tasks", self.standardTasks);
        form.May("nvrs", self.nvrs);
        form.May("picture_nvrs", self.pictureNvrs);
    }
};
