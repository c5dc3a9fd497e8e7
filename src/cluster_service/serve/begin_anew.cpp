#include "serve/begin_anew.h"

#include <linux/close_range.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <vector>

#include "command/exit_code.h"

namespace {

constexpr char PSZ_SCHEME[] = "http://";

/// The arguments of this run; the last address counts.
std::vector<std::string> ArgumentsAt(const std::string& strUrl) {
    std::ifstream stream("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> arguments;
    for (std::string strArgument; std::getline(stream, strArgument, '\0');) {
        arguments.push_back(strArgument);
    }
    arguments.emplace_back("--listen");
    arguments.push_back(strUrl.substr(sizeof(PSZ_SCHEME) - 1));
    return arguments;
}

}  // namespace

void BeginAnew(const std::string& strUrl, std::ostream& errors) {
    std::vector<std::string> arguments = ArgumentsAt(strUrl);
    std::vector<char*> pointers;
    pointers.reserve(arguments.size() + 1);
    for (std::string& strArgument : arguments) {
        pointers.push_back(strArgument.data());
    }
    pointers.push_back(nullptr);
    close_range(STDERR_FILENO + 1, ~0U, CLOSE_RANGE_CLOEXEC);
    execv("/proc/self/exe", pointers.data());
    errors << "cannot begin anew: " << std::strerror(errno) << std::endl;
    _exit(EXIT_COULD_NOT);
}
