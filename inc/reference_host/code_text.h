#pragma once

#include <string>
#include <vector>

/// A code that a store, its client or the host answers, as a person meets it.
struct CNamedCode {
    int iCode;
    const char* pszName;   ///< as the code's owner calls it
    const char* pszWords;  ///< what it means to whoever runs a cluster
};

/// Every code that has a name. Two owners may use one number: it then stands here once, with words
/// that hold for both.
[[gnu::visibility("default")]] const std::vector<CNamedCode>& NamedCodes();

/// The code in words, with its name and number behind them: "no server answers (ZCONNECTIONLOSS,
/// code -4)". Without a name, the number alone: "code 77". Callable from any thread.
[[gnu::visibility("default")]] std::string CodeText(int iCode);
