#include "common_service/bounded_string.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace {

TEST(BoundedSet, SetsCountBytesAndNoMore) {
    std::string strBuffer = "abcdef";
    EXPECT_EQ(memset_s(strBuffer.data(), 6, 'x', 4), 0);
    EXPECT_EQ(strBuffer, "xxxxef");
}

TEST(BoundedSet, CountAboveTheSizeSetsTheWholeBufferAndFails) {
    std::string strBuffer = "abcdef";
    EXPECT_NE(memset_s(strBuffer.data(), 3, 'x', 5), 0);
    EXPECT_EQ(strBuffer, "xxxdef");
}

TEST(BoundedSet, CountOfANegativeNumberSetsTheWholeBufferAndFails) {
    std::string strBuffer = "abcdef";
    EXPECT_NE(memset_s(strBuffer.data(), 3, 'x', SIZE_MAX), 0);
    EXPECT_EQ(strBuffer, "xxxdef");
}

TEST(BoundedSet, UnusableBufferIsRefused) {
    std::string strBuffer = "abc";
    EXPECT_NE(memset_s(nullptr, 3, 'x', 3), 0);
    EXPECT_NE(memset_s(strBuffer.data(), SIZE_MAX, 'x', 1), 0);
    EXPECT_EQ(strBuffer, "abc");
}

TEST(BoundedSet, NothingIsSetInAnEmptyBuffer) {
    char cByte = 'a';
    EXPECT_EQ(memset_s(&cByte, 0, 'x', 0), 0);
    EXPECT_EQ(cByte, 'a');
}

TEST(BoundedSet, BufferOfTheLargestDocumentIsSetWhole) {
    std::vector<char> buffer(65536, 'a');
    EXPECT_EQ(memset_s(buffer.data(), buffer.size(), 0, buffer.size()), 0);
    EXPECT_EQ(buffer, std::vector<char>(65536, '\0'));
}

struct CCopyCase {
    const char* pszName;
    std::size_t destMax;
    const char* pszSrc;
    std::size_t count;
    bool bFits;
    const char* pszResult;
};

class BoundedCopy : public testing::TestWithParam<CCopyCase> {};

TEST_P(BoundedCopy, CopiesOrLeavesTheEmptyText) {
    const CCopyCase& copy = GetParam();
    std::string strBuffer(8, '#');
    EXPECT_EQ(strncpy_s(strBuffer.data(), copy.destMax, copy.pszSrc, copy.count) == 0, copy.bFits);
    EXPECT_STREQ(strBuffer.c_str(), copy.pszResult);
    EXPECT_EQ(strBuffer.substr(copy.destMax), std::string(8 - copy.destMax, '#'))
        << "behind the buffer";
}

INSTANTIATE_TEST_SUITE_P(
    All, BoundedCopy,
    testing::Values(CCopyCase{"Shorter", 6, "abc", 5, true, "abc"},
                    CCopyCase{"ExactlyFitting", 4, "abc", 3, true, "abc"},
                    CCopyCase{"CountBeyondTheBufferButTextWithin", 4, "abc", 100, true, "abc"},
                    CCopyCase{"CutByCount", 6, "abcdefgh", 5, true, "abcde"},
                    CCopyCase{"NothingAsked", 6, "abc", 0, true, ""},
                    CCopyCase{"Empty", 6, "", 5, true, ""},
                    CCopyCase{"OneTooLong", 3, "abc", 3, false, ""},
                    CCopyCase{"MuchTooLong", 3, "abcdefgh", 8, false, ""},
                    CCopyCase{"NoSource", 6, nullptr, 5, false, ""},
                    CCopyCase{"CountOfANegativeNumber", 6, "abc", SIZE_MAX, false, ""}),
    [](const auto& caseInfo) { return std::string(caseInfo.param.pszName); });

TEST(BoundedCopyOfPointers, UnusableDestinationIsRefusedUntouched) {
    std::string strBuffer = "abc";
    EXPECT_NE(strncpy_s(nullptr, 3, "x", 1), 0);
    EXPECT_NE(strncpy_s(strBuffer.data(), 0, "x", 1), 0);
    EXPECT_NE(strncpy_s(strBuffer.data(), SIZE_MAX, "x", 1), 0);
    EXPECT_EQ(strBuffer, "abc");
}

TEST(BoundedCopyOfPointers, OverlapIsRefused) {
    for (const std::size_t uiFrom : {std::size_t{0}, std::size_t{2}}) {
        std::string strBuffer = "abcdefgh";
        EXPECT_NE(strncpy_s(strBuffer.data() + 2 - uiFrom, 6, strBuffer.data() + uiFrom, 4), 0);
        EXPECT_EQ(strBuffer[2 - uiFrom], '\0');
    }
}

TEST(BoundedCopyOfPointers, TextOfTheLargestDocumentIsCopiedWhole) {
    const std::string strText(65535, 'a');
    std::vector<char> buffer(65536, '#');
    EXPECT_EQ(strncpy_s(buffer.data(), buffer.size(), strText.c_str(), buffer.size() - 1), 0);
    EXPECT_EQ(std::string(buffer.data()), strText);
}

TEST(BoundedPrint, PrintsWhatFits) {
    char szBuffer[4] = "###";
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 4, 3, "%03d", 7), 3);
    EXPECT_STREQ(szBuffer, "007");
}

TEST(BoundedPrint, CutTextIsTerminatedAndFails) {
    char szBuffer[4] = "###";
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 4, 3, "%03d", 1234), -1);
    EXPECT_STREQ(szBuffer, "123");
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 4, 2, "%s", "abc"), -1);
    EXPECT_STREQ(szBuffer, "ab");
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 3, SIZE_MAX, "%s", "abc"), -1);
    EXPECT_STREQ(szBuffer, "ab");
}

TEST(BoundedPrint, UnusableArgumentsAreRefused) {
    char szBuffer[4] = "abc";
    const char* pszNoFormat = nullptr;
    EXPECT_EQ(ORVA_SNPRINTF(nullptr, 4, 3, "x"), -1);
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 0, 3, "x"), -1);
    EXPECT_EQ(ORVA_SNPRINTF(szBuffer, 4, 3, pszNoFormat), -1);
    EXPECT_STREQ(szBuffer, "abc");
}

TEST(MaskedAddress, HostPartIsHidden) {
    EXPECT_EQ(ORVA_DesensitizeIPAddress("192.168.13.250"), "192.168.*.*");
    EXPECT_EQ(ORVA_DesensitizeIPAddress("10.0.0.1"), "10.0.*.*");
}

TEST(MaskedAddress, NothingOfAnotherTextShows) {
    EXPECT_EQ(ORVA_DesensitizeIPAddress("fe80::1234"), "*");
    EXPECT_EQ(ORVA_DesensitizeIPAddress("camera.example"), "*");
    EXPECT_EQ(ORVA_DesensitizeIPAddress(""), "");
}

}  // namespace
