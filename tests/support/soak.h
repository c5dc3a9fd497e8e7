#pragma once

#include <algorithm>
#include <cstdlib>

/// How often a loop goes round that looks for what must never happen: as often as said when the
/// environment has FRAMEWORK_SERVICE_SOAK, as script/soak sets it, and else a tenth of that.
inline int SoakRounds(int iFull) {
    return std::getenv("FRAMEWORK_SERVICE_SOAK") != nullptr ? iFull : std::max(iFull / 10, 1);
}
