#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "cluster_engine/engine_view.h"
#include "cluster_engine/json_fields.h"
#include "framework_service/cluster_cg_info.h"
#include "framework_service/cluster_db_znode_info.h"
#include "framework_service/cluster_mgr_znode_info.h"
#include "framework_service/plugin_mgr.h"
#include "framework_service/resource_task.h"

/// Plug-ins and the records of the small documents as questions show them.

struct CShownLostClaim {
    std::string strKind;
    std::string strKey;
    std::string strFile;  ///< the file of the plug-in that has it

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("kind", self.strKind);
        form.Need("key", self.strKey);
        form.Need("file", self.strFile);
    }
};

/// A file of the plug-in folder, what its plug-in has and does not have, and how it behaves.
struct CShownPlugin {
    std::string strName;
    std::string strFile;
    std::string strFailure;  ///< why it is not loaded
    std::vector<uint32_t> jobTypes;
    std::vector<std::string> types;
    std::map<std::string, std::vector<std::string>> logicTypes;  ///< by real type
    std::vector<std::string> shiftTypes;
    std::vector<std::string> balanceTypes;
    std::vector<CShownLostClaim> lost;
    bool bOutOfService = false;
    std::map<std::string, uint32_t> failures;  ///< by operation: those since it last went well

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.strName);
        form.Need("file", self.strFile);
        form.May("failure", self.strFailure);
        form.Need("job_types", self.jobTypes);
        form.Need("types", self.types);
        form.Need("logic_types", self.logicTypes);
        form.Need("shift_types", self.shiftTypes);
        form.Need("balance_types", self.balanceTypes);
        form.Need("lost", self.lost);
        form.Need("out_of_service", self.bOutOfService);
        form.Need("failures", self.failures);
    }
};

struct CShownCg {
    std::string strNodeId;
    std::string strFloatCode;
    std::string strFloatIp;
    std::string strDecision;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("node", self.strNodeId);
        form.Need("float_code", self.strFloatCode);
        form.Need("float_ip", self.strFloatIp);
        form.Need("decision", self.strDecision);
    }
};

struct CShownDatabase {
    bool bMaster = false;
    std::string strNodeId;
    std::string strIp;
    int32_t iPort = 0;
    std::string strToken;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("master", self.bMaster);
        form.Need("node", self.strNodeId);
        form.Need("ip", self.strIp);
        form.Need("port", self.iPort);
        form.Need("token", self.strToken);
    }
};

struct CShownManager {
    std::string strNodeId;
    std::string strIp;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("node", self.strNodeId);
        form.Need("ip", self.strIp);
    }
};

/// A model for tasks that name it. It has no id, and its costs are without effect.
struct CShownStandardTask {
    std::string strName;
    bool bMovable = true;
    std::map<std::string, std::string> privateInfo;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("name", self.strName);
        form.Need("movable", self.bMovable);
        form.Need("private", self.privateInfo);
    }
};

/// pRunning: what the engine says of it; null when it is not loaded.
CShownPlugin Shown(const CPluginFile& file, const CPluginView* pRunning);
CShownCg Shown(const CClusterCGInfo& cg);
CShownDatabase Shown(const CClusterDBInfo& database);
CShownManager Shown(const CClusterMGRInfo& manager);
CShownStandardTask Shown(const std::string& strName, const CResourceTask& task);
