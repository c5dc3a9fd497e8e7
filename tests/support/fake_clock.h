#pragma once

#include <ctime>

/// The clock that time(nullptr) tells in the test's process. Until it is set, the real one.
void SetClock(std::time_t tmNow);

/// Moves a clock that was set.
void AdvanceClock(std::time_t tmSeconds);

/// Goes back to the real clock.
void ResetClock();
