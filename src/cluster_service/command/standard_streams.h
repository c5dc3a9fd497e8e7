#pragma once

/// To be called first in main: opens what is closed of the standard streams on nothing, so that no
/// file is taken for one of them and written into; and has a write to a closed pipe fail instead of
/// ending the program.
void PrepareStandardStreams();

/// Flushes the standard output and error streams. Has all that was written to them gone through?
bool AreStandardStreamsWritten();
