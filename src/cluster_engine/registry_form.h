#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cluster_engine/cluster.h"

/// What the library's registries hold, as the engine's state carries it.

struct CNodeForm {
    std::string strNodeId;
    std::string strIp;
    int32_t iIpType = 0;
    int32_t iNodeRole = 0;
    int32_t iDomainRole = 0;
    int32_t iServiceType = 0;
    int32_t iMemberStatus = 0;
    bool bOnline = true;
    CFigures total;
    std::vector<std::string> types;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("node", self.strNodeId);
        form.Need("ip", self.strIp);
        form.Need("ip_type", self.iIpType);
        form.Need("node_role", self.iNodeRole);
        form.Need("domain_role", self.iDomainRole);
        form.Need("service_type", self.iServiceType);
        form.Need("member_status", self.iMemberStatus);
        form.Need("online", self.bOnline);
        form.Need("total", self.total);
        form.Need("types", self.types);
    }
};

/// What only a cloud storage container has.
struct CStorageForm {
    std::string strProductType;
    std::string strServiceType;
    int32_t iReqStorage = 0;
    int32_t iReqPicStorage = 0;
    int32_t iBitRate = 0;
    int32_t iTranBandWidth = 0;
    bool bUpdate = false;
    std::vector<CTableAllocation> allocations;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("product_type", self.strProductType);
        form.Need("service_type", self.strServiceType);
        form.Need("storage", self.iReqStorage);
        form.Need("picture_storage", self.iReqPicStorage);
        form.Need("bit_rate", self.iBitRate);
        form.Need("bandwidth", self.iTranBandWidth);
        form.Need("update", self.bUpdate);
        form.Need("allocations", self.allocations);
    }
};

CStorageForm StorageOf(const CContainer& container);

struct CContainerForm {
    CPlace place;
    bool bOnline = true;
    bool bFaultShift = false;
    bool bSupportFaultShift = false;
    bool bDoingFaultShift = false;
    bool bNeedUpdate = true;
    bool bHasReported = false;
    int32_t iMemberStatus = 0;
    std::map<std::string, int32_t> processes;
    CFigures total;
    std::map<std::string, std::string> parameters;
    std::vector<CTableTask> tasks;
    int32_t iTaskDisk = 0;
    int32_t iTaskNet = 0;
    uint64_t ullShiftFaults = 0;  ///< shifts of it that failed
    std::optional<CStorageForm> storage;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        CPlace::Fields(form, self.place);
        form.Need("online", self.bOnline);
        form.Need("fault_shift", self.bFaultShift);
        form.Need("may_shift", self.bSupportFaultShift);
        form.Need("shifting", self.bDoingFaultShift);
        form.Need("need_update", self.bNeedUpdate);
        form.Need("reported", self.bHasReported);
        form.Need("member_status", self.iMemberStatus);
        form.May("processes", self.processes);
        form.Need("total", self.total);
        form.May("parameters", self.parameters);
        form.May("tasks", self.tasks);
        form.Need("task_disk", self.iTaskDisk);
        form.Need("task_net", self.iTaskNet);
        form.May("shift_faults", self.ullShiftFaults);
        form.May("storage", self.storage);
    }
};

struct CRegistryForm {
    std::vector<CNodeForm> nodes;
    std::vector<CContainerForm> containers;
    std::vector<CPlace> shifting;
    uint64_t ullDecision = 0;
    uint64_t ullMaster = 0;
    int32_t iCenterDbVersion = 0;

    /// @name Copies of documents, as the library writes them
    /// @{
    std::string strConfiguration;
    std::string strCgList;
    std::string strCenterDb;
    std::string strManager;
    /// @}

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("nodes", self.nodes);
        form.Need("containers", self.containers);
        form.May("shifting", self.shifting);
        form.Need("decision", self.ullDecision);
        form.Need("master", self.ullMaster);
        form.Need("center_db_version", self.iCenterDbVersion);
        form.Need("configuration", self.strConfiguration);
        form.Need("cg_list", self.strCgList);
        form.Need("center_db", self.strCenterDb);
        form.Need("manager", self.strManager);
    }
};

CRegistryForm ReadRegistries();

/// Replaces what the registries hold; what they do not hand out is in the cluster's state. The gate
/// is shut: the numbers and documents that the library takes from the store alone are written
/// there. Steps the clock. Returns 0; or a code, with what cannot be restored in strWhy.
int RestoreRegistries(CCluster& cluster, const CRegistryForm& form, std::string& strWhy);
