#pragma once

#include "common_service/oper_common.h"
#include "framework_service/store_path.h"

/// The library's way to its nodes in the store.
namespace [[gnu::visibility("hidden")]] framework_internal {

enum class EWatch { NO, YES };

/// COperCommon::GetDataFromZK on the node's path, which is composed anew.
int ReadStore(const ORVA_STORE_NODE& node, EWatch eWatch, CBaseJsonObject& document,
              bool& bDataEmpty);

/// COperCommon::SetDataToZK on the node's path, which is composed anew.
int WriteStore(const ORVA_STORE_NODE& node, CBaseJsonObject& document);

}  // namespace framework_internal
