#pragma once

#include <cstdint>
#include <string>

#include "cluster_engine/json_fields.h"

enum class EEvent {
    LOADED,
    JOINED,
    LEFT,
    ONLINE,
    OFFLINE,
    UNSTEADY,
    STEADY,
    SETTLED,
    SETTLING,
    PLACED,
    REFUSED,
    ENDED,
    ADOPTED,
    HANDED_AGAIN,
    SHIFT_STARTED,
    SHIFTED,
    WAITS_FOR_ROOM,
    SHIFT_ENDED,
    SHIFT_GIVEN_UP,
    HELD,
    RELEASED,
    DRAINING,
    DRAINED,
    MEMBER_STATUS,
    BALANCED,
    BALANCED_ONCE,
    CG_CHANGED,
    PROMOTED,
    MASTER_VERSION,
    DOCUMENT_RELOADED,
    DOCUMENT_UNREADABLE,
    STORAGE_ALLOCATED,
    STORAGE_REDUCED,
    STORAGE_SAVED,
    PLUGIN_FAILED,
    PLUGIN_OUT,
    PLUGIN_READMITTED,
    DECISION_MOVED,
    STORE_FAILED,
    STORE_AWAY,
    STORE_BACK,
    STANDARD_TASKS,
};

template <>
struct CEnumNames<EEvent> {
    static constexpr const char* NAMES[] = {"loaded",
                                            "joined",
                                            "left",
                                            "online",
                                            "offline",
                                            "unsteady",
                                            "steady",
                                            "settled",
                                            "settling",
                                            "placed",
                                            "refused",
                                            "ended",
                                            "adopted",
                                            "handed_again",
                                            "shift_started",
                                            "shifted",
                                            "waits_for_room",
                                            "shift_ended",
                                            "shift_given_up",
                                            "held",
                                            "released",
                                            "draining",
                                            "drained",
                                            "member_status",
                                            "balanced",
                                            "balanced_once",
                                            "cg_changed",
                                            "promoted",
                                            "master_version",
                                            "document_reloaded",
                                            "document_unreadable",
                                            "storage_allocated",
                                            "storage_reduced",
                                            "storage_saved",
                                            "plugin_failed",
                                            "plugin_out",
                                            "plugin_readmitted",
                                            "decision_moved",
                                            "store_failed",
                                            "store_away",
                                            "store_back",
                                            "standard_tasks"};
};

/// Something that happened: when, to what, why, and by which decision. What does not apply is
/// empty or 0.
struct CEvent {
    EEvent eEvent = EEvent::LOADED;
    int64_t iTime = 0;
    std::string strNodeId;
    std::string strType;
    std::string strTaskId;  ///< when it is about one task
    uint32_t uiTasks = 0;   ///< when it is about tasks: how many
    std::string strFrom;    ///< the node that a task left
    std::string strCause;
    uint64_t ullDecision = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("event", self.eEvent);
        form.Need("time", self.iTime);
        form.MayId("node", self.strNodeId);
        form.MayId("type", self.strType);
        form.MayId("task", self.strTaskId);
        form.May("tasks", self.uiTasks);
        form.MayId("from", self.strFrom);
        form.May("cause", self.strCause);
        form.May("decision", self.ullDecision);
    }
};

/// Hears of what happened, in its order, when it has been committed. Called on the engine's thread.
class IEventSink {
public:
    virtual ~IEventSink() = default;
    virtual void Take(const CEvent& event) = 0;
};
