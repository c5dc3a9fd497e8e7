#include "framework_service/placement_reason.h"

// Its one place: the type information comes with it, by which a cast finds the interface in an
// object of another library.
IPlacementReason::~IPlacementReason() = default;
