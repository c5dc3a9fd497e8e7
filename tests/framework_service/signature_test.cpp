#include <type_traits>
#include <vector>

#include "framework_service/base_data.h"

// The compiler is the test: a host may take the address of an operation as it knows it.

namespace {

static_assert(std::is_same_v<decltype(&CSystemResource::GetAvgSystemResource),
                             void (CSystemResource::*)(std::vector<CSystemResource>&,
                                                       CSystemResource&)>);

}  // namespace
