#include "command/stage.h"

#include <utility>

CStage::CStage(std::shared_ptr<IStore> pStore) : m_pStore(std::move(pStore)) {}

CStage::CNode* CStage::GetNodeLocked(const std::string& strPath, int& iCode) {
    auto it = m_nodes.find(strPath);
    if (it == m_nodes.end()) {
        CNode node;
        iCode = m_pStore->Read(strPath, nullptr, node.found);
        if (iCode != 0) {
            return nullptr;
        }
        it = m_nodes.emplace(strPath, std::move(node)).first;
    }
    it->second.bGround = it->second.bGround || m_bChanging;
    return &it->second;
}

int CStage::Read(const std::string& strPath, StoreWatcher, CStoreAnswer& answer) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    int iCode = 0;
    const CNode* const pNode = GetNodeLocked(strPath, iCode);
    if (pNode == nullptr) {
        return iCode;
    }
    answer = pNode->found;
    if (pNode->written) {
        answer.bExists = true;
        answer.text = pNode->written;
    }
    return 0;
}

int CStage::Write(const std::string& strPath, const std::string& strText) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    int iCode = 0;
    CNode* const pNode = GetNodeLocked(strPath, iCode);
    if (pNode != nullptr) {
        pNode->written = strText;
    }
    return iCode;
}

int CStage::Commit(const std::vector<CStoreCondition>& /*conditions*/,
                   const std::vector<CStoreText>& texts) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    int iCode = 0;
    for (auto it = texts.begin(); it != texts.end() && iCode == 0; ++it) {
        GetNodeLocked(it->strPath, iCode);
    }
    for (auto it = texts.begin(); it != texts.end() && iCode == 0; ++it) {
        m_nodes.at(it->strPath).written = it->strText;
    }
    return iCode;
}

int CStage::List(const std::string& strPath, std::vector<std::string>& children) {
    return m_pStore->List(strPath, children);
}

void CStage::Restart() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_nodes.clear();
    m_bChanging = false;
}

void CStage::BeginChange() {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (auto& [strPath, node] : m_nodes) {
        node.written.reset();
    }
    m_bChanging = true;
}

std::vector<CStagedChange> CStage::GetChanges() const {
    const std::lock_guard<std::mutex> guard(m_mutex);
    std::vector<CStagedChange> changes;
    for (const auto& [strPath, node] : m_nodes) {
        if (node.written && node.written != node.found.text) {
            changes.push_back({strPath, node.found.text, *node.written});
        }
    }
    return changes;
}

int CStage::CommitChanges() {
    std::vector<CStoreCondition> conditions;
    std::vector<CStoreText> texts;
    for (const CStagedChange& change : GetChanges()) {
        texts.push_back({change.strPath, change.strAfter});
    }
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        for (const auto& [strPath, node] : m_nodes) {
            if (node.bGround) {
                conditions.push_back({strPath, node.found.iVersion});
            }
        }
    }
    return m_pStore->Commit(conditions, texts);
}

int CStage::FindForeignChanges(std::vector<CStagedChange>& changes) {
    const std::lock_guard<std::mutex> guard(m_mutex);
    for (const auto& [strPath, node] : m_nodes) {
        CStoreAnswer now;
        if (!node.bGround) {
            continue;
        }
        if (const int iCode = m_pStore->Read(strPath, nullptr, now); iCode != 0) {
            return iCode;
        }
        if (now.iVersion != node.found.iVersion) {
            changes.push_back({strPath, node.found.text, now.text.value_or("")});
        }
    }
    return 0;
}
