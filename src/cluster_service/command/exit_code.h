#pragma once

/// What the program tells the shell.
enum enExitCode {
    EXIT_DONE = 0,       ///< done, all well
    EXIT_FINDINGS = 1,   ///< something was refused or declined, or a check found something
    EXIT_COULD_NOT = 2,  ///< bad usage, or store, files or plug-ins stood in the way
};
