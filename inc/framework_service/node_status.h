#pragma once

#include <string>

#include "framework_service/base_data.h"
#include "framework_service/base_status.h"

/// Status of a node. Within CNode only the resource figures are filled.
class CNodeStatus : public CBaseStatusInfo {
public:
    ~CNodeStatus() override;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    const CSystemResource& GetCurSysResource() const { return m_curSysResource; }
    void SetCurSysResource(const CSystemResource& resource) { m_curSysResource = resource; }

private:
    std::string m_strNodeId;
    CSystemResource m_curSysResource;
};
