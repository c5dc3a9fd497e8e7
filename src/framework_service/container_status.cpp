#include "framework_service/container_status.h"

CContainerStatus::~CContainerStatus() = default;
