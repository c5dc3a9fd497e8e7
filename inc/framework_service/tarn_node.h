#pragma once

#include <cstdint>
#include <ctime>
#include <list>
#include <string>
#include <vector>

#include "framework_service/base_data.h"
#include "framework_service/detail/copy_on_write.h"
#include "framework_service/node_status.h"

/// One machine of the cluster: identity, address, roles, resources, and the types of the containers
/// that run on it. A plain value; no lock. A move is a copy: address text and
/// number never part.
class CNode {
public:
    CNode();
    CNode(const CNode&) = default;
    CNode& operator=(const CNode&) = default;
    virtual ~CNode() = default;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    const std::string& GetNodeIp() const { return m_strNodeIp; }
    uint32_t GetNodeIpInt() const { return m_uiNodeIp; }
    int GetNodeIpType() const { return m_iNodeIpType; }
    void SetNodeIpType(int iNodeIpType) { m_iNodeIpType = iNodeIpType; }
    int GetNodeRole() const { return m_iNodeRole; }
    void SetNodeRole(int iNodeRole) { m_iNodeRole = iNodeRole; }
    int GetDomainRole() const { return m_iDomainRole; }
    void SetDomainRole(int iDomainRole) { m_iDomainRole = iDomainRole; }
    int GetNodeServiceType() const { return m_iNodeServiceType; }
    void SetNodeServiceType(int iServiceType) { m_iNodeServiceType = iServiceType; }
    const CSystemResource& GetTotalResource() const { return m_totalResource; }
    void SetTotalResource(const CSystemResource& resource) { m_totalResource = resource; }
    void SetOnline(bool bOnline) { m_bOnline = bOnline; }
    bool IsOnline() const { return m_bOnline; }
    int GetMemberStatus() const { return m_iMemberStatus; }
    void SetMemberStatus(int val) { m_iMemberStatus = val; }

    /// Sets the address in both forms; a bad text is kept, and its number is what the host makes
    /// of it.
    void SetNodeIp(const std::string& strData);

    /// The averaged figures, not the latest sample.
    const CSystemResource& GetCurResource() const;

    /// Takes a sample. The second and third samples stay for the life of the node: each later one
    /// replaces the first, and the average is that of the latest, the second and the third.
    void SetCurResource(const CSystemResource& systemResource);

    void SetStatusReportTime();

    /// True when the last report is more than 90 seconds old. After the clock went back: true once,
    /// and the report counts as of now.
    bool IsReportStatusOutTime();

    /// Appends the container types behind what the argument holds.
    void GetContainerList(std::list<std::string>& containerList) const;

    /// Replaces the container types by a copy.
    void SetContainerList(const std::list<std::string>& containerList);

private:
    friend class CFrameworkInternal;

    // What a search asks of many nodes comes first.
    int m_iMemberStatus = CLUSTER_MEMBER_NORMAL;
    bool m_bOnline = true;
    std::string m_strNodeId;
    std::string m_strNodeIp;
    uint32_t m_uiNodeIp = 0;
    int m_iNodeIpType = 0;
    int m_iNodeRole = 0;
    int m_iDomainRole = 0;
    int m_iNodeServiceType = 0;
    CSystemResource m_totalResource;
    CNodeStatus m_status;
    CCopyOnWrite<std::vector<CSystemResource>> m_statusVector;
    int32_t m_iCurStatusPos = 0;
    time_t m_tLastReportTime;
    CCopyOnWrite<std::list<std::string>> m_containerList;
};
