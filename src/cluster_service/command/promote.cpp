#include "command/promote.h"

#include <algorithm>
#include <list>

#include "command/exit_code.h"
#include "command/held_log.h"
#include "command/joined.h"
#include "command/load.h"
#include "framework_service/framework_common.h"
#include "reference_host/code_text.h"

namespace {

/// The centre database as it is stored, in words.
std::string DatabaseText(const CClusterDBZNodeInfo& document) {
    std::list<CClusterDBInfo> slaves;
    document.GetAllSlaveDB(slaves);
    std::list<std::string> slaveIds;
    for (const CClusterDBInfo& slave : slaves) {
        slaveIds.push_back(slave.GetNodeId());
    }
    return "master " + ShownText(document.GetMasterDB().GetNodeId()) +
           ", slaves: " + Joined(slaveIds);
}

/// Says why the node cannot be promoted. Can it?
bool IsPromotable(const CClusterDBZNodeInfo& document, const std::string& strNodeId,
                  const std::string& strPlace, std::ostream& errors) {
    if (document.GetMasterDB().GetNodeId().empty()) {
        errors << strPlace << " holds no centre database\n";
        return false;
    }
    if (document.IsMasterDB(strNodeId)) {
        errors << "node \"" << ShownText(strNodeId)
               << "\" is the master of the centre database already\n";
        return false;
    }
    std::list<CClusterDBInfo> slaves;
    document.GetAllSlaveDB(slaves);
    CClusterDBInfo slave;
    if (!document.GetCDBInfo(strNodeId, slave)) {
        errors << "node \"" << ShownText(strNodeId)
               << "\" is no slave of the centre database; it has " << DatabaseText(document)
               << '\n';
        return false;
    }
    const auto sameToken = [&slave](const CClusterDBInfo& other) {
        return other.GetCDBToken() == slave.GetCDBToken();
    };
    if (std::count_if(slaves.begin(), slaves.end(), sameToken) > 1) {
        errors << "node \"" << ShownText(strNodeId) << "\" shares its slot \""
               << ShownText(slave.GetCDBToken())
               << "\" with another slave: give each database a DBToken first\n";
        return false;
    }
    return true;
}

}  // namespace

int Promote(CStage& stage, const std::string& strNodeId, const CChangeOptions& options,
            std::ostream& output, std::ostream& errors) {
    CClusterDBZNodeInfo& database = CFrameworkCommon::Instance().GetClusterDBInfo();
    std::string strFormerMaster;
    CPlannedChange change;
    change.workOut = [&] {
        database = {};
        if (!LoadDatabase(errors)) {
            return EXIT_COULD_NOT;
        }
        if (!IsPromotable(database, strNodeId, options.strPlace, errors)) {
            return EXIT_REFUSED;
        }
        strFormerMaster = database.GetMasterDB().GetNodeId();
        CClusterDBInfo promoted;
        database.GetCDBInfo(strNodeId, promoted);
        promoted.SetDBType(CLUSTER_DB_MASTER);
        stage.BeginChange();
        const int iCode = RunLogged(
            [&] { return CFrameworkCommon::Instance().UpdateClusterCDB(promoted, true); });
        if (iCode != ORVA_SUCCEED) {
            errors << "the promotion did not reach the store: " << CodeText(iCode) << '\n';
            return EXIT_COULD_NOT;
        }
        return EXIT_DONE;
    };
    change.question = [&] {
        return "Make node " + ShownText(strNodeId) +
               " the master of the centre database, in place of " + ShownText(strFormerMaster) +
               "?";
    };
    change.isAskedFor = [](const std::string& strPath) {
        const auto endsWith = [&strPath](const std::string& strEnd) {
            return strPath.size() > strEnd.size() &&
                   strPath.compare(strPath.size() - strEnd.size(), strEnd.size(), strEnd) == 0;
        };
        return endsWith(std::string(".") + PSZ_CLUSTER_DB_NODE) ||
               endsWith(std::string(".") + PSZ_CLUSTER_DB_IP);
    };
    change.report = [&] {
        output << options.strPlace << " holds " << DatabaseText(database) << '\n';
    };
    return CarryOut(stage, change, options, output, errors);
}
