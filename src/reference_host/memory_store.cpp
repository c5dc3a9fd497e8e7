#include "reference_host/memory_store.h"

#include <map>

#include "internal/store_tree.h"

struct CMemoryStore::CState {
    std::map<std::string, std::optional<std::string>> mapNode;
    CWatchTable watches;
};

CMemoryStore::CMemoryStore() : m_pState(std::make_unique<CState>()) {}

CMemoryStore::~CMemoryStore() = default;

int CMemoryStore::Read(const std::string& strPath, StoreWatcher pWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    const int iRet = CountCallLocked();
    if (iRet != 0) {
        return iRet;
    }
    m_pState->watches.Set(strPath, pWatcher);
    GetNodeLocked(strPath, answer);
    return 0;
}

int CMemoryStore::Write(const std::string& strPath, const std::string& strText) {
    CNodeEvents events;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const int iRet = CountCallLocked();
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
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_uiFailingCall = m_uiCallCount + uiNth;
    m_iFailingCode = iCode;
}

unsigned int CMemoryStore::GetCallCount() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_uiCallCount;
}

CStoreAnswer CMemoryStore::GetNode(const std::string& strPath) const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    CStoreAnswer answer;
    GetNodeLocked(strPath, answer);
    return answer;
}

std::optional<std::string> CMemoryStore::Get(const std::string& strPath) const {
    return GetNode(strPath).text;
}

void CMemoryStore::Put(const std::string& strPath, const std::optional<std::string>& text) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_pState->mapNode[strPath] = text;
}

void CMemoryStore::Erase(const std::string& strPath) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_pState->mapNode.erase(strPath);
}

int CMemoryStore::CountCallLocked() {
    ++m_uiCallCount;
    return m_uiCallCount == m_uiFailingCall ? m_iFailingCode : 0;
}

void CMemoryStore::GetNodeLocked(const std::string& strPath, CStoreAnswer& answer) const {
    const auto it = m_pState->mapNode.find(strPath);
    answer.bExists = it != m_pState->mapNode.end();
    if (answer.bExists) {
        answer.text = it->second;
    } else {
        answer.text.reset();
    }
}
