#include <cstdarg>
#include <string>

#include "framework_service/plugin_info.h"
#include "plugins/plugin_folder.h"
#include "support/host_fixture.h"

using testing::HasSubstr;

namespace {

/// Keeps the text that the line about a failed entry point has where its format says a number.
class CEntryPointLogger : public Logger {
public:
    void writeOperLog(ORVA_LOG_LEVEL, const char*, const char*, int, const char*,
                      const char* pszFormat, ...) override {
        if (std::string(pszFormat).find("failure to creat sdk") == std::string::npos) {
            return;
        }
        va_list arguments;
        va_start(arguments, pszFormat);
        va_arg(arguments, const char*);
        const char* const pszText = va_arg(arguments, const char*);
        m_strText = pszText != nullptr ? pszText : "nothing";
        va_end(arguments);
    }

    void writeTraceLog(const char*, int, const char*, const char*, ...) override {}

    const std::string& GetText() const { return m_strText; }

private:
    std::string m_strText = "no line";
};

class PluginLoad : public CHostTest {
protected:
    const CPluginFolder m_folder;
};

TEST_F(PluginLoad, TheLineAboutAFailedEntryPointTellsWhatTheLoaderSaidInIt) {
    m_folder.Add("needs_library", "1.so");
    CEntryPointLogger logger;
    OMAdapter::getInstance().setLogger(&logger);
    CPluginInfo info("1.so");
    EXPECT_EQ(info.LoadLibrary(), 5);
    OMAdapter::getInstance().setLogger(&m_logger);
    EXPECT_THAT(logger.GetText(), HasSubstr("absent_library.so"));
}

}  // namespace
