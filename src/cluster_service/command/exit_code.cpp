#include "command/exit_code.h"

std::string ExitCodeTable() {
    struct CRow {
        enExitCode eCode;
        const char* pszMeaning;
    };
    constexpr CRow ROWS[] = {
        {EXIT_DONE, "done, or nothing to do; check found notes at most"},
        {EXIT_REFUSED,
         "refused or declined, nothing was changed; check found errors, export "
         "a text that is no good document, play not what its file expects"},
        {EXIT_COULD_NOT,
         "wrong usage, or the store, a file or a plug-in stood in the way, or not all "
         "output was written"},
        {EXIT_NOT_KNOWN, "the store did not answer: what it holds now is not known"},
        {EXIT_WOULD_CHANGE, "diff or --dry-run found something to change; play has 0 instead"},
        {EXIT_WARNED, "check found warnings and no errors"},
    };
    std::string strTable = "Exit status:";
    for (const CRow& row : ROWS) {
        strTable.append("\n  ").append(std::to_string(row.eCode)).append("  ");
        strTable.append(row.pszMeaning);
    }
    return strTable;
}
