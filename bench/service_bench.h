#pragma once

#include "comparison.h"

/// Measures the service as a program under load, by turns with what it is held against. Called
/// while this process has one thread.
void MeasureService(Medians& medians);
