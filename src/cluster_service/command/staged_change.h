#pragma once

#include <functional>
#include <ostream>
#include <string>

#include "command/stage.h"

/// What the command line says about making a change.
struct CChangeOptions {
    bool bYes = false;        ///< go ahead without asking
    bool bDryRun = false;     ///< show the difference and change nothing
    bool bJson = false;       ///< show it for programs
    std::string strUndoFile;  ///< a new store file that keeps the former texts; none when empty
    std::string strPlace = "the store";  ///< as a person is told it
};

/// A change as a command wants it.
struct CPlannedChange {
    /// Reads, judges and, after CStage::BeginChange, changes the documents on the stage. Called
    /// anew when the store has moved on meanwhile. Returns EXIT_DONE, or, said on the streams, what
    /// the command ends with.
    std::function<int()> workOut;

    /// What is asked; empty when the change takes nothing away and need not be asked about. Called
    /// behind workOut.
    std::function<std::string()> question;

    /// Is the change at this path of the document what was asked for? What is not is shown as
    /// coming along with it.
    std::function<bool(const std::string& strPath)> isAskedFor;

    /// Says what the store holds now, once it does.
    std::function<void()> report;
};

/// The one way to change a store: works the change out on the stage, shows what would be different
/// (beside the question where one is asked), asks, and commits the changed documents alone, whole
/// or not at all. When somebody has changed what it was computed from, nothing is written: it says
/// so and starts anew, with a new question or, without one, a few times. Lines that the library
/// logged meanwhile are written when the change has happened. Returns an exit code.
int CarryOut(CStage& stage, const CPlannedChange& change, const CChangeOptions& options,
             std::ostream& output, std::ostream& errors);
