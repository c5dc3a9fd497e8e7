#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "process.h"
#include "support/temp_dir.h"

/// A node of a cluster document, as text.
std::string NodeText(const std::string& strId, const std::string& strIp,
                     const std::vector<std::string>& containers,
                     const std::string& strStatus = "Normal");

/// A cluster document with these nodes.
std::string ClusterText(const std::vector<std::string>& nodes);

/// A CG entry, as text.
std::string CgText(const std::string& strNodeId, const std::string& strFloatCode,
                   const std::string& strFloatIp);

/// A centre database with a master and slaves on these nodes, as text.
std::string DatabaseText(const std::string& strMaster, const std::vector<std::string>& slaves);

/// A cloud storage document with one entry for the node.
std::string CloudStorageText(const std::string& strNodeId);

/// The program in a folder of its own, on a SQLite store there, with the plug-ins of the build.
class CServiceTest : public ::testing::Test {
protected:
    /// Runs the program with these arguments behind the option that names the store; without a
    /// terminal, or on one where this is typed.
    CProcessResult Run(const std::vector<std::string>& arguments) const;
    CProcessResult RunTyping(const std::string& strTyped,
                             const std::vector<std::string>& arguments) const;
    CProcessResult RunOn(const std::string& strStore, const std::vector<std::string>& arguments,
                         const std::optional<CTerminal>& terminal = std::nullopt) const;

    /// Writes a file below the folder "documents", which import takes.
    void WriteDocument(const std::string& strFile, const std::string& strText) const;
    CProcessResult ImportDocuments() const;

    /// What the store holds of a document, past the program; and puts it there.
    std::optional<std::string> Stored(const std::string& strSuffix) const;
    void Put(const std::string& strSuffix, const std::string& strText) const;

    std::string File(const std::string& strName) const { return m_dir.File(strName); }

    const CTempDir m_dir;
};

std::string ReadText(const std::string& strFile);

/// The name of a case of a table of cases.
template <typename Case>
std::string CaseName(const ::testing::TestParamInfo<Case>& caseInfo) {
    return caseInfo.param.pszName;
}
