#pragma once

#include <array>
#include <cstddef>
#include <type_traits>

#include "common_service/logger.h"

/// The library's one way to log. Every line names the operation that failed, not a helper: an
/// operation passes HERE, and a helper that logs on its behalf takes the place as an argument.
namespace [[gnu::visibility("hidden")]] framework_internal {

struct SourcePlace {
    const char* pszFile;
    int iLine;
    const char* pszFunction;
};

/// A source path without folder and extension, cut at compile time.
template <std::size_t N>
struct FileStem {
    char szText[N]{};

    constexpr explicit FileStem(const char (&szPath)[N]) {
        std::size_t iBegin = 0;
        std::size_t iEnd = N - 1;
        for (std::size_t i = 0; i + 1 < N; ++i) {
            if (szPath[i] == '/') {
                iBegin = i + 1;
                iEnd = N - 1;
            } else if (szPath[i] == '.') {
                iEnd = i;
            }
        }
        for (std::size_t i = iBegin; i < iEnd; ++i) {
            szText[i - iBegin] = szPath[i];
        }
    }
};

#define HERE                                                                                     \
    (::framework_internal::SourcePlace{[] {                                                      \
                                           static constexpr ::framework_internal::FileStem stem( \
                                               __FILE__);                                        \
                                           return static_cast<const char*>(stem.szText);         \
                                       }(),                                                      \
                                       __LINE__, static_cast<const char*>(__func__)})

using CodeFormat = std::array<char, 512>;

/// The message with the code before it, as a format text.
CodeFormat FormatWithCode(int iCode, const char* pszMessage);

/// The host's logger; null silences.
Logger* GetLogger();

/// A line without a code: progress and odd values.
template <typename... Args>
void LogLine(const SourcePlace& place, ORVA_LOG_LEVEL eLevel, const char* pszOperation,
             const char* pszMessage, Args... args) {
    static_assert((std::is_scalar_v<Args> && ...), "log arguments are numbers and C strings");
    if (Logger* const pLogger = GetLogger(); pLogger != nullptr) {
        pLogger->writeOperLog(eLevel, pszOperation, place.pszFile, place.iLine, place.pszFunction,
                              pszMessage, args...);
    }
}

template <typename... Args>
void LogInfo(const SourcePlace& place, const char* pszOperation, const char* pszMessage,
             Args... args) {
    LogLine(place, ORVALOG_INFO, pszOperation, pszMessage, args...);
}

/// A failure. Returns the code, so that an operation that returns what it logs ends in one line.
template <typename... Args>
int LogFailure(const SourcePlace& place, const char* pszOperation, int iCode,
               const char* pszMessage, Args... args) {
    const CodeFormat format = FormatWithCode(iCode, pszMessage);
    LogLine(place, ORVALOG_ERR, pszOperation, format.data(), args...);
    return iCode;
}

/// The failure of a pointer that must not be null: logged with ORVA_FAIL whatever is returned.
int LogNullPointer(const SourcePlace& place, const char* pszOperation, int iReturned);

template <typename... Args>
void LogTrace(const SourcePlace& place, const char* pszMessage, Args... args) {
    static_assert((std::is_scalar_v<Args> && ...), "log arguments are numbers and C strings");
    if (Logger* const pLogger = GetLogger(); pLogger != nullptr) {
        pLogger->writeTraceLog(place.pszFile, place.iLine, place.pszFunction, pszMessage, args...);
    }
}

}  // namespace framework_internal
