#pragma once

#include <string>

#include "framework_service/base_data.h"
#include "framework_service/base_status.h"
#include "framework_service/copy_on_write.h"

/// Status of a container. Within CContainer only the resource figures are filled, and the ids cost
/// no more than a pointer.
class CContainerStatus : public CBaseStatusInfo {
public:
    const std::string& GetNodeId() const { return m_ids->strNodeId; }
    void SetNodeId(const std::string& strNodeId) { m_ids.Edit().strNodeId = strNodeId; }
    const std::string& GetContainerType() const { return m_ids->strContainerType; }
    void SetContainerType(const std::string& strType) { m_ids.Edit().strContainerType = strType; }
    const CSystemResource& GetCurSysResource() const { return m_curSysResource; }
    void SetCurSysResource(const CSystemResource& resource) { m_curSysResource = resource; }

private:
    struct CIds {
        std::string strNodeId;
        std::string strContainerType;
    };

    CCopyOnWrite<CIds> m_ids;
    CSystemResource m_curSysResource;
};
