#include "command/finding.h"

std::string Quoted(const std::string& strText) {
    return "\"" + strText + "\"";
}
