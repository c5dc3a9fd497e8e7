#pragma once

#include <optional>
#include <string>
#include <vector>

#include "common_service/tarn_def.h"
#include "framework_service/cluster_db_znode_info.h"
#include "support/host_fixture.h"

namespace database_document {

inline constexpr char FILE_NAME[] = "cluster_db_znode_info";
inline constexpr char DEFAULT_DB[] = " 2  6001 ";

/// Node, role, address, port and token.
inline std::string Tell(const CClusterDBInfo& info) {
    return info.GetNodeId() + ' ' + std::to_string(info.GetDBType()) + ' ' + info.GetNodeIp() +
           ' ' + std::to_string(info.GetPort()) + ' ' + info.GetCDBToken();
}

inline CClusterDBInfo MakeDB(const std::string& strNodeId, int iDBType,
                             const std::string& strNodeIp, int iPort,
                             const std::string& strToken = "") {
    CClusterDBInfo info;
    info.SetNodeId(strNodeId);
    info.SetDBType(iDBType);
    info.SetNodeIp(strNodeIp);
    info.SetPort(iPort);
    info.SetCDBToken(strToken);
    return info;
}

using JsonText = std::optional<std::string>;

/// The JSON text of a record; its address is the node's name with "-ip", its port 7.
inline std::string Record(const std::string& strNodeId, const JsonText& token = "\"t\"") {
    return R"({"NodeCode":")" + strNodeId + R"(","NodeIp":")" + strNodeId + R"(-ip","DBPort":7)" +
           (token ? R"(,"DBToken":)" + *token : "") + "}";
}

inline std::string Document(const std::string& strMaster, const std::string& strSlaves) {
    return R"({"MasterDB":)" + strMaster + R"(,"SlaveDB":)" + strSlaves + "}";
}

inline CLogLine ParseLine(const std::string& strMessage, const std::string& strText) {
    return Err("ccluster db znode info", ORVA_DATA_INVALID, FILE_NAME, "ParseJson",
               strMessage + ", json text[" + strText + "].");
}

inline CLogLine IllegalLine(const std::string& strText) {
    return ParseLine("json illegal", strText);
}

inline CLogLine LastSlaveLine(const std::string& strText) {
    return ParseLine("parse salve db info", strText);
}

inline const CLogLine BAD_SLAVE = Err("ccluster db znode info", ORVA_DATA_INVALID, FILE_NAME,
                                      "ParseSingleSlaveDB", "illegal salve db json.");

class DatabaseDocument : public CHostTest {
protected:
    int Parse(const std::string& strText) { return m_document.ParseJson(strText.c_str()); }

    /// The records, the master first.
    std::vector<std::string> Arrangement() const {
        std::list<CClusterDBInfo> slaves;
        m_document.GetAllSlaveDB(slaves);
        std::vector<std::string> records = {Tell(m_document.GetMasterDB())};
        for (const CClusterDBInfo& info : slaves) {
            records.push_back(Tell(info));
        }
        return records;
    }

    std::vector<std::string> Tokens() const {
        std::vector<std::string> tokens;
        for (const std::string& strRecord : Arrangement()) {
            tokens.push_back(strRecord.substr(strRecord.rfind(' ') + 1));
        }
        return tokens;
    }

    CClusterDBZNodeInfo m_document;
};

}  // namespace database_document
