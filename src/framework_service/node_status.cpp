#include "framework_service/node_status.h"

CNodeStatus::~CNodeStatus() = default;
