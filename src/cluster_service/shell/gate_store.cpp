#include "shell/gate_store.h"

#include <algorithm>
#include <utility>

namespace {

/// How the stores and their clients say that a call ran out of time.
constexpr int CODES_OUT_OF_TIME[] = {
    STORE_OUTCOME_UNKNOWN,
    -4,  // ZooKeeper: the connection was lost
    -7,  // ZooKeeper: the operation timed out
    5,   // SQLite: somebody else has the file locked
};

bool IsOutOfTime(int iCode) {
    return std::find(std::begin(CODES_OUT_OF_TIME), std::end(CODES_OUT_OF_TIME), iCode) !=
           std::end(CODES_OUT_OF_TIME);
}

/// The name of the child of the folder on the way to the node; empty for a node elsewhere.
std::string ChildOnTheWay(const std::string& strFolder, const std::string& strNode) {
    const std::string strPrefix = strFolder == "/" ? strFolder : strFolder + '/';
    if (strNode.compare(0, strPrefix.size(), strPrefix) != 0) {
        return "";
    }
    return strNode.substr(strPrefix.size(), strNode.find('/', strPrefix.size()) - strPrefix.size());
}

}  // namespace

CGateStore::CGateStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

int CGateStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const int iCode = Done(m_pStore->Read(strPath, pWatcher, answer));
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (const auto it = m_kept.find(strPath); iCode == 0 && it != m_kept.end()) {
        answer.bExists = true;
        answer.text = it->second;
    }
    return iCode;
}

int CGateStore::Write(const std::string& strPath, const std::string& strText) {
    return Keep({{strPath, strText}}) ? 0 : Done(m_pStore->Write(strPath, strText));
}

int CGateStore::List(const std::string& strPath, std::vector<std::string>& children) {
    std::vector<std::string> found;
    const int iCode = Done(m_pStore->List(strPath, found));
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const auto& [strKept, strText] : m_kept) {
        if (std::string strChild = ChildOnTheWay(strPath, strKept); !strChild.empty()) {
            found.push_back(std::move(strChild));
        }
    }
    const bool bThere =
        iCode == STORE_NODE_ABSENT && (!found.empty() || m_kept.count(strPath) != 0);
    if (iCode != 0 && !bThere) {
        return iCode;
    }
    std::sort(found.begin(), found.end());
    found.erase(std::unique(found.begin(), found.end()), found.end());
    children = std::move(found);
    return 0;
}

int CGateStore::Commit(const std::vector<CStoreCondition>& conditions,
                       const std::vector<CStoreText>& texts) {
    return Keep(texts) ? 0 : Done(m_pStore->Commit(conditions, texts));
}

void CGateStore::Shut() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bShut = true;
}

void CGateStore::Open() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_bShut = false;
    m_kept.clear();
}

bool CGateStore::IsAway() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_bAway;
}

uint64_t CGateStore::GetFailures() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_ullFailures;
}

int CGateStore::Done(int iCode) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const bool bWell = iCode == 0 || iCode == STORE_NODE_ABSENT;
    m_bAway = IsOutOfTime(iCode) || (m_bAway && !bWell);
    m_ullFailures += bWell ? 0 : 1;
    return iCode;
}

bool CGateStore::Keep(const std::vector<CStoreText>& texts) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_bShut) {
        for (const CStoreText& text : texts) {
            m_kept[text.strPath] = text.strText;
        }
    }
    return m_bShut;
}
