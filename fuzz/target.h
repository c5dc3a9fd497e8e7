#pragma once

#include <memory>
#include <string>

#include "reference_host/memory_store.h"

/// Feeds one input to a reader and whatever it read to the writer of the same format. Aborts when a
/// promise is broken.
using FuzzTarget = void (*)(const std::string& strInput);

/// The reader of that name; aborts when there is none.
FuzzTarget FindFuzzTarget(const std::string& strName);

/// A host for the whole process: a memory store and a logger that formats every line and drops it.
void OpenFuzzHost();

/// The host's store.
CMemoryStore& GetFuzzStore();

/// Ends the process, with the promise on the error output, when it does not hold.
void Require(bool bHolds, const char* pszPromise);
