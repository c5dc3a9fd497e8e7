#pragma once

#include <list>
#include <string>

#include "command/document_fault.h"
#include "command/exit_code.h"

/// What a finding weighs; the heaviest come first, and the heaviest of all decides the exit status.
enum class EWeight { ERROR, WARNING, NOTE };

struct CWeight {
    const char* pszName;
    enExitCode eExitCode;
};

/// One row for each weight, in their order.
inline constexpr CWeight WEIGHTS[] = {
    {"error", EXIT_REFUSED},
    {"warning", EXIT_WARNED},
    {"note", EXIT_DONE},
};

inline const CWeight& RowOf(EWeight eWeight) {
    return WEIGHTS[static_cast<int>(eWeight)];
}

struct CFinding {
    EWeight eWeight;
    std::string strDocument;  ///< its suffix in the store, as "Cluster", or its file
    CDocumentFault fault;
};

using Findings = std::list<CFinding>;

std::string Quoted(const std::string& strText);
