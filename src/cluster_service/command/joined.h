#pragma once

#include <list>
#include <string>

#include "reference_host/shown_text.h"

/// The texts as a person is shown them, "none" for none.
inline std::string Joined(const std::list<std::string>& texts) {
    std::string strJoined;
    for (const std::string& strText : texts) {
        strJoined.append(strJoined.empty() ? "" : ", ").append(ShownText(strText));
    }
    return strJoined.empty() ? "none" : strJoined;
}
