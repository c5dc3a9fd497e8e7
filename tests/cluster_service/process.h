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

/// A terminal on the program's standard input, on which this is typed; one that shows is its output
/// and its errors too, and strOutput is then all that the terminal got.
struct CTerminal {
    std::string strTyped;
    bool bShows = false;
};

/// Runs a program with these arguments in the folder and waits for its end. Without a terminal its
/// standard input is empty. Throws when it cannot be started, or runs for more than half a minute:
/// it is killed then.
CProcessResult RunProcess(const std::string& strProgram, const std::vector<std::string>& arguments,
                          const std::string& strFolder,
                          const std::optional<CTerminal>& terminal = std::nullopt);
