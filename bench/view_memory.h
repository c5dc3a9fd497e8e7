#pragma once

#include "comparison.h"

/// Measures what the recording plug-in keeps in memory between two decisions, in bytes.
void MeasureViewMemory(Medians& medians);
