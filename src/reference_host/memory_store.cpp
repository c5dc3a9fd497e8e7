#include "reference_host/memory_store.h"

#include <map>
#include <mutex>

#include "internal/store_tree.h"

struct CMemoryStore::CState {
    /// The code with which this call must fail; 0 for none.
    int CountCallLocked() {
        ++uiCallCount;
        return uiCallCount == uiFailingCall ? iFailingCode : 0;
    }

    void GetNodeLocked(const std::string& strPath, CStoreAnswer& answer) const {
        const auto it = mapNode.find(strPath);
        answer.bExists = it != mapNode.end();
        if (answer.bExists) {
            answer.text = it->second;
        } else {
            answer.text.reset();
        }
    }

    std::mutex mutex;  ///< guards everything below
    std::map<std::string, std::optional<std::string>> mapNode;
    CWatchTable watches;
    unsigned int uiCallCount = 0;
    unsigned int uiFailingCall = 0;
    int iFailingCode = 0;
};

CMemoryStore::CMemoryStore() : m_pState(std::make_unique<CState>()) {}

CMemoryStore::~CMemoryStore() = default;

int CMemoryStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    const int iRet = m_pState->CountCallLocked();
    if (iRet != 0) {
        return iRet;
    }
    m_pState->watches.Set(strPath, pWatcher);
    m_pState->GetNodeLocked(strPath, answer);
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
        for (const std::string& strParent : GetParentPaths(strPath)) {
            if (m_pState->mapNode.emplace(strParent, std::nullopt).second) {
                events.AddCreated(strParent, m_pState->watches);
            }
        }
        if (m_pState->mapNode.insert_or_assign(strPath, strText).second) {
            events.AddCreated(strPath, m_pState->watches);
        } else {
            events.AddChanged(strPath, m_pState->watches);
        }
    }
    events.Fire();
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
    m_pState->GetNodeLocked(strPath, answer);
    return answer;
}

std::optional<std::string> CMemoryStore::Get(const std::string& strPath) const {
    return GetNode(strPath).text;
}

void CMemoryStore::Put(const std::string& strPath, const std::optional<std::string>& text) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->mapNode[strPath] = text;
}

void CMemoryStore::Erase(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_pState->mutex);
    m_pState->mapNode.erase(strPath);
}
