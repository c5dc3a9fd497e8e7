#pragma once

#ifndef THREADED
#define THREADED
#endif
#include <zookeeper/zookeeper.h>

#include <cstdint>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "reference_host/store.h"

constexpr int ANY_VERSION = -1;
constexpr int NO_DATA = -1;

/// What ZooKeeper servers said of a node.
struct CSeenNode {
    std::int64_t iVersion = STORE_VERSION_ABSENT;  ///< the store's: the transaction of the text
    int iTextVersion = ANY_VERSION;                ///< the servers': how often the text was set

    bool operator==(const CSeenNode& other) const { return iVersion == other.iVersion; }
};

/// The nodes of a commit, and those above the missing ones up to one that is there.
using CSeenNodes = std::map<std::string, CSeenNode>;

/// A commit as the operations of one request, which the servers do all or none. They hold for the
/// nodes as they were seen, and are refused for others. Conditions, texts and nodes must outlive
/// them.
class CCommitOperations {
public:
    CCommitOperations(const std::vector<CStoreCondition>& conditions,
                      const std::vector<CStoreText>& texts, const CSeenNodes& seen);

    const std::vector<zoo_op_t>& Get() const { return m_operations; }

    /// An upper bound of the request's length, whatever nodes are there.
    static std::size_t GetLargestSize(const std::vector<CStoreCondition>& conditions,
                                      const std::vector<CStoreText>& texts);

private:
    bool IsMissing(const std::string& strPath) const;
    void AddPresence(const std::string& strPath);
    void AddText(const CStoreText& text);
    void AddAbsence(const std::string& strPath);
    bool AddCreation(const std::string& strPath, const std::string* pText);

    const CSeenNodes& m_seen;
    std::set<std::string> m_setCreated;
    std::vector<zoo_op_t> m_operations;
};
