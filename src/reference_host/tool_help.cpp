#include "common_service/tool_help.h"

#include "internal/decimal.h"

namespace HALD {

std::string CToolHelp::IntToStr(int iValue, bool) {
    return std::to_string(iValue);
}

int CToolHelp::StrToInt(const std::string& strValue, bool) {
    return ReadDecimal(strValue).iValue;
}

}  // namespace HALD
