#pragma once

#include <string>

/// What the program tells the shell. Every command uses these and no others.
enum enExitCode {
    EXIT_DONE = 0,          ///< done, or nothing to do; a check found notes at most
    EXIT_REFUSED = 1,       ///< refused or declined, nothing changed; errors found
    EXIT_COULD_NOT = 2,     ///< bad usage, or store, files or plug-ins stood in the way
    EXIT_NOT_KNOWN = 3,     ///< the store did not answer: what it holds now is not known
    EXIT_WOULD_CHANGE = 4,  ///< a look ahead found something to change
    EXIT_WARNED = 5,        ///< a check found warnings and no errors
};

/// The table of them, for the help.
std::string ExitCodeTable();
