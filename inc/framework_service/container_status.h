#pragma once

#include <string>

#include "framework_service/base_data.h"
#include "framework_service/base_status.h"

/// Status of a container. Within CContainer only the resource figures are filled.
class CContainerStatus : public CBaseStatusInfo {
public:
    ~CContainerStatus() override;

    const std::string& GetNodeId() const { return m_strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_strNodeId = strNodeId; }
    const std::string& GetContainerType() const { return m_strContainerType; }
    void SetContainerType(const std::string& strType) { m_strContainerType = strType; }
    const CSystemResource& GetCurSysResource() const { return m_curSysResource; }
    void SetCurSysResource(const CSystemResource& resource) { m_curSysResource = resource; }

private:
    std::string m_strNodeId;
    std::string m_strContainerType;
    CSystemResource m_curSysResource;
};
