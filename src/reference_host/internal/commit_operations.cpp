#include "internal/commit_operations.h"

#include <algorithm>

#include "internal/store_tree.h"

namespace {

/// What one operation takes beside its path and text.
constexpr std::size_t MAX_OPERATION_FRAME = 64;

std::vector<std::string> WithParents(const std::string& strPath) {
    std::vector<std::string> paths = GetParentPaths(strPath);
    paths.push_back(strPath);
    return paths;
}

}  // namespace

CCommitOperations::CCommitOperations(const std::vector<CStoreCondition>& conditions,
                                     const std::vector<CStoreText>& texts, const CSeenNodes& seen)
    : m_seen(seen) {
    for (const CStoreCondition& condition : conditions) {
        AddPresence(condition.strPath);
    }
    std::vector<const CStoreText*> sorted;  // a parent comes before what is below it
    sorted.reserve(texts.size());
    for (const CStoreText& text : texts) {
        sorted.push_back(&text);
    }
    std::sort(sorted.begin(), sorted.end(), [](const CStoreText* pLeft, const CStoreText* pRight) {
        return pLeft->strPath < pRight->strPath;
    });
    for (const CStoreText* pText : sorted) {
        AddText(*pText);
    }
    for (const CStoreCondition& condition : conditions) {
        AddAbsence(condition.strPath);
    }
}

std::size_t CCommitOperations::GetLargestSize(const std::vector<CStoreCondition>& conditions,
                                              const std::vector<CStoreText>& texts) {
    std::size_t size = 0;
    for (const CStoreCondition& condition : conditions) {
        size += 2 * (condition.strPath.size() + MAX_OPERATION_FRAME);
    }
    for (const CStoreText& text : texts) {
        size += text.strText.size();
        for (const std::string& strPath : WithParents(text.strPath)) {
            size += strPath.size() + MAX_OPERATION_FRAME;
        }
    }
    return size;
}

bool CCommitOperations::IsMissing(const std::string& strPath) const {
    const auto it = m_seen.find(strPath);
    return it != m_seen.end() && it->second.iVersion == STORE_VERSION_ABSENT;
}

void CCommitOperations::AddPresence(const std::string& strPath) {
    if (!IsMissing(strPath)) {
        m_operations.emplace_back();
        zoo_check_op_init(&m_operations.back(), strPath.c_str(), m_seen.at(strPath).iTextVersion);
    }
}

void CCommitOperations::AddText(const CStoreText& text) {
    for (const std::string& strParent : GetParentPaths(text.strPath)) {
        if (IsMissing(strParent)) {
            AddCreation(strParent, nullptr);
        }
    }
    if (IsMissing(text.strPath)) {
        AddCreation(text.strPath, &text.strText);
        return;
    }
    m_operations.emplace_back();
    zoo_set_op_init(&m_operations.back(), text.strPath.c_str(), text.strText.data(),
                    static_cast<int>(text.strText.size()), ANY_VERSION, nullptr);
}

/// The servers have no check for it: a node that can be created is not there, and what the topmost
/// missing one is not, nodes below it are not either.
void CCommitOperations::AddAbsence(const std::string& strPath) {
    if (!IsMissing(strPath)) {
        return;
    }
    for (const std::string& strTop : WithParents(strPath)) {
        if (!IsMissing(strTop)) {
            continue;
        }
        if (AddCreation(strTop, nullptr)) {
            m_operations.emplace_back();
            zoo_delete_op_init(&m_operations.back(), m_seen.find(strTop)->first.c_str(),
                               ANY_VERSION);
        }
        return;
    }
}

/// False for a node that is already created here.
bool CCommitOperations::AddCreation(const std::string& strPath, const std::string* pText) {
    if (!m_setCreated.insert(strPath).second) {
        return false;
    }
    m_operations.emplace_back();
    zoo_create_op_init(&m_operations.back(), m_seen.find(strPath)->first.c_str(),
                       pText != nullptr ? pText->data() : nullptr,
                       pText != nullptr ? static_cast<int>(pText->size()) : NO_DATA,
                       &ZOO_OPEN_ACL_UNSAFE, ZOO_PERSISTENT, nullptr, 0);
    return true;
}
