#include "framework_service/base_status.h"

bool CBaseStatusInfo::IsParamValid() {
    return true;
}

void CBaseStatusInfo::Print() {}
