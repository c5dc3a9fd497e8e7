#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "cluster_engine/forms.h"
#include "cluster_engine/json_fields.h"

/// Why an input, or a task of one, was refused. Each has a stable name and number.
enum class EFault {
    NONE,
    BAD_INPUT,
    TOO_MUCH,
    NOT_LOADED,
    UNKNOWN_NODE,
    UNKNOWN_CONTAINER,
    UNKNOWN_TASK,
    UNKNOWN_PLUGIN,
    UNKNOWN_ENTRY,
    NODE_KNOWN,
    NAMES_RUN_TOGETHER,
    NO_PLUGIN,
    PLUGIN_OUT_OF_SERVICE,
    PLUGIN_FAILED,
    PLUGIN_REFUSED,
    PLUGIN_BUSY,
    NO_ROOM,
    CANNOT_MOVE,
    NOT_PLACED_THERE,
    REFUSED_BY_RULE,
    STORE_FAILED,
    STORE_AWAY,
    DOCUMENT_UNREADABLE,
    DOCUMENT_FULL,
};

/// What is said of a fault.
struct CFaultText {
    const char* pszName;
    int iCode;
    const char* pszSentence;
    const char* pszRemedy;  ///< what to do
};

const CFaultText& TextOf(EFault eFault);

/// A fault as it is told.
struct CFaultForm {
    const CFaultText& text;
    const std::string& strAbout;  ///< may be empty

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.text.pszName);
        form.Need("code", self.text.iCode);
        form.Need("sentence", self.text.pszSentence);
        form.Need("remedy", self.text.pszRemedy);
        form.May("about", self.strAbout);
    }
};

enum class ETaskResult { PLACED, STAYS, MOVED, ENDED, WAITS, REFUSED };

template <>
struct CEnumNames<ETaskResult> {
    static constexpr const char* NAMES[] = {"placed", "stays", "moved",
                                            "ended",  "waits", "refused"};
};

/// What became of one task of an input.
struct CTaskResult {
    std::string strTaskId;
    ETaskResult eResult = ETaskResult::REFUSED;
    std::string strNodeId;  ///< where it is; empty when nowhere
    std::string strType;
    uint64_t ullDecision = 0;
    std::string strFault;  ///< the name of the fault of a refused one

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("task", self.strTaskId);
        form.Need("result", self.eResult);
        form.MayId("node", self.strNodeId);
        form.MayId("type", self.strType);
        form.May("decision", self.ullDecision);
        form.May("fault", self.strFault);
    }
};

/// Why a container may or may not take a task.
struct CReason {
    CPlaceForm container;
    bool bPossible = false;
    std::string strReason;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.container.strNodeId);
        form.Id("type", self.container.strType);
        form.Need("possible", self.bPossible);
        form.May("reason", self.strReason);
    }
};

/// One decision about a task.
struct CDecision {
    int64_t iTime = 0;
    std::string strBy;      ///< the rule
    std::string strNodeId;  ///< where to; empty when nowhere
    uint64_t ullDecision = 0;
    std::string strWhy;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("time", self.iTime);
        form.Need("by", self.strBy);
        form.MayId("node", self.strNodeId);
        form.May("decision", self.ullDecision);
        form.May("why", self.strWhy);
    }
};

/// What an input is answered. An input that is refused has changed nothing.
struct CAnswer {
    EFault eFault = EFault::NONE;
    std::string strAbout;   ///< what the fault is about: a name, a place in the input
    bool bInPart = false;   ///< some tasks are refused, the others hold
    bool bDurable = false;  ///< counts only after a commit that went well
    std::vector<CTaskResult> tasks;

    /// @name To a container that reported
    /// @{
    uint64_t ullNumber = 0;  ///< of this answer; the next report tells that it was seen
    std::vector<CTaskForm> takeUp;
    std::vector<std::string> drop;
    std::vector<std::string> messages;  ///< XML, as the plug-in made it
    /// @}

    std::string strNvr;                ///< the NVR of a high-speed request
    std::string strXml;                ///< the plug-in's own answer to a job
    std::vector<CReason> reasons;      ///< of an explanation
    std::vector<CDecision> decisions;  ///< the last of the task, the newest first

    static CAnswer Refuse(EFault eFault, std::string strAbout);

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.May("in_part", self.bInPart);
        form.May("tasks", self.tasks);
        form.May("number", self.ullNumber);
        form.May("take_up", self.takeUp);
        form.May("drop", self.drop);
        form.May("messages", self.messages);
        form.May("nvr", self.strNvr);
        form.May("xml", self.strXml);
        form.May("reasons", self.reasons);
        form.May("decisions", self.decisions);
    }
};

/// An answer as it is told: "result" ("done", "in_part" or "refused"), the fault of a refused one
/// under its key, and else what there is of the fields.
struct CAnswerForm {
    const CAnswer& answer;
    const char* pszFaultKey = "fault";

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        const CAnswer& answer = self.answer;
        const bool bRefused = answer.eFault != EFault::NONE;
        form.Need("result", bRefused ? "refused" : answer.bInPart ? "in_part" : "done");
        if (bRefused) {
            form.Need(self.pszFaultKey, CFaultForm{TextOf(answer.eFault), answer.strAbout});
        }
        CAnswer::Fields(form, answer);
    }
};

inline Json::Value AnswerToJson(const CAnswer& answer) {
    return ToJson(CAnswerForm{answer});
}
