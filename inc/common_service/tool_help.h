#pragma once

#include <string>

namespace HALD {

/// Conversions. bFlag is reserved; every caller passes false.
class [[gnu::visibility("default")]] CToolHelp {
public:
    /// Decimal text.
    static std::string IntToStr(int iValue, bool bFlag);

    /// The number at the start of the text, after blanks and a sign. Text that is no number gives
    /// 0, a number out of range the nearest limit.
    static int StrToInt(const std::string& strValue, bool bFlag);
};

}  // namespace HALD
