#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <type_traits>

#include "common_service/logger.h"

/// The one way to write a line to the host's logger, for the library, a host, a service and
/// plug-ins. A call names what was being done and the message; the place is the caller's own:
///
///     return LogFailure("load cluster", ORVA_FAIL, "no node[%s].", strNodeId.c_str());
///
/// A helper that works on behalf of its callers takes their place as its last parameter, so that
/// the line names the operation that failed:
///
///     int ReadNode(const char* pszPath, CPlace place = CPlace::Here()) {
///         return LogFailure({"read node", place}, ORVA_FAIL, "path[%s].", pszPath);
///     }
///
/// Arguments are numbers and C strings, as for printf. Without a logger nothing is written.
/// Callable from any thread, as the logger is. Everything here is hidden and inline: each shared
/// object has a copy of its own, and links nothing for it.
namespace [[gnu::visibility("hidden")]] operation_log {

/// Where a line comes from.
struct CPlace {
    const char* pszPath;  ///< the source file, as the compiler names it
    int iLine;
    const char* pszFunction;

    /// The place of the call; as a default argument, that of the caller. Inside a lambda or a
    /// template the compiler has another name for the function: take the place outside, or use Of.
    static constexpr CPlace Here(const char* pszPath = __builtin_FILE(),
                                 int iLine = __builtin_LINE(),
                                 const char* pszFunction = __builtin_FUNCTION()) {
        return {pszPath, iLine, pszFunction};
    }

    /// The place of the call, as a line of the operation of that name.
    static constexpr CPlace Of(const char* pszFunction, const char* pszPath = __builtin_FILE(),
                               int iLine = __builtin_LINE()) {
        return {pszPath, iLine, pszFunction};
    }
};

/// A text and where it was given: what an operation says of itself, or the format of a trace line.
/// The text is not copied.
struct CPlacedText {
    // NOLINTNEXTLINE(google-explicit-constructor): a text turns into this at the place of the call
    constexpr CPlacedText(const char* pszGiven, const CPlace& given = CPlace::Here())
        : pszText(pszGiven), place(given) {}

    const char* pszText;
    CPlace place;
};

/// A source path without folder and extension.
class CFileWord {
public:
    explicit CFileWord(const char* pszPath) {
        const char* const pszSlash = std::strrchr(pszPath, '/');
        const char* const pszWord = pszSlash != nullptr ? pszSlash + 1 : pszPath;
        const char* const pszDot = std::strrchr(pszWord, '.');
        const std::size_t uiWord =
            pszDot != nullptr ? static_cast<std::size_t>(pszDot - pszWord) : std::strlen(pszWord);
        const std::size_t uiLength = std::min(uiWord, m_szWord.size() - 1);
        std::memcpy(m_szWord.data(), pszWord, uiLength);
        m_szWord[uiLength] = '\0';
    }

    const char* Get() const { return m_szWord.data(); }

private:
    std::array<char, 256> m_szWord;  ///< as long as a file name can be
};

/// The format of a message with a code.
class CCodeFormat {
public:
    CCodeFormat(int iCode, const char* pszMessage) {
        const int iEnd = ORVA_LogFormatErrCode(
            m_szFormat.data(), static_cast<int>(m_szFormat.size()), iCode, pszMessage);
        if (iEnd >= 0 && static_cast<std::size_t>(iEnd) < m_szFormat.size()) {
            m_szFormat[static_cast<std::size_t>(iEnd)] = '\0';
        }
        m_szFormat.back() = '\0';
    }

    const char* Get() const { return m_szFormat.data(); }

private:
    std::array<char, 512> m_szFormat{};
};

template <typename... Args>
inline constexpr bool IS_LOGGABLE = (std::is_scalar_v<Args> && ...);

/// A line without a code.
template <typename... Args>
void LogLine(ORVA_LOG_LEVEL eLevel, const CPlacedText& operation, const char* pszMessage,
             Args... args) {
    static_assert(IS_LOGGABLE<Args...>, "log arguments are numbers and C strings");
    if (Logger* const pLogger = OMAdapter::getInstance().getLogger(); pLogger != nullptr) {
        const CPlace& place = operation.place;
        pLogger->writeOperLog(eLevel, operation.pszText, CFileWord(place.pszPath).Get(),
                              place.iLine, place.pszFunction, pszMessage, args...);
    }
}

/// Progress.
template <typename... Args>
void LogInfo(const CPlacedText& operation, const char* pszMessage, Args... args) {
    LogLine(ORVALOG_INFO, operation, pszMessage, args...);
}

/// An odd value that fails nothing.
template <typename... Args>
void LogWarning(const CPlacedText& operation, const char* pszMessage, Args... args) {
    LogLine(ORVALOG_WARNING, operation, pszMessage, args...);
}

/// A failure. Returns the code, so that an operation that returns what it logs ends in one line.
template <typename... Args>
int LogFailure(const CPlacedText& operation, int iCode, const char* pszMessage, Args... args) {
    const CCodeFormat format(iCode, pszMessage);
    LogLine(ORVALOG_ERR, operation, format.Get(), args...);
    return iCode;
}

/// A trace line, which has no text of its operation.
template <typename... Args>
void LogTrace(const CPlacedText& message, Args... args) {
    static_assert(IS_LOGGABLE<Args...>, "log arguments are numbers and C strings");
    if (Logger* const pLogger = OMAdapter::getInstance().getLogger(); pLogger != nullptr) {
        const CPlace& place = message.place;
        pLogger->writeTraceLog(CFileWord(place.pszPath).Get(), place.iLine, place.pszFunction,
                               message.pszText, args...);
    }
}

}  // namespace operation_log
