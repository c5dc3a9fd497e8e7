#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <string>
#include <vector>

class CContainer;
class CContainerAddr;
class CNode;
class CResourceTask;
class CTaskShiftInfo;

/// The kinds of resource figures.
enum RESOURCE_TYPE : int {
    RESOURCE_TYPE_CPU = 0,
    RESOURCE_TYPE_MEM = 1,
    RESOURCE_TYPE_IO = 2,
    RESOURCE_TYPE_NET = 3,
    RESOURCE_TYPE_DISK = 4,
};

/// Cluster membership of a node or container.
enum {
    CLUSTER_MEMBER_NORMAL = 0,
    CLUSTER_MEMBER_REMOVED = 1,
};

/// State of one process of a container.
enum {
    PROCESS_STATE_RUNNING = 0,
    PROCESS_STATE_STOPPED = 1,
    PROCESS_STATE_FREQUENCY_RESTART = 2,
};

using KeyValueMap = std::map<std::string, std::string>;
using KeyFloatValueMap = std::map<std::string, float>;
using ContainerMap = std::map<CContainerAddr, CContainer>;
using NodeMap = std::map<std::string, CNode>;
using CTaskContainerMap = std::map<std::string, CContainerAddr>;
using CTaskShiftMap = std::map<std::string, CTaskShiftInfo>;
using ContainerTypeBindMap = std::map<std::string, std::list<std::string>>;
using TaskCompareFunc = bool (*)(const CResourceTask&, const CResourceTask&);

/// One set of resource figures, each in the unit of whoever reports it. No lock.
class CSystemResource {
public:
    CSystemResource() = default;
    CSystemResource(const CSystemResource&) = default;
    CSystemResource& operator=(const CSystemResource&) = default;
    virtual ~CSystemResource() = default;

    int32_t GetCpu() const { return m_iCpu; }
    void SetCpu(int32_t iCpu) { m_iCpu = iCpu; }
    int32_t GetMem() const { return m_iMem; }
    void SetMem(int32_t iMem) { m_iMem = iMem; }
    int32_t GetIO() const { return m_iIO; }
    void SetIO(int32_t iIO) { m_iIO = iIO; }
    int32_t GetNet() const { return m_iNet; }
    void SetNet(int32_t iNet) { m_iNet = iNet; }
    int32_t GetDisk() const { return m_iDisk; }
    void SetDisk(int32_t iDisk) { m_iDisk = iDisk; }

    /// The figure of that kind. An unknown kind is logged and answers 1.
    int32_t GetResourceByType(RESOURCE_TYPE eType) const;

    /// Averages each figure over the vector: a 32-bit sum that wraps, divided with truncation
    /// toward zero. An empty vector leaves sysResource as it is. The object itself plays no part.
    void GetAvgSystemResource(std::vector<CSystemResource>& resourceVector,
                              CSystemResource& sysResource);

private:
    int32_t m_iCpu = 0;
    int32_t m_iMem = 0;
    int32_t m_iIO = 0;
    int32_t m_iNet = 0;
    int32_t m_iDisk = 0;
};

/// The identity of a container: the node it runs on and its type. No lock. Here and in the classes
/// of the model a move is a copy: what was moved from stays whole.
class CContainerAddr {
public:
    CContainerAddr() = default;
    CContainerAddr(const std::string& strNodeId, const std::string& strContainerType)
        : m_strNodeId(strNodeId), m_strContainerType(strContainerType) {}
    CContainerAddr(const CContainerAddr&) = default;
    CContainerAddr& operator=(const CContainerAddr&) = default;
    virtual ~CContainerAddr() = default;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    const std::string& GetContainerType() const { return m_strContainerType; }
    void SetContainerType(const std::string& strType) { m_strContainerType = strType; }

    /// Both texts are equal.
    bool operator==(const CContainerAddr& other) const;

    /// Orders by node id and type written one behind the other. Two addresses that differ but read
    /// the same that way are equivalent: a map holds only one of them.
    bool operator<(const CContainerAddr& other) const {
        // Node ids of one length, as they mostly are, decide before the types do.
        if (m_strNodeId.size() != other.m_strNodeId.size()) {
            return IsConcatenationLess(other);
        }
        const int iNodeIds = m_strNodeId.compare(other.m_strNodeId);
        return iNodeIds != 0 ? iNodeIds < 0 : m_strContainerType < other.m_strContainerType;
    }

private:
    /// The order of two addresses whose node ids differ in length.
    bool IsConcatenationLess(const CContainerAddr& other) const;

    std::string m_strNodeId;
    std::string m_strContainerType;
};

/// One task that is to move, from one container to another. No lock.
class CTaskShiftInfo {
public:
    CTaskShiftInfo() = default;
    CTaskShiftInfo(const CTaskShiftInfo&) = default;
    CTaskShiftInfo& operator=(const CTaskShiftInfo&) = default;
    virtual ~CTaskShiftInfo() = default;

    const std::string& GetTaskId() const { return m_strTaskId; }
    void SetTaskId(const std::string& strTaskId) { m_strTaskId = strTaskId; }
    const CContainerAddr& GetOutContainer() const { return m_shiftOutContainer; }
    void SetOutContainer(const CContainerAddr& addr) { m_shiftOutContainer = addr; }
    const CContainerAddr& GetInContainer() const { return m_shiftInContainer; }
    void SetInContainer(const CContainerAddr& addr) { m_shiftInContainer = addr; }

private:
    std::string m_strTaskId;
    CContainerAddr m_shiftOutContainer;
    CContainerAddr m_shiftInContainer;
};
