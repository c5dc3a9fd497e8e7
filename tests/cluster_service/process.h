#pragma once

#include <optional>
#include <string>
#include <vector>

/// What a program left behind.
struct CProcessResult {
    int iExitCode = -1;  ///< -1 when it was ended by a signal
    std::string strOutput;
    std::string strErrors;
};

/// What the program finds on its standard input: nothing, or a terminal on which this is typed.
struct CTerminal {
    std::string strTyped;
};

/// Runs a program with these arguments in the folder and waits for its end. Throws when it cannot
/// be started, or runs for more than half a minute: it is killed then.
CProcessResult RunProcess(const std::string& strProgram, const std::vector<std::string>& arguments,
                          const std::string& strFolder,
                          const std::optional<CTerminal>& terminal = std::nullopt);
