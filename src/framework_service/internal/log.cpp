#include "internal/log.h"

#include "common_service/tarn_def.h"

namespace framework_internal {

CodeFormat FormatWithCode(int iCode, const char* pszMessage) {
    CodeFormat strMacroLogBuff{};
    const int iMacroLogPos = ORVA_LogFormatErrCode(
        strMacroLogBuff.data(), static_cast<int>(strMacroLogBuff.size()), iCode, pszMessage);
    if (iMacroLogPos >= 0 && static_cast<std::size_t>(iMacroLogPos) < strMacroLogBuff.size()) {
        strMacroLogBuff[static_cast<std::size_t>(iMacroLogPos)] = '\0';
    }
    strMacroLogBuff.back() = '\0';
    return strMacroLogBuff;
}

Logger* GetLogger() {
    return OMAdapter::getInstance().getLogger();
}

int LogNullPointer(const SourcePlace& place, const char* pszOperation, int iReturned) {
    LogFailure(place, pszOperation, ORVA_FAIL, "Make sure there is something wrong");
    return iReturned;
}

}  // namespace framework_internal
