#include "json_target.h"

#include <json/json.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <utility>
#include <vector>

#include "common_service/oper_common.h"
#include "common_service/tarn_def.h"
#include "target.h"

namespace {

constexpr char PSZ_PATH[] = "/Cloud/Document";

/// What a document's own text holds when the document cannot read it back: these lists are
/// required, and written as null when they are empty.
constexpr const char* UNREADABLE[] = {"\"SlaveDB\":null", "\"CdbVerSet\":null",
                                      "\"CloudStorageSet\":null"};

bool IsReadable(const std::string& strText) {
    return std::none_of(std::begin(UNREADABLE), std::end(UNREADABLE), [&](const char* pszList) {
        return strText.find(pszList) != std::string::npos;
    });
}

/// Writes into a buffer of exactly that size, and checks that the text is terminated and the rest
/// of the buffer cleared.
std::string Write(CBaseJsonObject& document, std::size_t size) {
    std::vector<char> buffer(size, '#');
    Require(document.ToJson(buffer.data(), static_cast<uint32_t>(size)) == ORVA_SUCCEED,
            "a document can be written");
    const std::string strText(buffer.data(), strnlen(buffer.data(), size));
    Require(strText.size() < size, "a written text is terminated");
    Require(std::count(buffer.begin(), buffer.end(), '\0') >=
                static_cast<std::ptrdiff_t>(size - strText.size()),
            "the rest of the buffer is cleared");
    return strText;
}

/// The whole text. No input grows more than its numbers, names and escapes do.
std::string WriteWhole(CBaseJsonObject& document, std::size_t inputSize) {
    return Write(document, 64 * inputSize + 4096);
}

void CheckCuts(CBaseJsonObject& document, const std::string& strText) {
    for (const std::size_t size : {std::size_t{1}, std::size_t{2}, strText.size() / 2 + 1,
                                   strText.size() + 1, strText.size() + 2}) {
        Require(Write(document, size) == strText.substr(0, size - 1),
                "a text is cut to its buffer and nothing else");
    }
}

/// The first reading of the own text may drop what the document does not keep; the next changes
/// nothing.
void CheckReadsBack(DocumentMaker pMake, std::string strText) {
    std::string strBefore;
    for (int i = 0; i < 2 && IsReadable(strText); ++i) {
        const auto pDocument = pMake();
        Require(pDocument->ParseJson(strText.c_str()) == ORVA_SUCCEED,
                "a document reads its own text");
        strBefore = std::exchange(strText, WriteWhole(*pDocument, strText.size()));
        Require(i == 0 || strText == strBefore, "a text that was read back stays as it is");
    }
}

void FeedDirectly(DocumentMaker pMake, const std::string& strInput) {
    const auto pDocument = pMake();
    try {
        if (pDocument->ParseJson(strInput.c_str()) != ORVA_SUCCEED) {
            return;
        }
    } catch (const Json::Exception&) {
        return;
    }
    const std::string strText = WriteWhole(*pDocument, strInput.size());
    CheckCuts(*pDocument, strText);
    CheckReadsBack(pMake, strText);
}

/// Behind the store no exception gets out, and a text that does not fit is not written.
void FeedBehindTheStore(DocumentMaker pMake, unsigned int uiBufLen, const std::string& strInput) {
    const auto pDocument = pMake();
    GetFuzzStore().Put(PSZ_PATH, strInput);
    bool bDataEmpty = true;
    const int iRead =
        COperCommon::GetDataFromZK(PSZ_PATH, nullptr, uiBufLen, pDocument.get(), bDataEmpty);
    Require(bDataEmpty == strInput.empty(), "the flag tells whether there was data");
    Require(strInput.size() < uiBufLen || iRead != ORVA_SUCCEED, "a text too long is refused");
    const int iWritten = COperCommon::SetDataToZK(PSZ_PATH, uiBufLen, pDocument.get());
    std::string strText = WriteWhole(*pDocument, strInput.size());
    if (strText.size() == uiBufLen) {
        strText.pop_back();  // without its line feed it is whole
    }
    Require((iWritten == ORVA_SUCCEED) == (strText.size() < uiBufLen),
            "a text is written when it fits");
    Require(GetFuzzStore().Get(PSZ_PATH) == (iWritten == ORVA_SUCCEED ? strText : strInput),
            "the store holds the new text or the former one");
}

}  // namespace

void FeedJson(DocumentMaker pMake, unsigned int uiBufLen, const std::string& strInput) {
    FeedBehindTheStore(pMake, uiBufLen, strInput);
    FeedDirectly(pMake, strInput);
}
