#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "cluster_engine/forms.h"
#include "cluster_engine/json_fields.h"

/// All that changes a cluster, one struct a kind. NAME is what the kind is called in JSON.

/// @name Reports
/// @{

/// What a node reports of itself.
struct CNodeReport {
    static constexpr char NAME[] = "node_report";
    std::string strNodeId;
    std::optional<CFigures> total;  ///< with used, or neither
    std::optional<CFigures> used;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.May("total", self.total);
        form.May("used", self.used);
    }
};

/// A task as its container reports it; what is left out is as it was given.
struct CReportedTask {
    std::string strTaskId;
    std::optional<std::string> name;
    std::optional<bool> movable;
    std::optional<CFigures> costs;
    std::optional<std::map<std::string, std::string>> privateInfo;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("id", self.strTaskId);
        form.May("name", self.name);
        form.May("movable", self.movable);
        form.May("costs", self.costs);
        form.May("private", self.privateInfo);
    }
};

/// One allocation of cloud storage, as its container reports it.
struct CAllocationForm {
    std::string strPool;
    int32_t iAllocated = 0;
    int32_t iUsed = 0;
    int32_t iFree = 0;
    std::string strDns;
    std::string strPath;

    bool operator==(const CAllocationForm& other) const {
        return strPool == other.strPool && iAllocated == other.iAllocated && iUsed == other.iUsed &&
               iFree == other.iFree && strDns == other.strDns && strPath == other.strPath;
    }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("pool", self.strPool);
        form.Need("allocated", self.iAllocated);
        form.May("used", self.iUsed);
        form.May("free", self.iFree);
        form.May("dns", self.strDns);
        form.May("path", self.strPath);
    }
};

/// What a container reports of itself and of all its tasks.
struct CContainerReport {
    static constexpr char NAME[] = "container_report";
    CPlaceForm container;
    std::optional<CFigures> total;  ///< with used, or neither
    std::optional<CFigures> used;
    std::optional<std::map<std::string, int32_t>> processes;  ///< name to PROCESS_STATE_*
    std::optional<std::vector<CReportedTask>> tasks;          ///< all of them
    uint64_t ullSeen = 0;      ///< the number of the last answer that the sender saw
    int32_t iMessageType = 0;  ///< of a cloud storage container; 0: an ordinary report
    std::vector<CAllocationForm> allocations;                      ///< of a cloud storage container
    std::optional<std::map<std::string, std::string>> parameters;  ///< extended ones, all of them

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.container.strNodeId);
        form.Id("type", self.container.strType);
        form.May("total", self.total);
        form.May("used", self.used);
        form.May("processes", self.processes);
        form.May("tasks", self.tasks);
        form.May("seen", self.ullSeen);
        form.May("message_type", self.iMessageType);
        form.May("allocations", self.allocations);
        form.May("parameters", self.parameters);
    }
};

/// The bandwidth and the services of one NVR.
struct CNvrReport {
    static constexpr char NAME[] = "nvr_report";
    std::string strNvr;
    int32_t iTotal = 0;
    int32_t iUsed = 0;
    int32_t iMu = 0;
    int32_t iImgu = 0;
    int32_t iScu = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("nvr", self.strNvr);
        form.Need("total", self.iTotal);
        form.Need("used", self.iUsed);
        form.May("mu", self.iMu);
        form.May("imgu", self.iImgu);
        form.May("scu", self.iScu);
    }
};
/// @}

/// @name Tasks
/// @{

/// A request in the plug-in's own XML.
struct CRequest {
    std::string strNodeId;  ///< the node that asks
    uint32_t uiJobType = 0;
    std::string strXml;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Need("job_type", self.uiJobType);
        form.Need("xml", self.strXml);
    }
};

/// Work to be placed.
struct CJob : CRequest {
    static constexpr char NAME[] = "job";
};

/// Where would the work be placed? Changes nothing.
struct CDryRun : CRequest {
    static constexpr char NAME[] = "dry_run";
};

/// Tasks that are over.
struct CEndTasks {
    static constexpr char NAME[] = "end_tasks";
    std::string strType;
    std::vector<std::string> tasks;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("type", self.strType);
        form.Ids("tasks", self.tasks);
    }
};

struct CManualMove {
    std::string strTaskId;
    std::string strFrom;  ///< the node that it leaves
    std::string strTo;    ///< the node that it enters

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("task", self.strTaskId);
        form.Id("from", self.strFrom);
        form.Id("to", self.strTo);
    }
};

/// An operator moves tasks between containers of one type.
struct CManualShift {
    static constexpr char NAME[] = "manual_shift";
    std::string strType;
    std::vector<CManualMove> moves;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("type", self.strType);
        form.Need("moves", self.moves);
    }
};

/// Which NVR serves a download of that bit rate?
struct CHighSpeed {
    static constexpr char NAME[] = "high_speed";
    int32_t iBitRate = 0;
    bool bPicture = false;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("bit_rate", self.iBitRate);
        form.May("picture", self.bPicture);
    }
};

/// Why is a task where it is, and what of the other containers? Changes nothing.
struct CExplain {
    static constexpr char NAME[] = "explain";
    std::string strType;
    std::string strTaskId;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("type", self.strType);
        form.Id("task", self.strTaskId);
    }
};
/// @}

/// @name Membership
/// @{

/// A node with its containers enters the cluster.
struct CJoin {
    static constexpr char NAME[] = "join";
    std::string strNodeId;
    std::string strIp;
    int32_t iIpType = 0;
    int32_t iNodeRole = 0;
    int32_t iDomainRole = 0;
    std::vector<std::string> types;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Need("ip", self.strIp);
        form.May("ip_type", self.iIpType);
        form.May("node_role", self.iNodeRole);
        form.May("domain_role", self.iDomainRole);
        form.MayIds("types", self.types);
    }
};

/// A container leaves, or with no type all of the node.
struct CLeave {
    static constexpr char NAME[] = "leave";
    std::string strNodeId;
    std::string strType;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.MayId("type", self.strType);
    }
};

/// A node takes no new work, and what may move leaves it.
struct CDrain {
    static constexpr char NAME[] = "drain";
    std::string strNodeId;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
    }
};

enum class EMemberStatus { NORMAL, REMOVED };

template <>
struct CEnumNames<EMemberStatus> {
    static constexpr const char* NAMES[] = {"normal", "removed"};
};

/// A removed node keeps its running tasks and gets no new one.
struct CMemberStatus {
    static constexpr char NAME[] = "member_status";
    std::vector<std::string> nodes;
    EMemberStatus eStatus = EMemberStatus::NORMAL;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Ids("nodes", self.nodes);
        form.Need("status", self.eStatus);
    }
};
/// @}

/// @name Records of the cluster
/// @{

struct CCgEntry {
    std::string strNodeId;
    std::string strFloatCode;
    std::string strFloatIp;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Id("float_code", self.strFloatCode);
        form.Need("float_ip", self.strFloatIp);
    }
};

struct CCgAdd : CCgEntry {
    static constexpr char NAME[] = "cg_add";
};

struct CCgUpdate : CCgEntry {
    static constexpr char NAME[] = "cg_update";
};

struct CCgRemove {
    static constexpr char NAME[] = "cg_remove";
    std::string strFloatCode;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("float_code", self.strFloatCode);
    }
};

/// The database on that node becomes the master.
struct CPromote {
    static constexpr char NAME[] = "promote";
    std::string strNodeId;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
    }
};

enum class EDocument {
    CLUSTER,
    CLOUD_STORAGE,
    CONFIGURATION,
    CG_LIST,
    CENTER_DB,
    MANAGER,
    VERSION
};

template <>
struct CEnumNames<EDocument> {
    static constexpr const char* NAMES[] = {
        "cluster", "cloud_storage", "configuration", "cg_list", "center_db", "manager", "version"};
};

/// A document of the store has changed.
struct CDocumentChanged {
    static constexpr char NAME[] = "document_changed";
    EDocument eDocument = EDocument::CLUSTER;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("document", self.eDocument);
    }
};
/// @}

/// @name Cloud storage
/// @{

/// A request for storage, in the plug-in's own XML.
struct CStorageAllocate {
    static constexpr char NAME[] = "storage_allocate";
    std::string strXml;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("xml", self.strXml);
    }
};

/// A request for less storage.
struct CStorageReduce {
    static constexpr char NAME[] = "storage_reduce";
    std::string strXml;
    int32_t iChangeSize = 0;
    int32_t iTotalSize = 0;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("xml", self.strXml);
        form.Need("change_size", self.iChangeSize);
        form.Need("total_size", self.iTotalSize);
    }
};

/// Writes what a node's cloud storage container has to the store.
struct CStorageSave {
    static constexpr char NAME[] = "storage_save";
    std::string strNodeId;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
    }
};
/// @}

/// @name An operator's word
/// @{

/// A plug-in that was taken out of service serves again.
struct CReadmit {
    static constexpr char NAME[] = "readmit";
    std::string strPlugin;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("plugin", self.strPlugin);
    }
};

/// The work of silent containers of that type moves, however many they are.
struct CShiftAnyway {
    static constexpr char NAME[] = "shift_anyway";
    std::string strType;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("type", self.strType);
    }
};

/// An input that is nothing but its kind.
struct CBareInput {
    template <typename F, typename S>
    static void Fields(F& /*form*/, S& /*self*/) {}
};

struct CBalanceNow : CBareInput {
    static constexpr char NAME[] = "balance_now";
};

struct CReadStandardTasks : CBareInput {
    static constexpr char NAME[] = "read_standard_tasks";
};

struct CNextMasterVersion : CBareInput {
    static constexpr char NAME[] = "next_master_version";
};
/// @}

/// A second has passed.
struct CTick {
    static constexpr char NAME[] = "tick";
    bool bReportsRefused = false;  ///< since the tick before: who was not heard may have spoken

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.May("reports_refused", self.bReportsRefused);
    }
};

using InputBody =
    std::variant<CNodeReport, CContainerReport, CNvrReport, CJob, CDryRun, CEndTasks, CManualShift,
                 CHighSpeed, CExplain, CJoin, CLeave, CDrain, CMemberStatus, CCgAdd, CCgUpdate,
                 CCgRemove, CPromote, CDocumentChanged, CStorageAllocate, CStorageReduce,
                 CStorageSave, CReadmit, CShiftAnyway, CBalanceNow, CReadStandardTasks,
                 CNextMasterVersion, CTick>;

/// The last second of the year 9999: an input has none behind it.
inline constexpr int64_t NUMERIC_LAST_SECOND = 253402300799;

/// One input with its second: when it entered the queue of whoever runs the engine, or, a tick,
/// when it was due.
struct CInput {
    int64_t iTime = 0;
    InputBody body;
};

/// @name The keys of every input, beside those of its kind
/// @{
inline constexpr char PSZ_INPUT_TIME[] = "time";
inline constexpr char PSZ_INPUT_KIND[] = "input";
/// @}

/// The name of the body's kind.
const char* InputName(const InputBody& body);

/// An object with "time", "input" (the kind's name) and the fields of the kind.
Json::Value InputToJson(const CInput& input);

/// The counterpart. On a fault the input is half read. With a counter, unknown fields of a report
/// are counted and passed over: agents are upgraded one by one.
bool InputFromJson(const Json::Value& json, CInput& input, CFieldFault& fault,
                   std::size_t* puiUnknown = nullptr);
