#include <algorithm>
#include <cstring>
#include <limits>

#include "common_service/tarn_def.h"
#include "contract/host_contract.h"

using namespace host_contract;

namespace {

TEST_F(HostContract, NullLoggerSilencesAndChangesNoResult) {
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    EXPECT_EQ(InitConfig(), NUMERIC_STORE_CODE);
    EXPECT_EQ(m_host.CallsTo({"getLogger", "log"}), Calls(2, "getLogger"));
}

TEST_F(HostContract, FailureIsFormattedIntoABufferOf512) {
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    InitConfig();
    EXPECT_EQ(m_host.CallsTo({"ORVA_LogFormatErrCode"}),
              Calls{"ORVA_LogFormatErrCode 512 4711 get cloud storage info from cluster node "
                    "fail."});
}

struct CFormatted {
    std::string strName;
    std::function<int(char* pszBuf, int iSize)> format;
    std::string strMessage;
};

std::ostream& operator<<(std::ostream& stream, const CFormatted& formatted) {
    return stream << formatted.strName;
}

/// A formatter that writes the text, up to the whole buffer and unterminated, and answers so.
std::function<int(char*, int)> Writes(const std::string& strText, int iAnswer) {
    return [strText, iAnswer](char* pszBuf, int iSize) {
        std::memcpy(pszBuf, strText.data(),
                    std::min(strText.size(), static_cast<std::size_t>(iSize)));
        return iAnswer;
    };
}

class StrangeFormatter : public HostContract, public testing::WithParamInterface<CFormatted> {};

TEST_P(StrangeFormatter, CannotBreakTheLine) {
    m_host.m_formatErrCode = GetParam().format;
    m_host.m_reads[PATH_CONFIG] = Answer(NUMERIC_STORE_CODE, false);
    Listen();
    EXPECT_EQ(InitConfig(), NUMERIC_STORE_CODE);
    EXPECT_EQ(Log().back(), "log 3 framework_common InitClusterConfigFromZK [init framework] " +
                                GetParam().strMessage);
}

INSTANTIATE_TEST_SUITE_P(
    Host, StrangeFormatter,
    testing::Values(
        CFormatted{"FailsAndWritesNothing", Writes("", -1), ""},
        CFormatted{"FailsAfterWriting", Writes("half", -1), "half"},
        CFormatted{"FailsAtItsWorst", Writes("half", std::numeric_limits<int>::min()), "half"},
        CFormatted{"SaysLessThanItWrote", Writes("whole", 2), "wh"},
        CFormatted{"SaysNothingWasWritten", Writes("whole", 0), ""},
        CFormatted{"FillsTheBuffer", Writes(std::string(512, 'x'), 512), std::string(511, 'x')},
        CFormatted{"SaysMoreThanTheBuffer", Writes("text", 600), "text"},
        CFormatted{"SaysFarMore", Writes("text", std::numeric_limits<int>::max()), "text"}),
    NAME_OF_CASE);

}  // namespace
