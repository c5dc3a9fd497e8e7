#include <algorithm>

#include "cloud_storage/storage_board.h"
#include "cloud_storage/storage_size.h"
#include "cloud_storage/storage_xml.h"
#include "common_service/tarn_def.h"
#include "framework_service/IPlugin.h"
#include "framework_service/placement_reason.h"
#include "operation_log/operation_log.h"

using namespace operation_log;

namespace {

constexpr char PSZ_NO_TASKS[] = "do not support this function.";

/// What a task asks for and was not given yet; nothing where it does not say.
int64_t MissingStorage(const CResourceTask& task) {
    KeyValueMap privateInfo;
    task.GetAllPrivateInfo(privateInfo);
    int64_t llMissing = ReadStorageSize(privateInfo[PSZ_TASK_REQ_STORAGE]).value_or(0);
    std::list<ORVA_CLOUD_STORAGE_ALLOC_INFO> allocInfoList;
    task.GetAllocInfoList(allocInfoList);
    for (const ORVA_CLOUD_STORAGE_ALLOC_INFO& info : allocInfoList) {
        llMissing -= std::max(info.allocStorage, 0);
    }
    return llMissing;
}

/// Shares the cluster's storage out: nodes ask for it, pools have it, and which container offers a
/// pool stands in the containers' extended parameters (cloud_storage_param.h). The tasks of a cloud
/// storage container are its figures, so that nothing here is a job or a placement of one. Requests
/// and answers are those of storage_xml.h. Nothing is kept between two calls: what was decided and
/// is not reported yet is shown by the extended parameters too.
class CCloudStoragePlugin : public IPlugin, public IPlacementReason {
public:
    CCloudStoragePlugin() { m_strName = "cloud_storage"; }

    std::string GetVersion() override { return "1.0.0"; }
    std::string GetName() override { return m_strName; }

    int GetSupportedJobs(std::list<unsigned int>& jobList) override {
        jobList.clear();
        return ORVA_SUCCEED;
    }

    int GetSupportedContainers(std::list<std::string>& containerList) override {
        containerList = {CONTAINER_TYPE_CLOUD_STORAGE};
        return ORVA_SUCCEED;
    }

    int GetContainerBindTable(ContainerTypeBindMap& containerBindList) override {
        containerBindList = {
            {CONTAINER_TYPE_CLOUD_STORAGE, {"CloudStorageAlloc", "CloudStorageReduce"}}};
        return ORVA_SUCCEED;
    }

    int PrivateTaskToResourceTask(const std::string& /*strNodeId*/, uint32_t /*uiJobType*/,
                                  PELU::CXml& /*xml*/,
                                  std::list<CResourceTask>& /*resTaskList*/) override {
        return LogFailure("cloud storage private task to resource task", ORVA_SYS_NO_SUPPORT,
                          PSZ_NO_TASKS);
    }

    /// The table is emptied, since what it holds would count.
    int TaskSchedule(const std::string& /*strNodeId*/,
                     const std::list<CResourceTask>& /*resTaskList*/,
                     CTaskContainerMap& taskBindTable, unsigned long long& /*ullDecisionVerNum*/,
                     bool /*bReschedule*/) override {
        taskBindTable.clear();
        return LogFailure("cloud storage task schedule", ORVA_SYS_NO_SUPPORT, PSZ_NO_TASKS);
    }

    /// All of the type, whether they offer a pool or not.
    int GetCloudContainerList(std::list<CContainer>& containerList) override {
        const CStorageBoard board;
        for (const auto& [addr, container] : board.GetContainers()) {
            containerList.push_back(container);
        }
        return ORVA_SUCCEED;
    }

    /// The pool with most room gives first, and where it has too little the next one too. A share
    /// says what a node gets beside what it has; its status is 0. All or nothing: a non-zero answer
    /// (ORVA_XML_INVALID, or those of CStorageBoard::Allocate) leaves the list as it was.
    int CloudStorageAlloc(PELU::CXml& xml,
                          std::list<ORVA_CLOUD_STORAGE_SEND_INFO>& sendInfoList) override {
        std::list<ORVA_CLOUD_STORAGE_SEND_INFO> shareList;
        if (const int iRet = ReadAllocRequest(xml, shareList); iRet != ORVA_SUCCEED) {
            return iRet;
        }
        CStorageBoard board;
        for (ORVA_CLOUD_STORAGE_SEND_INFO& share : shareList) {
            if (const int iRet = board.Allocate(share); iRet != ORVA_SUCCEED) {
                return iRet;
            }
        }
        sendInfoList.splice(sendInfoList.end(), shareList);
        return ORVA_SUCCEED;
    }

    /// Takes nChangeSize back, 1 or more, of nTotalSize, which is what the asker knows to be
    /// allocated. An entry bears the bit rate of its node's low priority data. All or nothing: a
    /// non-zero answer (ORVA_PARA_INVALID for the sizes, ORVA_XML_INVALID, or those of
    /// CStorageBoard::Reduce) leaves code and list as they were.
    int CloudStorageReduce(PELU::CXml& xml, std::string& strReduceCloudStoreCode, int nChangeSize,
                           int nTotalSize,
                           std::list<ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST>& reduceList) override {
        if (nChangeSize < 1 || nChangeSize > nTotalSize) {
            return LogFailure("cloud storage reduce", ORVA_PARA_INVALID, "cannot reduce %d by %d.",
                              nTotalSize, nChangeSize);
        }
        CStorageReduction reduction;
        if (const int iRet = ReadReduceRequest(xml, reduction); iRet != ORVA_SUCCEED) {
            return iRet;
        }
        reduction.iSize = nChangeSize;
        return CStorageBoard().Reduce(reduction, strReduceCloudStoreCode, reduceList);
    }

    int BuildAllocReqXml(const ORVA_CLOUD_STORAGE_SEND_INFO& sendInfo, PELU::CXml& xml) override {
        return WriteAllocRequest(sendInfo, xml);
    }

    int BuildReduceReqXML(const ORVA_CLOUD_STORAGE_REDUCE_INFO_LIST& reduceList,
                          PELU::CXml& xml) override {
        return WriteReduceRequest(reduceList, xml);
    }

    int GenCloudStorageReportXml(PELU::CXml& reportXml, bool bAlloc) override {
        const CStorageBoard board;
        return bAlloc ? WriteAllocReport(board, reportXml) : WriteReduceReport(board, reportXml);
    }

    /// A task is a node's demand, and a container may take it when its pools have room for what it
    /// asks for and was not given yet.
    void ExplainPlacement(const CResourceTask& task,
                          std::list<CPlacementReason>& reasons) override {
        const CStorageBoard board;
        const int64_t llMissing = MissingStorage(task);
        for (const auto& [addr, container] : board.GetContainers()) {
            const std::string strWhyNot = board.WhyNoRoom(addr, llMissing);
            reasons.push_back({addr, strWhyNot.empty(), strWhyNot});
        }
    }
};

}  // namespace

extern "C" [[gnu::visibility("default")]] int CreatePlugin(IPlugin*& pPlugin) {
    static CCloudStoragePlugin plugin;
    pPlugin = &plugin;
    return ORVA_SUCCEED;
}
