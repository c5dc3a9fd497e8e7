#include "cluster_engine/plugin_gate.h"

#include <algorithm>
#include <exception>
#include <numeric>
#include <utility>

#include "common_service/tarn_def.h"
#include "common_service/xml.h"
#include "framework_service/cluster_moment.h"
#include "framework_service/container_mgr.h"

/// What an answer may name: the containers as they were before the call, of the plug-in's types.
struct CNameable {
    const CClusterMoment& before;
    const CPluginClaims& claims;
};

template <typename Arguments>
struct CPluginOperation {
    const char* pszName;
    int (*pCall)(IPlugin&, Arguments&);
    /// What is wrong with the answer, in words; empty when nothing is. Null: nothing can be.
    std::string (*pWhyWrong)(const CNameable&, const Arguments&) = nullptr;
};

namespace {

/// What a call that is run elsewhere leaves behind.
struct COutcome {
    int iCode = ORVA_SUCCEED;
    bool bThrew = false;
    std::string strWhat;
};

template <typename Call>
void Catch(COutcome& outcome, const Call& call) {
    try {
        outcome.iCode = call();
    } catch (const std::exception& exception) {
        outcome.bThrew = true;
        outcome.strWhat = exception.what();
    } catch (...) {
        outcome.bThrew = true;
        outcome.strWhat = "something that is no std::exception";
    }
}

std::string TextOf(PELU::CXml& xml) {
    unsigned int uiLength = 0;
    const char* const pszText = xml.GetXMLStream(uiLength);
    return pszText != nullptr ? std::string(pszText, uiLength) : std::string();
}

template <typename Container, typename Value>
bool Has(const Container& container, const Value& value) {
    return std::find(container.begin(), container.end(), value) != container.end();
}

template <typename Predicate>
CPluginRecord* FindPlugin(std::vector<CPluginRecord>& plugins, const Predicate& isWanted) {
    const auto it = std::find_if(plugins.begin(), plugins.end(), isWanted);
    return it != plugins.end() ? &*it : nullptr;
}

std::string WhyWrong(const CNameable& nameable, const CContainerAddr& addr) {
    const CContainer* const pContainer = nameable.before.FindContainer(addr);
    const bool bThere = pContainer != nullptr;
    if (bThere && Has(nameable.claims.containers, addr.GetContainerType())) {
        return "";
    }
    return "it names the container " + addr.GetNodeId() + ' ' + addr.GetContainerType() +
           (bThere ? ", which is not of its types" : ", which is not there");
}

std::string WhyWrong(const CNameable& nameable, const CTaskContainerMap& bound) {
    std::string strWhy;
    for (auto it = bound.begin(); it != bound.end() && strWhy.empty(); ++it) {
        strWhy = WhyWrong(nameable, it->second);
    }
    return strWhy;
}

std::string WhyWrong(const CNameable& nameable, const std::vector<CStorageShare>& shares) {
    std::string strWhy;
    for (auto it = shares.begin(); it != shares.end() && strWhy.empty(); ++it) {
        strWhy = WhyWrong(nameable, CContainerAddr(it->strNodeId, CONTAINER_TYPE_CLOUD_STORAGE));
    }
    return strWhy;
}

int64_t SizeOf(const ORVA_CLOUD_STORAGE_ALLOC_INFO& info) {
    return info.allocStorage;
}
int64_t SizeOf(const ORVA_CLOUD_STORAGE_REDUCE_INFO& info) {
    return info.storageSize;
}

/// What a node is given or has to give back, with what it is sent.
template <typename Info>
CStorageShare ShareOf(const std::string& strNodeId, const std::list<Info>& infos, PELU::CXml& xml) {
    CStorageShare share;
    share.strNodeId = strNodeId;
    for (const Info& info : infos) {
        share.sizes[info.cloudStorageCode] += SizeOf(info);
    }
    share.strXml = TextOf(xml);
    return share;
}

/// Arguments with a document of XML.
struct CXmlArguments {
    PELU::CXml xml{nullptr};

    /// An answer to a node: the plug-in's elements come behind the node's id.
    void BeginAnswer(const char* pszRoot, const std::string& strNodeId) {
        xml.AddElem(pszRoot);
        xml.AddChildElem("NodeID");
        xml.IntoElem();
        xml.SetElemValue(strNodeId.c_str());
    }
};

}  // namespace

void SetTableBack(const CClusterMoment& before) {
    const std::optional<CClusterMoment> now = CClusterMoment::Take();
    if (now && now->GetContainerNumber() == before.GetContainerNumber()) {
        return;
    }
    ContainerMap containers;
    before.VisitContainers(0, [&](const CContainerAddr& addr, const CContainer* pContainer) {
        containers.emplace(addr, *pContainer);
    });
    CContainerMgr::Instance().Init(containers);
}

void CPluginGate::Load() {
    m_plugins.clear();
    for (const CPluginFile& file : CPluginMgr::Instance().GetPluginFiles()) {
        if (file.pPlugin == nullptr) {
            continue;
        }
        CPluginRecord record;
        record.strName = file.strName;
        record.pPlugin = file.pPlugin;
        record.claims = file.held;
        m_plugins.push_back(std::move(record));
    }
    struct CNothing {};
    for (CPluginRecord& plugin : m_plugins) {
        Run<CNothing>(plugin, std::make_shared<CNothing>(),
                      {"Routing", [](IPlugin& called, CNothing&) {
                           called.Routing();
                           return static_cast<int>(ORVA_SUCCEED);
                       }});
    }
}

CPluginRecord* CPluginGate::OfJob(uint32_t uiJobType) {
    return FindPlugin(
        m_plugins, [&](const CPluginRecord& plugin) { return Has(plugin.claims.jobs, uiJobType); });
}

CPluginRecord* CPluginGate::OfType(const std::string& strType) {
    return FindPlugin(m_plugins, [&](const CPluginRecord& plugin) {
        return Has(plugin.claims.containers, strType);
    });
}

CPluginRecord* CPluginGate::OfName(const std::string& strName) {
    return FindPlugin(m_plugins,
                      [&](const CPluginRecord& plugin) { return plugin.strName == strName; });
}

EFault CPluginGate::Readmit(CPluginRecord& plugin) {
    if (m_host.runner.IsBusy(plugin.strName)) {
        return EFault::PLUGIN_BUSY;
    }
    plugin.bOut = false;
    plugin.failures.clear();
    return EFault::NONE;
}

template <typename Arguments>
CCallResult CPluginGate::Run(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                             const CPluginOperation<Arguments>& operation) {
    if (plugin.bOut) {
        return {EFault::PLUGIN_OUT_OF_SERVICE, ORVA_FAIL, plugin.strName};
    }
    const std::optional<CClusterMoment> before = CClusterMoment::Take();
    if (!before) {
        return {EFault::PLUGIN_FAILED, ORVA_FAIL, "the containers cannot be locked"};
    }
    const uint64_t ullStoreFailures = m_host.gate.GetFailures();
    const auto pOutcome = std::make_shared<COutcome>();
    const bool bBack = m_host.runner.Run(
        plugin.strName, operation.pszName,
        std::make_shared<std::function<void()>>(
            [pOutcome, pArguments, pPlugin = plugin.pPlugin, pCall = operation.pCall] {
                Catch(*pOutcome, [&] { return pCall(*pPlugin, *pArguments); });
            }));
    CCallResult result;
    if (!bBack) {
        plugin.bOut = true;
        result = Fail(plugin, operation.pszName, "it has not come back");
    } else if (m_host.gate.GetFailures() != ullStoreFailures) {
        result =
            Tell(plugin, {EFault::STORE_FAILED, pOutcome->iCode, "the store failed meanwhile"});
    } else if (pOutcome->bThrew) {
        result = Fail(plugin, operation.pszName, "it threw: " + pOutcome->strWhat);
    } else if (const std::string strWhy =
                   operation.pWhyWrong != nullptr
                       ? operation.pWhyWrong({*before, plugin.claims}, *pArguments)
                       : "";
               !strWhy.empty()) {
        result = Fail(plugin, operation.pszName, strWhy);
    } else {
        plugin.failures.erase(operation.pszName);
        return {EFault::NONE, pOutcome->iCode, ""};
    }
    SetTableBack(*before);
    return result;
}

CCallResult CPluginGate::Fail(CPluginRecord& plugin, const char* pszOperation, std::string strWhy) {
    ++plugin.failures[pszOperation];
    const uint32_t uiFailures =
        std::accumulate(plugin.failures.begin(), plugin.failures.end(), uint32_t{0},
                        [](uint32_t uiSum, const auto& entry) { return uiSum + entry.second; });
    plugin.bOut = plugin.bOut || uiFailures >= m_settings.uiPluginFailures;
    return Tell(plugin, {EFault::PLUGIN_FAILED, ORVA_FAIL,
                         std::string(pszOperation) + ": " + std::move(strWhy)});
}

CCallResult CPluginGate::Tell(const CPluginRecord& plugin, CCallResult result) const {
    m_onFailure(plugin, result);
    return result;
}

template <typename Arguments>
CCallResult CPluginGate::Write(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                               const CPluginOperation<Arguments>& operation, std::string& strXml) {
    CCallResult result = Run(plugin, pArguments, operation);
    if (!result.IsFailure() && result.iCode == ORVA_SUCCEED) {
        strXml = TextOf(pArguments->xml);
    }
    return result;
}

template <typename Arguments>
CCallResult CPluginGate::Share(CPluginRecord& plugin, const std::shared_ptr<Arguments>& pArguments,
                               const std::string& strXml,
                               const CPluginOperation<Arguments>& operation,
                               std::vector<CStorageShare>& shares) {
    if (!pArguments->xml.Parse(strXml.c_str())) {
        return {EFault::BAD_INPUT, ORVA_XML_INVALID, "xml: is no well-formed XML"};
    }
    CCallResult result = Run(plugin, pArguments, operation);
    if (!result.IsFailure() && result.iCode == ORVA_SUCCEED) {
        shares = std::move(pArguments->shares);
    }
    return result;
}

CCallResult CPluginGate::ReadJob(CPluginRecord& plugin, const std::string& strNodeId,
                                 uint32_t uiJobType, const std::string& strXml,
                                 std::list<CResourceTask>& tasks) {
    struct CArguments : CXmlArguments {
        std::string strNodeId;
        uint32_t uiJobType = 0;
        std::list<CResourceTask> tasks;
    };
    const auto pArguments = std::make_shared<CArguments>();
    if (!pArguments->xml.Parse(strXml.c_str())) {
        return {EFault::BAD_INPUT, ORVA_XML_INVALID, "xml: is no well-formed XML"};
    }
    pArguments->strNodeId = strNodeId;
    pArguments->uiJobType = uiJobType;
    CCallResult result = Run<CArguments>(
        plugin, pArguments, {"PrivateTaskToResourceTask", [](IPlugin& called, CArguments& a) {
                                 return called.PrivateTaskToResourceTask(a.strNodeId, a.uiJobType,
                                                                         a.xml, a.tasks);
                             }});
    if (!result.IsFailure() && result.iCode != ORVA_SUCCEED) {
        result.eFault = EFault::BAD_INPUT;
        result.strWhy = "xml: the plug-in cannot read it";
    }
    if (!result.IsFailure()) {
        tasks = std::move(pArguments->tasks);
    }
    return result;
}

CCallResult CPluginGate::Schedule(CPluginRecord& plugin, const std::string& strNodeId,
                                  const std::list<CResourceTask>& tasks, bool bReschedule,
                                  CPlacement& placement) {
    struct CArguments {
        std::string strNodeId;
        std::list<CResourceTask> tasks;
        bool bReschedule;
        CPlacement placement;
    };
    const auto pArguments =
        std::make_shared<CArguments>(CArguments{strNodeId, tasks, bReschedule, {}});
    CCallResult result =
        Run<CArguments>(plugin, pArguments,
                        {"TaskSchedule",
                         [](IPlugin& called, CArguments& a) {
                             return called.TaskSchedule(a.strNodeId, a.tasks, a.placement.bound,
                                                        a.placement.ullDecision, a.bReschedule);
                         },
                         [](const CNameable& nameable, const CArguments& a) {
                             return WhyWrong(nameable, a.placement.bound);
                         }});
    if (!result.IsFailure()) {
        placement = std::move(pArguments->placement);
    }
    return result;
}

CCallResult CPluginGate::Movable(CPluginRecord& plugin, const CContainerAddr& addr,
                                 bool bFaultShift, bool bLoadBalance,
                                 std::list<CResourceTask>& tasks) {
    struct CArguments {
        CContainerAddr addr;
        bool bFaultShift;
        bool bLoadBalance;
        std::list<CResourceTask> tasks;
    };
    const auto pArguments =
        std::make_shared<CArguments>(CArguments{addr, bFaultShift, bLoadBalance, {}});
    CCallResult result = Run<CArguments>(
        plugin, pArguments, {"GetResTaskListInContainer", [](IPlugin& called, CArguments& a) {
                                 return called.GetResTaskListInContainer(
                                     a.addr, a.tasks, a.bFaultShift, a.bLoadBalance);
                             }});
    if (!result.IsFailure()) {
        tasks = std::move(pArguments->tasks);
    }
    return result;
}

CCallResult CPluginGate::Balance(CPluginRecord& plugin, CBalancePlan& plan) {
    const auto pArguments = std::make_shared<CBalancePlan>();
    CCallResult result = Run<CBalancePlan>(
        plugin, pArguments,
        {"LoadBalanceSchedule",
         [](IPlugin& called, CBalancePlan& a) {
             return called.LoadBalanceSchedule(a.tasks, a.from, a.to, a.ullDecision);
         },
         [](const CNameable& nameable, const CBalancePlan& a) {
             const std::string strWhy = WhyWrong(nameable, a.from);
             return strWhy.empty() ? WhyWrong(nameable, a.to) : strWhy;
         }});
    if (!result.IsFailure()) {
        plan = std::move(*pArguments);
    }
    return result;
}

CCallResult CPluginGate::Manual(CPluginRecord& plugin, const std::list<CResourceTask>& tasks,
                                const CTaskShiftMap& moves, CManualPlan& plan) {
    struct CArguments {
        std::list<CResourceTask> tasks;
        CTaskShiftMap moves;
        CManualPlan plan;
    };
    const auto pArguments = std::make_shared<CArguments>(CArguments{tasks, moves, {}});
    CCallResult result =
        Run<CArguments>(plugin, pArguments,
                        {"ManualTaskSchedule",
                         [](IPlugin& called, CArguments& a) {
                             return called.ManualTaskSchedule(a.tasks, a.moves, a.plan.bound,
                                                              a.plan.codes, a.plan.ullDecision);
                         },
                         [](const CNameable& nameable, const CArguments& a) {
                             return WhyWrong(nameable, a.plan.bound);
                         }});
    if (!result.IsFailure()) {
        plan = std::move(pArguments->plan);
    }
    return result;
}

CCallResult CPluginGate::ShiftIn(CPluginRecord& plugin, const CContainerAddr& addr,
                                 const std::list<CResourceTask>& tasks,
                                 const CTaskContainerMap& from, unsigned long long ullDecision) {
    struct CArguments {
        CContainerAddr addr;
        std::list<CResourceTask> tasks;
        CTaskContainerMap from;
        unsigned long long ullDecision;
    };
    CCallResult result = Run<CArguments>(
        plugin, std::make_shared<CArguments>(CArguments{addr, tasks, from, ullDecision}),
        {"NotifyShiftIn", [](IPlugin& called, CArguments& a) {
             const bool bTaken = called.NotifyShiftIn(a.addr, a.tasks, a.from, a.ullDecision);
             return static_cast<int>(bTaken ? ORVA_SUCCEED : ORVA_FAIL);
         }});
    if (!result.IsFailure() && result.iCode != ORVA_SUCCEED) {
        result = {EFault::PLUGIN_REFUSED, result.iCode, plugin.strName};
    }
    return result;
}

CCallResult CPluginGate::JobResult(CPluginRecord& plugin, const std::string& strNodeId,
                                   const std::vector<CResourceTask>& tasks,
                                   const std::vector<CTaskResult>& results, std::string& strXml) {
    struct CArguments : CXmlArguments {
        std::vector<CResourceTask> tasks;
        std::vector<CTaskResult> results;
    };
    const auto pArguments = std::make_shared<CArguments>();
    pArguments->tasks = tasks;
    pArguments->results = results;
    pArguments->BeginAnswer("TaskResultList", strNodeId);
    return Write<CArguments>(
        plugin, pArguments,
        {"AssembleScheduleResult",
         [](IPlugin& called, CArguments& a) {
             int iCode = ORVA_SUCCEED;
             for (std::size_t ui = 0; ui < a.tasks.size() && iCode == ORVA_SUCCEED; ++ui) {
                 const CTaskResult& result = a.results[ui];
                 const bool bPlaced = result.eResult != ETaskResult::REFUSED;
                 iCode =
                     called.AssembleScheduleResult(a.tasks[ui], bPlaced ? ORVA_SUCCEED : ORVA_FAIL,
                                                   {result.strNodeId, result.strType}, a.xml);
             }
             return iCode;
         }},
        strXml);
}

CCallResult CPluginGate::ShiftResult(CPluginRecord& plugin, const std::string& strNodeId,
                                     const std::list<CResourceTask>& tasks,
                                     unsigned long long ullDecision, bool bShiftIn,
                                     std::string& strXml) {
    struct CArguments : CXmlArguments {
        std::string strNodeId;
        std::list<CResourceTask> tasks;
        unsigned long long ullDecision = 0;
        bool bShiftIn = false;
    };
    const auto pArguments = std::make_shared<CArguments>();
    pArguments->strNodeId = strNodeId;
    pArguments->tasks = tasks;
    pArguments->ullDecision = ullDecision;
    pArguments->bShiftIn = bShiftIn;
    pArguments->BeginAnswer("ShiftTaskList", strNodeId);
    return Write<CArguments>(
        plugin, pArguments,
        {"AssembleShiftResult",
         [](IPlugin& called, CArguments& a) {
             int iCode = ORVA_SUCCEED;
             for (auto it = a.tasks.begin(); it != a.tasks.end() && iCode == ORVA_SUCCEED; ++it) {
                 iCode =
                     called.AssembleShiftResult(a.strNodeId, *it, a.ullDecision, a.bShiftIn, a.xml);
             }
             return iCode;
         }},
        strXml);
}

CCallResult CPluginGate::AllocateStorage(CPluginRecord& plugin, const std::string& strXml,
                                         std::vector<CStorageShare>& shares) {
    struct CArguments : CXmlArguments {
        std::list<ORVA_CLOUD_STORAGE_SEND_INFO> decided;
        std::vector<CStorageShare> shares;
    };
    return Share<CArguments>(
        plugin, std::make_shared<CArguments>(), strXml,
        {"CloudStorageAlloc",
         [](IPlugin& called, CArguments& a) {
             int iCode = called.CloudStorageAlloc(a.xml, a.decided);
             for (auto it = a.decided.begin(); it != a.decided.end() && iCode == ORVA_SUCCEED;
                  ++it) {
                 PELU::CXml xml(nullptr);
                 iCode = called.BuildAllocReqXml(*it, xml);
                 a.shares.push_back(ShareOf(it->strNodeID, it->allocInfo, xml));
             }
             return iCode;
         },
         [](const CNameable& nameable, const CArguments& a) {
             return WhyWrong(nameable, a.shares);
         }},
        shares);
}

CCallResult CPluginGate::ReduceStorage(CPluginRecord& plugin, const std::string& strXml,
                                       int iChange, int iTotal,
                                       std::vector<CStorageShare>& shares) {
    struct CArguments : CXmlArguments {
        int iChange = 0;
        int iTotal = 0;
        std::string strCode;
        std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST> decided;
        std::vector<CStorageShare> shares;
    };
    const auto pArguments = std::make_shared<CArguments>();
    pArguments->iChange = iChange;
    pArguments->iTotal = iTotal;
    return Share<CArguments>(
        plugin, pArguments, strXml,
        {"CloudStorageReduce",
         [](IPlugin& called, CArguments& a) {
             int iCode =
                 called.CloudStorageReduce(a.xml, a.strCode, a.iChange, a.iTotal, a.decided);
             for (auto it = a.decided.begin(); it != a.decided.end() && iCode == ORVA_SUCCEED;
                  ++it) {
                 PELU::CXml xml(nullptr);
                 iCode = called.BuildReduceReqXML(*it, xml);
                 a.shares.push_back(ShareOf(it->strNodeID, it->reduceInfoList, xml));
             }
             return iCode;
         },
         [](const CNameable& nameable, const CArguments& a) {
             return WhyWrong(nameable, a.shares);
         }},
        shares);
}

CCallResult CPluginGate::StorageReport(CPluginRecord& plugin, bool bAlloc, std::string& strXml) {
    struct CArguments : CXmlArguments {
        bool bAlloc = false;
    };
    const auto pArguments = std::make_shared<CArguments>();
    pArguments->bAlloc = bAlloc;
    return Write<CArguments>(plugin, pArguments,
                             {"GenCloudStorageReportXml",
                              [](IPlugin& called, CArguments& a) {
                                  return called.GenCloudStorageReportXml(a.xml, a.bAlloc);
                              }},
                             strXml);
}

CCallResult CPluginGate::Explain(CPluginRecord& plugin, const CResourceTask& task,
                                 std::list<CPlacementReason>& reasons) {
    struct CArguments {
        CResourceTask task;
        std::list<CPlacementReason> reasons;
    };
    const auto pArguments = std::make_shared<CArguments>(CArguments{task, {}});
    CCallResult result = Run<CArguments>(
        plugin, pArguments, {"ExplainPlacement", [](IPlugin& called, CArguments& a) {
                                 if (auto* const pReason = dynamic_cast<IPlacementReason*>(&called);
                                     pReason != nullptr) {
                                     pReason->ExplainPlacement(a.task, a.reasons);
                                 }
                                 return static_cast<int>(ORVA_SUCCEED);
                             }});
    if (!result.IsFailure()) {
        reasons.splice(reasons.end(), pArguments->reasons);
    }
    return result;
}
