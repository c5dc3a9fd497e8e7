#pragma once

#include <list>
#include <string>

#include "framework_service/store_path.h"

inline constexpr char PSZ_NOTE[] = "note";
inline constexpr char PSZ_WARNING[] = "warning";
inline constexpr char PSZ_ERROR[] = "error";

struct CFinding {
    const char* pszSeverity;
    std::string strDocument;
    std::string strText;
};

using Findings = std::list<CFinding>;

/// A document is called by its suffix in the store, as "Cluster".
void Add(Findings& findings, const char* pszSeverity, const ORVA_STORE_NODE& node,
         const std::string& strText);

std::string Quoted(const std::string& strText);
