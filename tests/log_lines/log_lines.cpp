#include "log_lines/log_lines.h"

#include "common_service/directory.h"
#include "framework_service/plugin_mgr.h"
#include "support/reconfigure.h"

namespace {

constexpr char FIXTURE_CALL[] = "called";  ///< what a fixture plug-in itself writes

const char* LevelOf(const CLogLine& line) {
    if (line.bTrace) {
        return "TRACE";
    }
    switch (line.eLevel) {
        case ORVALOG_ERR:
            return "ERR";
        case ORVALOG_WARNING:
            return "WARNING";
        case ORVALOG_INFO:
            return "INFO";
        default:
            return "unknown level";
    }
}

/// The text with every mention of the folder replaced: a folder has another name in each run.
std::string WithoutFolder(std::string strText, const std::string& strDir) {
    for (std::size_t uiAt = 0; (uiAt = strText.find(strDir, uiAt)) != std::string::npos;) {
        strText.replace(uiAt, strDir.size(), "DIR");
    }
    return strText;
}

}  // namespace

std::ostream& operator<<(std::ostream& stream, const CScenario& scenario) {
    return stream << scenario.strName;
}

LogLines::LogLines() {
    std::string strDir;
    HALD::get_lib_directory(strDir);
    Reconfigure(&CHostSettings::strConfigDir, strDir);
}

LogLines::~LogLines() {
    CPluginMgr::Instance().UnLoadAllPlugin();
}

std::vector<std::string> LogLines::LinesOf(const CScenario& scenario, bool bPlaceholders) {
    CScene scene{*m_pStore, m_logger, m_folder, ""};
    HALD::get_lib_directory(scene.strDir);
    scenario.pAct(scene);
    std::vector<std::string> lines;
    for (const CLogLine& line : m_logger.GetLines()) {
        if (line.strMessage == FIXTURE_CALL) {
            continue;
        }
        const bool bFormat = bPlaceholders && line.strFormat != line.strMessage;
        lines.push_back(LevelOf(line) + ("|" + line.strFile) + "|" + line.strFunction + "|" +
                        line.strOperation + "|" + (line.code ? std::to_string(*line.code) : "") +
                        "|" + (bFormat ? line.strFormat + "|" : "") +
                        WithoutFolder(line.strMessage, scene.strDir));
    }
    return lines;
}

TEST_P(LogLines, AreThese) {
    EXPECT_EQ(LinesOf(GetParam(), true), GetParam().lines);
}

TEST_P(LogTexts, AreThese) {
    EXPECT_EQ(LinesOf(GetParam(), false), GetParam().lines);
}
