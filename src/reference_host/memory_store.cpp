#include "reference_host/memory_store.h"

#include <map>
#include <mutex>
#include <set>
#include <utility>

#include "common_service/tarn_def.h"
#include "internal/store_tree.h"

struct __attribute__((visibility("hidden"))) CMemoryStore::CState {
    struct CNode {
        std::optional<std::string> text;
        std::int64_t iVersion;
    };

    /// The code with which this call must fail; 0 for none.
    int CountCallLocked();
    void PutLocked(const std::string& strPath, const std::optional<std::string>& text);
    void WriteLocked(const std::string& strPath, const std::string& strText, CNodeEvents& events);
    void GetLocked(const std::string& strPath, CStoreAnswer& answer) const;
    std::int64_t GetVersionLocked(const std::string& strPath) const;

    std::mutex mutex;  ///< guards everything below
    std::map<std::string, CNode> mapNode;
    std::int64_t iNewestVersion = 0;  ///< of all nodes: one that was taken away comes back newer
    CWatchTable watches;
    std::map<std::string, HoldLost> mapHold;  ///< the names that are held
    unsigned int uiCallCount = 0;
    unsigned int uiFailingCall = 0;
    int iFailingCode = 0;
};

int CMemoryStore::CState::CountCallLocked() {
    ++uiCallCount;
    return uiCallCount == uiFailingCall ? iFailingCode : 0;
}

void CMemoryStore::CState::PutLocked(const std::string& strPath,
                                     const std::optional<std::string>& text) {
    mapNode.insert_or_assign(strPath, CNode{text, ++iNewestVersion});
}

void CMemoryStore::CState::WriteLocked(const std::string& strPath, const std::string& strText,
                                       CNodeEvents& events) {
    for (const std::string& strParent : GetParentPaths(strPath)) {
        if (mapNode.count(strParent) == 0) {
            PutLocked(strParent, std::nullopt);
            events.AddCreated(strParent, watches);
        }
    }
    if (mapNode.count(strPath) == 0) {
        events.AddCreated(strPath, watches);
    } else {
        events.AddChanged(strPath, watches);
    }
    PutLocked(strPath, strText);
}

/// Into the answer, whose text keeps its memory from read to read.
void CMemoryStore::CState::GetLocked(const std::string& strPath, CStoreAnswer& answer) const {
    const auto it = mapNode.find(strPath);
    answer.bExists = it != mapNode.end();
    if (answer.bExists) {
        answer.text = it->second.text;
        answer.iVersion = it->second.iVersion;
    } else {
        answer.text.reset();
        answer.iVersion = STORE_VERSION_ABSENT;
    }
}

std::int64_t CMemoryStore::CState::GetVersionLocked(const std::string& strPath) const {
    const auto it = mapNode.find(strPath);
    return it == mapNode.end() ? STORE_VERSION_ABSENT : it->second.iVersion;
}

CMemoryStore::CMemoryStore() : m_pState(std::make_unique<CState>()) {}

CMemoryStore::~CMemoryStore() = default;

int CMemoryStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    const int iRet = m_pState->CountCallLocked();
    if (iRet != 0) {
        return iRet;
    }
    m_pState->watches.Set(strPath, pWatcher);
    m_pState->GetLocked(strPath, answer);
    return 0;
}

int CMemoryStore::Write(const std::string& strPath, const std::string& strText) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(m_pState->mutex);
        const int iRet = m_pState->CountCallLocked();
        if (iRet != 0) {
            return iRet;
        }
        m_pState->WriteLocked(strPath, strText, events);
    }
    events.Fire();
    return 0;
}

int CMemoryStore::List(const std::string& strPath, std::vector<std::string>& children) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    const int iRet = m_pState->CountCallLocked();
    if (iRet != 0) {
        return iRet;
    }
    std::set<std::string> setName;
    for (const auto& [strOther, node] : m_pState->mapNode) {
        if (auto name = GetChildName(strPath, strOther)) {
            setName.insert(std::move(*name));
        }
    }
    if (setName.empty() && strPath != "/" && m_pState->mapNode.count(strPath) == 0) {
        return STORE_NODE_ABSENT;
    }
    children.assign(setName.begin(), setName.end());
    return 0;
}

int CMemoryStore::Commit(const std::vector<CStoreCondition>& conditions,
                         const std::vector<CStoreText>& texts) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(m_pState->mutex);
        const int iRet = m_pState->CountCallLocked();
        if (iRet != 0) {
            return iRet;
        }
        if (NamesANodeTwice(texts)) {
            return ORVA_PARA_INVALID;
        }
        for (const CStoreCondition& condition : conditions) {
            if (m_pState->GetVersionLocked(condition.strPath) != condition.iVersion) {
                return STORE_CONDITION_FAILED;
            }
        }
        for (const CStoreText& text : texts) {
            m_pState->WriteLocked(text.strPath, text.strText, events);
        }
    }
    events.Fire();
    return 0;
}

int CMemoryStore::Hold(const std::string& strPath, const std::string& strText,
                       const HoldLost& onLost, CStoreAnswer& holder) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(m_pState->mutex);
        const int iRet = m_pState->CountCallLocked();
        if (iRet != 0) {
            return iRet;
        }
        const bool bTaken = m_pState->mapHold.try_emplace(strPath, onLost).second;
        if (bTaken) {
            m_pState->WriteLocked(strPath, strText, events);
        }
        m_pState->GetLocked(strPath, holder);
        if (!bTaken) {
            return STORE_NAME_HELD;
        }
    }
    events.Fire();
    return 0;
}

int CMemoryStore::Release(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    const int iRet = m_pState->CountCallLocked();
    if (iRet == 0) {
        m_pState->mapHold.erase(strPath);
    }
    return iRet;
}

int CMemoryStore::FindHolder(const std::string& strPath, CStoreAnswer& holder) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    const int iRet = m_pState->CountCallLocked();
    if (iRet != 0) {
        return iRet;
    }
    holder = CStoreAnswer();
    if (m_pState->mapHold.count(strPath) != 0) {
        m_pState->GetLocked(strPath, holder);
    }
    return 0;
}

void CMemoryStore::FailCall(unsigned int uiNth, int iCode) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->uiFailingCall = m_pState->uiCallCount + uiNth;
    m_pState->iFailingCode = iCode;
}

unsigned int CMemoryStore::GetCallCount() const {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    return m_pState->uiCallCount;
}

CStoreAnswer CMemoryStore::GetNode(const std::string& strPath) const {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    CStoreAnswer answer;
    m_pState->GetLocked(strPath, answer);
    return answer;
}

std::optional<std::string> CMemoryStore::Get(const std::string& strPath) const {
    return GetNode(strPath).text;
}

void CMemoryStore::Put(const std::string& strPath, const std::optional<std::string>& text) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->PutLocked(strPath, text);
}

void CMemoryStore::Erase(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->mapNode.erase(strPath);
}

void CMemoryStore::LoseHold(const std::string& strPath) {
    std::map<std::string, HoldLost>::node_type lost;
    {
        const std::lock_guard<std::mutex> guard(m_pState->mutex);
        lost = m_pState->mapHold.extract(strPath);
    }
    if (!lost.empty()) {
        lost.mapped()();
    }
}
