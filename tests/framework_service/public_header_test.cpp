#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <string>
#include <vector>

namespace {

std::vector<std::filesystem::path> PublicHeaders() {
    std::vector<std::filesystem::path> headers;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(PUBLIC_HEADER_ROOT)) {
        if (entry.path().extension() == ".h") {
            headers.push_back(entry.path());
        }
    }
    return headers;
}

std::string ReadText(const std::filesystem::path& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(PublicHeader, BringsTheJsonLibraryToThoseWhoHandValuesOver) {
    // A friend is no operation of the header's own.
    const std::regex parameter(R"((^|\n)(?![^\n]*friend)[^\n]*[(,]\s*(const )?Json::Value[& ])");
    int iTaking = 0;
    for (const std::filesystem::path& header : PublicHeaders()) {
        const std::string strText = ReadText(header);
        const bool bTakes = std::regex_search(strText, parameter);
        EXPECT_EQ(strText.find("#include <json/value.h>") != std::string::npos, bTakes) << header;
        EXPECT_EQ(strText.find("#include <json/json.h>"), std::string::npos) << header;
        iTaking += bTakes ? 1 : 0;
    }
    EXPECT_GT(iTaking, 0);
}

}  // namespace
