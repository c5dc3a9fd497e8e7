#pragma once

#include "comparison.h"

/// Measures how long a status report waits at the worst, alone and beside a thread that reads all
/// containers without pause.
void MeasureReportWait(Medians& medians);
