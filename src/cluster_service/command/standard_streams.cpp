#include "command/standard_streams.h"

#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <iostream>

void PrepareStandardStreams() {
    for (const int iStream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(iStream, F_GETFD) < 0) {
            open("/dev/null", O_RDWR);  // gets the lowest number that is free: this one
        }
    }
    std::signal(SIGPIPE, SIG_IGN);
}

bool AreStandardStreamsWritten() {
    const bool bOutput = static_cast<bool>(std::cout.flush());
    const bool bErrors = static_cast<bool>(std::cerr.flush());
    return bOutput && bErrors && std::fflush(stderr) == 0 && std::ferror(stderr) == 0;
}
