#include "command/confirm.h"

#include <unistd.h>

#include <iostream>

bool Confirm(const std::string& strQuestion, std::ostream& errors) {
    if (isatty(STDIN_FILENO) == 0) {
        errors << strQuestion << " There is no terminal to ask on: nothing was changed; --yes goes "
               << "ahead without asking\n";
        return false;
    }
    errors << strQuestion << " [y/N] " << std::flush;
    std::string strAnswer;
    if (errors) {
        std::getline(std::cin, strAnswer);
    }
    if (strAnswer == "y" || strAnswer == "yes") {
        return true;
    }
    errors << "nothing was changed\n";
    return false;
}
