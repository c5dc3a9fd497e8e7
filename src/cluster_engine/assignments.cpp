#include "cluster_engine/assignments.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <set>
#include <tuple>
#include <utility>

#include "cluster_engine/json_fields.h"
#include "common_service/tarn_def.h"

namespace {

constexpr uint32_t NUMERIC_FORM_VERSION = 1;

/// A document takes no further task beyond that: a fuller one would be warned of.
constexpr uint32_t NUMERIC_FULL_BYTES = 52000;

/// So many documents are well below what a ZooKeeper server takes at once.
constexpr std::size_t NUMERIC_DOCUMENTS_TOGETHER = 8;

constexpr char PSZ_ASSIGNMENT[] = "/Engine/Assignment";
constexpr char PSZ_HOMELESS[] = "/Engine/Homeless";
constexpr char PSZ_INDEX[] = "/Engine/Index";

struct CStoredTask {
    CTaskForm task;
    uint64_t ullDecision = 0;
    std::string strAsker;
    std::string strCameFrom;
    bool bBalanced = true;

    CStoredTask() = default;
    explicit CStoredTask(const CAssignedTask& assigned)
        : task(assigned.task),
          ullDecision(assigned.ullDecision),
          strAsker(assigned.strAsker),
          strCameFrom(assigned.strCameFrom),
          bBalanced(assigned.bBalanced) {}

    CAssignedTask ToAssigned() const {
        CAssignedTask assigned;
        assigned.task = task.ToTask();
        assigned.ullDecision = ullDecision;
        assigned.strAsker = strAsker;
        assigned.strCameFrom = strCameFrom;
        assigned.bBalanced = bBalanced;
        return assigned;
    }

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        CTaskForm::Fields(form, self.task);
        form.Need("decision", self.ullDecision);
        form.May("asker", self.strAsker);
        form.May("from", self.strCameFrom);
        form.May("balanced", self.bBalanced, true);
    }
};

}  // namespace

struct CAssignmentDocument {
    uint32_t uiVersion = NUMERIC_FORM_VERSION;
    uint64_t ullHighest = 0;  ///< of all decisions until it was written
    std::vector<CStoredTask> tasks;
    std::vector<std::string> gone;

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("version", self.uiVersion);
        form.May("highest", self.ullHighest);
        form.May("tasks", self.tasks);
        form.May("gone", self.gone);
    }
};

namespace {

/// What a start cannot find by the members of the cluster.
struct CIndexDocument {
    uint32_t uiVersion = NUMERIC_FORM_VERSION;
    std::vector<std::string> homeless;   ///< types
    std::vector<CPlaceForm> containers;  ///< with documents

    template <typename F, typename S>
    static void Fields(F& form, S& self) {
        form.Need("version", self.uiVersion);
        form.May("homeless", self.homeless);
        form.May("containers", self.containers);
    }
};

template <typename T>
bool ReadForm(const std::string& strText, T& form) {
    Json::Value json;
    CFieldFault fault;
    return ParseJsonText(strText.data(), strText.data() + strText.size(), json, fault) &&
           FromJson(json, form, fault) && form.uiVersion == NUMERIC_FORM_VERSION;
}

std::string Suffix(const CContainerAddr& addr, uint32_t uiNumber) {
    const std::string strType = '/' + StoreName(addr.GetContainerType());
    const std::string strNumber = '/' + std::to_string(uiNumber);
    return IsHomeless(addr)
               ? PSZ_HOMELESS + strType + strNumber
               : PSZ_ASSIGNMENT + ('/' + StoreName(addr.GetNodeId())) + strType + strNumber;
}

std::string HolderKey(const std::string& strType, const std::string& strTaskId) {
    return strType + '\0' + strTaskId;
}

/// In quotation marks, and with a comma: less than the task itself takes.
uint32_t GoneBytes(const std::string& strTaskId) {
    const auto iEscaped = std::count_if(strTaskId.begin(), strTaskId.end(),
                                        [](char cByte) { return cByte == '"' || cByte == '\\'; });
    return static_cast<uint32_t>(strTaskId.size() + static_cast<std::size_t>(iEscaped) + 3);
}

/// The document that a task of that size goes to.
uint32_t FindDocument(CContainerRecord& record, uint32_t uiBytes) {
    uint32_t uiNumber = 0;
    while (uiNumber < record.documentBytes.size() &&
           (record.documentBytes[uiNumber] + uiBytes > NUMERIC_FULL_BYTES ||
            record.unreadableDocuments.count(uiNumber) != 0)) {
        ++uiNumber;
    }
    if (uiNumber == record.documentBytes.size()) {
        record.documentBytes.push_back(0);
    }
    return uiNumber;
}

bool IsNewer(const CAssignedTask& task, const CAssignedTask& other, const CContainerAddr& holder) {
    return task.ullDecision != other.ullDecision ? task.ullDecision > other.ullDecision
                                                 : task.strCameFrom == holder.GetNodeId();
}

}  // namespace

bool CAssignments::CDocumentKey::operator<(const CDocumentKey& other) const {
    return std::forward_as_tuple(addr.GetNodeId(), addr.GetContainerType(), uiNumber) <
           std::forward_as_tuple(other.addr.GetNodeId(), other.addr.GetContainerType(),
                                 other.uiNumber);
}

/// Costs follow the reports, and count with the most that they can take.
uint32_t CAssignments::BytesOf(const CAssignedTask& task) {
    constexpr int32_t WIDEST = std::numeric_limits<int32_t>::min();
    CStoredTask stored(task);
    stored.task.costs = {WIDEST, WIDEST, WIDEST, WIDEST, WIDEST};
    return static_cast<uint32_t>(JsonText(stored).size() + 1);
}

CContainerRecord* CAssignments::Find(const CContainerAddr& addr) {
    if (IsHomeless(addr)) {
        const auto it = m_state.homeless.find(addr.GetContainerType());
        return it != m_state.homeless.end() ? &it->second : nullptr;
    }
    const auto it = m_state.containers.find(addr);
    return it != m_state.containers.end() && it->first == addr ? &it->second : nullptr;
}

CAssignedTask* CAssignments::Find(const CContainerAddr& addr, const std::string& strTaskId) {
    CContainerRecord* const pRecord = Find(addr);
    if (pRecord == nullptr) {
        return nullptr;
    }
    const auto it = pRecord->tasks.find(strTaskId);
    return it != pRecord->tasks.end() ? &it->second : nullptr;
}

const CContainerAddr* CAssignments::Holder(const std::string& strType,
                                           const std::string& strTaskId) const {
    const auto it = m_holders.find(HolderKey(strType, strTaskId));
    return it != m_holders.end() ? &it->second : nullptr;
}

bool CAssignments::IsDirty(const CContainerAddr& addr) const {
    const auto it = m_dirty.lower_bound({addr, 0});
    return it != m_dirty.end() && it->first.addr == addr;
}

bool CAssignments::RunsElsewhere(const std::string& strType, const std::string& strTaskId) const {
    return std::any_of(m_state.withForeign.begin(), m_state.withForeign.end(),
                       [&](const CContainerAddr& addr) {
                           const CContainerRecord& record = m_state.containers.at(addr);
                           return addr.GetContainerType() == strType && !record.bSilent &&
                                  record.foreign.count(strTaskId) != 0;
                       });
}

void CAssignments::Give(const CContainerAddr& addr, CAssignedTask task) {
    const std::string strTaskId = task.task.GetTaskId();
    const std::string& strType = addr.GetContainerType();
    if (const CContainerAddr* const pHolder = Holder(strType, strTaskId); pHolder != nullptr) {
        const CContainerAddr holder = *pHolder;
        CAssignedTask former = TakeOut(holder, strTaskId);
        Find(holder)->documentBytes[former.uiDocument] += former.uiBytes;
        Change(holder, former.uiDocument).leaving[strTaskId] = std::move(former);
    }
    Insert(addr, std::move(task));
}

void CAssignments::Insert(const CContainerAddr& addr, CAssignedTask task) {
    if (IsHomeless(addr) && m_state.homeless.count(addr.GetContainerType()) == 0) {
        m_state.homeless[addr.GetContainerType()];
        m_bIndexDirty = true;
    }
    CContainerRecord& record = *Find(addr);
    const std::string strTaskId = task.task.GetTaskId();
    ForgetGone(addr, strTaskId);
    task.uiBytes = BytesOf(task);
    task.uiDocument = FindDocument(record, task.uiBytes);
    record.documentBytes[task.uiDocument] += task.uiBytes;
    CChange& change = Change(addr, task.uiDocument);
    change.bEntered = true;
    if (const auto it = change.leaving.find(strTaskId); it != change.leaving.end()) {
        record.documentBytes[task.uiDocument] -= it->second.uiBytes;
        change.leaving.erase(it);
    }
    m_state.ullHighestDecision = std::max(m_state.ullHighestDecision, task.ullDecision);
    m_holders[HolderKey(addr.GetContainerType(), strTaskId)] = addr;
    record.tasks[strTaskId] = std::move(task);
}

CAssignedTask CAssignments::TakeOut(const CContainerAddr& addr, const std::string& strTaskId) {
    CContainerRecord& record = *Find(addr);
    const auto it = record.tasks.find(strTaskId);
    CAssignedTask task = std::move(it->second);
    record.tasks.erase(it);
    record.documentBytes[task.uiDocument] -= task.uiBytes;
    m_holders.erase(HolderKey(addr.GetContainerType(), strTaskId));
    NoteGone(addr, strTaskId, {task.uiDocument, task.ullHandedLast, false});
    return task;
}

/// The document is written anew; nobody reports for what is homeless.
void CAssignments::NoteGone(const CContainerAddr& addr, const std::string& strTaskId,
                            const CGoneTask& gone) {
    Change(addr, gone.uiDocument);
    if (!IsHomeless(addr)) {
        CContainerRecord& record = *Find(addr);
        record.gone[strTaskId] = gone;
        record.documentBytes[gone.uiDocument] += GoneBytes(strTaskId);
    }
}

void CAssignments::End(const std::string& strType, const std::string& strTaskId) {
    if (const CContainerAddr* const pHolder = Holder(strType, strTaskId); pHolder != nullptr) {
        TakeOut(CContainerAddr(*pHolder), strTaskId);
    }
    for (const CContainerAddr& addr : m_state.withForeign) {
        if (addr.GetContainerType() == strType && Find(addr)->foreign.count(strTaskId) != 0) {
            Drop(addr, strTaskId);
        }
    }
}

void CAssignments::SetForeign(const CContainerAddr& addr, std::set<std::string> taskIds) {
    if (taskIds.empty()) {
        m_state.withForeign.erase(addr);
    } else {
        m_state.withForeign.insert(addr);
    }
    Find(addr)->foreign = std::move(taskIds);
}

void CAssignments::Drop(const CContainerAddr& addr, const std::string& strTaskId) {
    CContainerRecord& record = *Find(addr);
    if (record.gone.count(strTaskId) == 0) {
        NoteGone(addr, strTaskId, {FindDocument(record, GoneBytes(strTaskId)), 0, false});
    }
}

void CAssignments::ForgetGone(const CContainerAddr& addr, const std::string& strTaskId) {
    CContainerRecord& record = *Find(addr);
    const auto it = record.gone.find(strTaskId);
    if (it == record.gone.end()) {
        return;
    }
    record.documentBytes[it->second.uiDocument] -= GoneBytes(strTaskId);
    Change(addr, it->second.uiDocument);
    record.gone.erase(it);
}

CAssignments::CChange& CAssignments::Change(const CContainerAddr& addr, uint32_t uiNumber) {
    if (!IsHomeless(addr)) {
        m_bIndexDirty = m_indexed.insert(addr).second || m_bIndexDirty;
    }
    CChange& change = m_dirty[{addr, uiNumber}];
    change.bWritten = false;
    return change;
}

void CAssignments::Remove(const CContainerAddr& addr) {
    const CContainerRecord* const pRecord = Find(addr);
    for (uint32_t ui = 0; ui < pRecord->documentBytes.size(); ++ui) {
        if (pRecord->unreadableDocuments.count(ui) == 0) {
            Change(addr, ui).leaving.clear();
        }
    }
    m_state.containers.erase(addr);
    m_state.withForeign.erase(addr);
    m_state.shifts.erase(addr);
}

int CAssignments::Renew(const CContainerAddr& addr) {
    for (uint32_t ui = 0;; ++ui) {
        std::string strText;
        bool bAbsent = false;
        int iCode = m_store.Read(Suffix(addr, ui), strText, bAbsent);
        if (iCode != ORVA_SUCCEED || bAbsent) {
            return iCode;
        }
        CAssignmentDocument document;
        if (!ReadForm(strText, document)) {
            return ORVA_DATA_INVALID;
        }
        iCode = m_store.Write(Suffix(addr, ui), JsonText(CAssignmentDocument()));
        if (iCode != ORVA_SUCCEED) {
            return iCode;
        }
    }
}

int CAssignments::Load(std::vector<std::string>& unreadable) {
    m_holders.clear();
    m_dirty.clear();
    m_unreadLeft.clear();
    m_indexed.clear();
    m_bIndexDirty = false;
    int iCode = ReadIndex(unreadable);
    for (auto& [addr, record] : m_state.containers) {
        iCode = iCode != ORVA_SUCCEED ? iCode : ReadDocuments(addr, record, unreadable);
    }
    for (auto& [strType, record] : m_state.homeless) {
        iCode =
            iCode != ORVA_SUCCEED ? iCode : ReadDocuments(HomelessOf(strType), record, unreadable);
    }
    const std::set<CContainerAddr> indexed = m_indexed;
    for (auto it = indexed.begin(); it != indexed.end() && iCode == ORVA_SUCCEED; ++it) {
        iCode = m_state.containers.count(*it) != 0 ? ORVA_SUCCEED : ReadOf(*it, unreadable);
    }
    return iCode;
}

void CAssignments::Restore(COwners owners) {
    m_indexed = std::move(owners.all);
    m_unreadLeft = std::move(owners.unreadLeft);
    m_holders.clear();
    const auto take = [this](const CContainerAddr& addr, const CContainerRecord& record) {
        for (const auto& [strTaskId, task] : record.tasks) {
            m_holders[HolderKey(addr.GetContainerType(), strTaskId)] = addr;
        }
    };
    for (const auto& [addr, record] : m_state.containers) {
        take(addr, record);
    }
    for (const auto& [strType, record] : m_state.homeless) {
        take(HomelessOf(strType), record);
    }
}

/// What a container that is no member any more still has is homeless, unless somebody else has it.
int CAssignments::ReadOf(const CContainerAddr& addr, std::vector<std::string>& unreadable) {
    CContainerRecord& record = m_state.containers[addr];
    const int iCode = ReadDocuments(addr, record, unreadable);
    while (iCode == ORVA_SUCCEED && !record.tasks.empty()) {
        CAssignedTask task = record.tasks.begin()->second;
        Give(HomelessOf(addr.GetContainerType()), std::move(task));
    }
    if (iCode == ORVA_SUCCEED) {
        if (!record.unreadableDocuments.empty()) {
            m_unreadLeft.insert(addr);
        }
        Remove(addr);
    }
    return iCode;
}

int CAssignments::ReadDocuments(const CContainerAddr& addr, CContainerRecord& record,
                                std::vector<std::string>& unreadable) {
    for (uint32_t ui = 0;; ++ui) {
        const std::string strSuffix = Suffix(addr, ui);
        std::string strText;
        bool bAbsent = false;
        const int iCode = m_store.Read(strSuffix, strText, bAbsent);
        if (iCode != ORVA_SUCCEED || bAbsent) {
            ForgetReturned(addr);
            return iCode;
        }
        if (!IsHomeless(addr)) {
            m_bIndexDirty = m_indexed.insert(addr).second || m_bIndexDirty;
        }
        record.documentBytes.push_back(0);
        CAssignmentDocument document;
        if (!ReadForm(strText, document)) {
            unreadable.push_back(strSuffix);
            record.unreadableDocuments.insert(ui);
            continue;
        }
        TakeDocument(addr, ui, document);
    }
}

void CAssignments::TakeDocument(const CContainerAddr& addr, uint32_t uiNumber,
                                const CAssignmentDocument& document) {
    CContainerRecord& record = *Find(addr);
    m_state.ullHighestDecision = std::max(m_state.ullHighestDecision, document.ullHighest);
    for (const std::string& strTaskId : document.gone) {
        record.gone[strTaskId] = {uiNumber, 0, true};
        record.documentBytes[uiNumber] += GoneBytes(strTaskId);
    }
    for (const CStoredTask& stored : document.tasks) {
        CAssignedTask task = stored.ToAssigned();
        task.uiDocument = uiNumber;
        SettleTwice(addr, std::move(task));
    }
}

/// What came back is not gone, though the note of it may be in another document still.
void CAssignments::ForgetReturned(const CContainerAddr& addr) {
    for (const auto& [strTaskId, task] : Find(addr)->tasks) {
        ForgetGone(addr, strTaskId);
    }
}

/// Takes a task in from its document, unless another document has it by a newer decision.
void CAssignments::SettleTwice(const CContainerAddr& addr, CAssignedTask task) {
    const std::string strTaskId = task.task.GetTaskId();
    const std::string& strType = addr.GetContainerType();
    CContainerRecord& record = *Find(addr);
    task.uiBytes = BytesOf(task);
    if (const CContainerAddr* const pHolder = Holder(strType, strTaskId); pHolder != nullptr) {
        const CContainerAddr holder = *pHolder;
        if (!IsNewer(task, *Find(holder, strTaskId), holder)) {
            return NoteGone(addr, strTaskId, {task.uiDocument, 0, true});
        }
        TakeOut(holder, strTaskId);
    }
    record.documentBytes[task.uiDocument] += task.uiBytes;
    m_state.ullHighestDecision = std::max(m_state.ullHighestDecision, task.ullDecision);
    m_holders[HolderKey(strType, strTaskId)] = addr;
    record.tasks[strTaskId] = std::move(task);
}

int CAssignments::ReadIndex(std::vector<std::string>& unreadable) {
    std::string strText;
    bool bAbsent = false;
    const int iCode = m_store.Read(PSZ_INDEX, strText, bAbsent);
    if (iCode != ORVA_SUCCEED || bAbsent) {
        return iCode;
    }
    CIndexDocument index;
    if (!ReadForm(strText, index)) {
        unreadable.emplace_back(PSZ_INDEX);
        return ORVA_SUCCEED;
    }
    for (const std::string& strType : index.homeless) {
        m_state.homeless[strType];
    }
    for (const CPlaceForm& place : index.containers) {
        m_indexed.insert(place.ToAddr());
    }
    return ORVA_SUCCEED;
}

int CAssignments::WriteIndex() {
    CIndexDocument index;
    for (const auto& [strType, record] : m_state.homeless) {
        index.homeless.push_back(strType);
    }
    index.containers.assign(m_indexed.begin(), m_indexed.end());
    const int iCode = m_store.Write(PSZ_INDEX, JsonText(index));
    m_bIndexDirty = iCode != ORVA_SUCCEED;
    return iCode;
}

std::string CAssignments::TextOf(const Dirty& dirty, bool bWithLeaving) {
    const auto& [key, change] = dirty;
    CAssignmentDocument document;
    document.ullHighest = m_state.ullHighestDecision;
    if (const CContainerRecord* const pRecord = Find(key.addr); pRecord != nullptr) {
        for (const auto& [strTaskId, task] : pRecord->tasks) {
            if (task.uiDocument == key.uiNumber) {
                document.tasks.emplace_back(task);
            }
        }
        for (const auto& [strTaskId, gone] : pRecord->gone) {
            if (gone.uiDocument == key.uiNumber &&
                (!bWithLeaving || change.leaving.count(strTaskId) == 0)) {
                document.gone.push_back(strTaskId);
            }
        }
    }
    for (const auto& [strTaskId, task] : change.leaving) {
        if (bWithLeaving) {
            document.tasks.emplace_back(task);
        }
    }
    return JsonText(document);
}

template <typename Predicate, typename OnWritten>
int CAssignments::WriteDocuments(const Predicate& isWanted, bool bWithLeaving,
                                 const OnWritten& onWritten) {
    auto it = m_dirty.begin();
    while (it != m_dirty.end()) {
        std::vector<Dirty*> together;
        std::map<std::string, std::string> texts;
        for (; it != m_dirty.end() && texts.size() < NUMERIC_DOCUMENTS_TOGETHER; ++it) {
            if (isWanted(it->second)) {
                together.push_back(&*it);
                texts[Suffix(it->first.addr, it->first.uiNumber)] = TextOf(*it, bWithLeaving);
            }
        }
        const int iCode = texts.empty() ? static_cast<int>(ORVA_SUCCEED)
                                        : m_store.WriteTogether(std::move(texts));
        if (iCode != ORVA_SUCCEED) {
            return iCode;
        }
        for (Dirty* const pDirty : together) {
            onWritten(*pDirty);
        }
    }
    return ORVA_SUCCEED;
}

int CAssignments::WriteEntered() {
    const int iCode = m_bIndexDirty ? WriteIndex() : ORVA_SUCCEED;
    if (iCode != ORVA_SUCCEED) {
        return iCode;
    }
    return WriteDocuments([](const CChange& change) { return change.bEntered; }, true,
                          [](Dirty& dirty) {
                              dirty.second.bEntered = false;
                              dirty.second.bWritten = dirty.second.leaving.empty();
                          });
}

int CAssignments::Write() {
    int iCode = WriteEntered();
    if (iCode != ORVA_SUCCEED) {
        return iCode;
    }
    iCode = WriteDocuments([](const CChange& change) { return !change.bWritten; }, false,
                           [this](Dirty& dirty) {
                               ReleaseLeaving(dirty);
                               dirty.second.bWritten = true;
                           });
    if (iCode != ORVA_SUCCEED) {
        return iCode;
    }
    m_dirty.clear();
    return ForgetLeft();
}

void CAssignments::GoBack(CMark mark) {
    std::swap(m_dirty, mark.dirty);
    m_holders = std::move(mark.holders);
    m_bIndexDirty = true;
    for (const auto& [key, change] : mark.dirty) {
        Change(key.addr, key.uiNumber);
        if (IsHomeless(key.addr)) {
            m_state.homeless[key.addr.GetContainerType()];
        }
        if (CContainerRecord* const pRecord = Find(key.addr); pRecord != nullptr) {
            std::vector<uint32_t>& bytes = pRecord->documentBytes;
            bytes.resize(std::max<std::size_t>(bytes.size(), key.uiNumber + 1));
        }
    }
}

/// What moved away stands elsewhere now, and its room is free.
void CAssignments::ReleaseLeaving(Dirty& dirty) {
    CContainerRecord* const pRecord = Find(dirty.first.addr);
    for (const auto& [strTaskId, task] : dirty.second.leaving) {
        if (pRecord != nullptr) {
            pRecord->documentBytes[dirty.first.uiNumber] -= task.uiBytes;
        }
    }
    dirty.second.leaving.clear();
}

/// Whoever left and has been removed has only empty documents now, and such as nobody could read.
int CAssignments::ForgetLeft() {
    bool bForgotten = false;
    for (auto it = m_indexed.begin(); it != m_indexed.end();) {
        const bool bRemoved = m_state.containers.count(*it) == 0 && m_unreadLeft.count(*it) == 0;
        it = bRemoved ? m_indexed.erase(it) : std::next(it);
        bForgotten = bForgotten || bRemoved;
    }
    return bForgotten ? WriteIndex() : ORVA_SUCCEED;
}
