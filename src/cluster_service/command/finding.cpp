#include "command/finding.h"

void Add(Findings& findings, const char* pszSeverity, const ORVA_STORE_NODE& node,
         const std::string& strText) {
    findings.push_back({pszSeverity, node.pszSuffix + 1, strText});
}

std::string Quoted(const std::string& strText) {
    return "\"" + strText + "\"";
}
