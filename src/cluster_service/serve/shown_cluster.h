#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "cluster_engine/forms.h"
#include "cluster_engine/input.h"
#include "cluster_engine/registry_form.h"
#include "framework_service/container.h"
#include "framework_service/tarn_node.h"
#include "serve/cluster_view.h"

/// Nodes and containers as questions show them.

struct CShownNode {
    std::string strNodeId;
    std::string strIp;
    int32_t iIpType = 0;
    int32_t iNodeRole = 0;
    int32_t iDomainRole = 0;
    int32_t iServiceType = 0;
    EMemberStatus eMemberStatus = EMemberStatus::NORMAL;
    bool bOnline = false;
    bool bDraining = false;
    CFigures total;
    CFigures used;
    std::vector<std::string> types;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Id("node", self.strNodeId);
        form.Need("ip", self.strIp);
        form.Need("ip_type", self.iIpType);
        form.Need("node_role", self.iNodeRole);
        form.Need("domain_role", self.iDomainRole);
        form.Need("service_type", self.iServiceType);
        form.Need("member_status", self.eMemberStatus);
        form.Need("online", self.bOnline);
        form.Need("draining", self.bDraining);
        form.Need("total", self.total);
        form.Need("used", self.used);
        form.Need("types", self.types);
    }
};

struct CShownContainer {
    CPlaceForm place;
    bool bOnline = false;
    bool bAvailable = false;  ///< it can take work, as CFrameworkCommon::GetAvailableContainer says
    EMemberStatus eMemberStatus = EMemberStatus::NORMAL;
    bool bReported = false;
    bool bFaultShift = false;
    bool bMayShift = false;
    bool bShifting = false;
    std::map<std::string, int32_t> processes;
    CFigures total;
    CFigures used;
    std::map<std::string, std::string> parameters;
    uint32_t uiTasks = 0;
    int32_t iDiskPercent = 0;
    int32_t iNetPercent = 0;
    std::optional<CStorageForm> storage;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        CPlaceForm::Fields(form, self.place);
        form.Need("online", self.bOnline);
        form.Need("available", self.bAvailable);
        form.Need("member_status", self.eMemberStatus);
        form.Need("reported", self.bReported);
        form.Need("fault_shift", self.bFaultShift);
        form.Need("may_shift", self.bMayShift);
        form.Need("shifting", self.bShifting);
        form.Need("processes", self.processes);
        form.Need("total", self.total);
        form.Need("used", self.used);
        form.Need("parameters", self.parameters);
        form.Need("task_count", self.uiTasks);
        form.Need("disk_percent", self.iDiskPercent);
        form.Need("net_percent", self.iNetPercent);
        form.May("storage", self.storage);
    }
};

CShownNode ShownNode(const CNode& node, const CClusterView& view);
CShownContainer ShownContainer(const CContainer& container, const CClusterView& view);

/// Can the container take work? On a node that is a normal member, online, every process running.
bool IsAvailable(const CContainer& container, const CClusterView& view);
