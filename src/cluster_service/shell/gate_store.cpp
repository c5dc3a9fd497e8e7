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

bool IsNamed(const std::vector<CStoreText>& texts, const std::string& strPath) {
    return std::any_of(texts.begin(), texts.end(),
                       [&](const CStoreText& text) { return text.strPath == strPath; });
}

}  // namespace

CGateStore::CGateStore(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

int CGateStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const int iCode = Done(m_pStore->Read(strPath, pWatcher, answer));
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const Texts* const pTexts : {&m_waiting, &m_kept}) {
        if (const auto it = pTexts->find(strPath); iCode == 0 && it != pTexts->end()) {
            answer.bExists = true;
            answer.text = it->second;
        }
    }
    return iCode;
}

int CGateStore::Write(const std::string& strPath, const std::string& strText) {
    return Wait(strPath, strText) ? 0 : Put({{strPath, strText}});
}

int CGateStore::List(const std::string& strPath, std::vector<std::string>& children) {
    std::vector<std::string> found;
    const int iCode = Done(m_pStore->List(strPath, found));
    const std::lock_guard<std::mutex> guard(m_mutex);
    bool bHere = false;
    for (const Texts* const pTexts : {&m_waiting, &m_kept}) {
        bHere = bHere || pTexts->count(strPath) != 0;
        for (const auto& [strKept, strText] : *pTexts) {
            if (std::string strChild = ChildOnTheWay(strPath, strKept); !strChild.empty()) {
                found.push_back(std::move(strChild));
            }
        }
    }
    const bool bThere = iCode == STORE_NODE_ABSENT && (!found.empty() || bHere);
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
    return Keep(texts) ? 0 : Send(conditions, texts);
}

int CGateStore::WriteTogether(Texts texts) {
    std::vector<CStoreText> list;
    for (auto& [strPath, strText] : texts) {
        list.push_back({strPath, std::move(strText)});
    }
    return Put(std::move(list));
}

int CGateStore::Put(std::vector<CStoreText> texts) {
    return Keep(texts) ? 0 : Send({}, std::move(texts));
}

int CGateStore::WriteWaiting() {
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        m_bNextWaits = false;
    }
    return IsAnyWaiting() ? Send({}, {}) : 0;
}

int CGateStore::Send(const std::vector<CStoreCondition>& conditions,
                     std::vector<CStoreText> texts) {
    const Texts waiting = GetWaiting();
    for (const auto& [strPath, strText] : waiting) {
        if (!IsNamed(texts, strPath)) {
            texts.push_back({strPath, strText});
        }
    }
    const bool bOne = conditions.empty() && texts.size() == 1;
    const int iCode = Done(bOne ? m_pStore->Write(texts.front().strPath, texts.front().strText)
                                : m_pStore->Commit(conditions, texts));
    if (iCode == 0) {
        ForgetWritten(waiting);
    }
    return iCode;
}

CGateStore::Texts CGateStore::GetWaiting() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_waiting;
}

/// What was written anew meanwhile waits on.
void CGateStore::ForgetWritten(const Texts& texts) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const auto& [strPath, strText] : texts) {
        if (const auto it = m_waiting.find(strPath);
            it != m_waiting.end() && it->second == strText) {
            m_waiting.erase(it);
        }
    }
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

void CGateStore::LetWait(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_strMayWait = strPath;
}

bool CGateStore::IsAnyWaiting() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return !m_waiting.empty();
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
    m_bNextWaits = m_bNextWaits && bWell;
    return iCode;
}

bool CGateStore::Wait(const std::string& strPath, const std::string& strText) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    if (m_bShut || strPath != m_strMayWait) {
        return false;
    }
    if (m_bNextWaits) {
        m_waiting[strPath] = strText;
    }
    return std::exchange(m_bNextWaits, true);
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
