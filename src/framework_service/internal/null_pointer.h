#pragma once

#include "common_service/tarn_def.h"
#include "operation_log/operation_log.h"

namespace [[gnu::visibility("hidden")]] framework_internal {

/// The failure of a pointer that must not be null: logged with ORVA_FAIL whatever is returned.
inline int LogNullPointer(const operation_log::CPlacedText& operation, int iReturned) {
    LogFailure(operation, ORVA_FAIL, "Make sure there is something wrong");
    return iReturned;
}

}  // namespace framework_internal
