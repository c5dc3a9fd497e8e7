#pragma once

#include <cstdint>

/// Result codes. 0 is success; any other value is a failure. A value that is not listed comes
/// unchanged from a host operation or a plug-in.
enum enOrvaError {
    ORVA_SUCCEED = 0,
    ORVA_FAIL = 1,
    ORVA_PARA_INVALID = 2,
    ORVA_ALLOC_MEMORY_ERROR = 109100004,
    ORVA_SYS_NO_SUPPORT = 109100007,
    ORVA_XML_INVALID = 109100027,
    ORVA_DATA_INVALID = 109100053,
    ORVA_TARN_FCG_CODE_EXIST = 149132000,
    ORVA_TARN_FCG_IP_EXIST = 149132001,
    ORVA_TARN_NODE_HAS_BEEN_CG = 149132002,
    ORVA_TARN_FCG_EXCEED_MAX = 149132003,
    ORVA_TARN_CG_NODE_NOT_EXIST = 149132004,
};

/// The container types with special handling.
inline constexpr char CONTAINER_TYPE_CLOUD_STORAGE[] = "MeroCloudStorage";
inline constexpr char CONTAINER_TYPE_IMG_DEV[] = "MeroImgDev";

/// The kind of link that a node's address is validated for.
inline constexpr int VALIDATED_LINK_TYPE = 70106;

/// Message types of a task report: an ordinary status report, and the answer to an allocation.
inline constexpr int CONTAINER_STATUS_REPORT_REQ = 3979;
inline constexpr int ALLOC_CLOUD_STORAGE_NOTIFY_RSP = 41218;
