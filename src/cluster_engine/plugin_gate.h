#pragma once

#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cluster_engine/answer.h"
#include "cluster_engine/host.h"
#include "cluster_engine/settings.h"
#include "framework_service/cluster_moment.h"
#include "framework_service/placement_reason.h"
#include "framework_service/plugin_mgr.h"

/// A plug-in of the process, and how it behaves.
struct CPluginRecord {
    std::string strName;
    IPlugin* pPlugin = nullptr;
    CPluginClaims claims;
    std::map<std::string, uint32_t> failures;  ///< by operation: those since it last went well
    bool bOut = false;                         ///< of service
};

/// What a call came to. With a fault nothing of what it decided counts; a code is an answer, and
/// what the tables hold counts.
struct CCallResult {
    EFault eFault = EFault::NONE;
    int iCode = 0;
    std::string strWhy;  ///< of a fault, in words

    bool IsFailure() const { return eFault != EFault::NONE; }
};

/// What a placement decided.
struct CPlacement {
    CTaskContainerMap bound;
    unsigned long long ullDecision = 0;
};

/// What a load balance decided.
struct CBalancePlan {
    std::list<CResourceTask> tasks;
    CTaskContainerMap from;
    CTaskContainerMap to;
    unsigned long long ullDecision = 0;
};

/// What an operator's moves came to.
struct CManualPlan {
    CTaskContainerMap bound;
    std::map<std::string, int> codes;
    unsigned long long ullDecision = 0;
};

/// One node's share of a request for storage, or for less.
struct CStorageShare {
    std::string strNodeId;
    std::map<std::string, int64_t> sizes;  ///< by pool
    std::string strXml;                    ///< for the node
};

/// One operation of the interface.
template <typename Arguments>
struct CPluginOperation;

/// The only place that calls a plug-in for what a cluster does. It catches what is thrown, asks the
/// runner for the limit, and takes a plug-in out of service that fails too often or does not come
/// back. A call fails when it throws, when it is late, or when its answer names a container that
/// is not there or not of the plug-in's types; the library's containers are then as they were
/// before it. When the store fails within a call, that is no failure of the plug-in's, but nothing
/// of the call counts either. The arguments of a call belong to the call.
class CPluginGate {
public:
    using FailureListener = std::function<void(const CPluginRecord&, const CCallResult&)>;

    CPluginGate(CEngineHost& host, const CEngineSettings& settings, FailureListener onFailure)
        : m_host(host), m_settings(settings), m_onFailure(std::move(onFailure)) {}

    /// Takes the plug-ins that are loaded, and calls Routing of each.
    void Load();

    /// @name Who takes it; null when nobody does
    /// @{
    CPluginRecord* OfJob(uint32_t uiJobType);
    CPluginRecord* OfType(const std::string& strType);
    CPluginRecord* OfName(const std::string& strName);
    /// @}

    std::vector<CPluginRecord>& GetAll() { return m_plugins; }
    const std::vector<CPluginRecord>& GetAll() const { return m_plugins; }

    /// Back into service. PLUGIN_BUSY while a call has not come back.
    EFault Readmit(CPluginRecord& plugin);

    /// @name The calls
    /// @{
    CCallResult ReadJob(CPluginRecord& plugin, const std::string& strNodeId, uint32_t uiJobType,
                        const std::string& strXml, std::list<CResourceTask>& tasks);
    CCallResult Schedule(CPluginRecord& plugin, const std::string& strNodeId,
                         const std::list<CResourceTask>& tasks, bool bReschedule,
                         CPlacement& placement);
    CCallResult Movable(CPluginRecord& plugin, const CContainerAddr& addr, bool bFaultShift,
                        bool bLoadBalance, std::list<CResourceTask>& tasks);
    CCallResult Balance(CPluginRecord& plugin, CBalancePlan& plan);
    CCallResult Manual(CPluginRecord& plugin, const std::list<CResourceTask>& tasks,
                       const CTaskShiftMap& moves, CManualPlan& plan);
    /// PLUGIN_REFUSED when the plug-in does not take the tasks in.
    CCallResult ShiftIn(CPluginRecord& plugin, const CContainerAddr& addr,
                        const std::list<CResourceTask>& tasks, const CTaskContainerMap& from,
                        unsigned long long ullDecision);
    /// The results in the order of the tasks.
    CCallResult JobResult(CPluginRecord& plugin, const std::string& strNodeId,
                          const std::vector<CResourceTask>& tasks,
                          const std::vector<CTaskResult>& results, std::string& strXml);
    CCallResult ShiftResult(CPluginRecord& plugin, const std::string& strNodeId,
                            const std::list<CResourceTask>& tasks, unsigned long long ullDecision,
                            bool bShiftIn, std::string& strXml);

    /// Each node's share of a request, with what the node is sent.
    CCallResult AllocateStorage(CPluginRecord& plugin, const std::string& strXml,
                                std::vector<CStorageShare>& shares);
    CCallResult ReduceStorage(CPluginRecord& plugin, const std::string& strXml, int iChange,
                              int iTotal, std::vector<CStorageShare>& shares);
    CCallResult StorageReport(CPluginRecord& plugin, bool bAlloc, std::string& strXml);

    /// Appends what the plug-in says of each container; nothing when it gives no reasons.
    CCallResult Explain(CPluginRecord& plugin, const CResourceTask& task,
                        std::list<CPlacementReason>& reasons);
    /// @}

private:
    template <typename Arguments>
    CCallResult Run(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                    const CPluginOperation<Arguments>& operation);

    /// A text that the plug-in writes: the document's.
    template <typename Arguments>
    CCallResult Write(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                      const CPluginOperation<Arguments>& operation, std::string& strXml);

    /// A request for storage that the plug-in reads and shares out.
    template <typename Arguments>
    CCallResult Share(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                      const std::string& strXml, const CPluginOperation<Arguments>& operation,
                      std::vector<CStorageShare>& shares);

    CCallResult Fail(CPluginRecord& plugin, const char* pszOperation, std::string strWhy);
    CCallResult Tell(const CPluginRecord& plugin, CCallResult result) const;

    CEngineHost& m_host;
    const CEngineSettings& m_settings;
    FailureListener m_onFailure;
    std::vector<CPluginRecord> m_plugins;
};

/// Gives the library's table of containers what it held at that moment, if it has changed since.
void SetTableBack(const CClusterMoment& before);
