#pragma once

#include <string>

namespace HALD {

extern "C" {

/// The directory that holds the service's libraries; its folder "plugins" holds the plug-ins.
/// Returns 0, or a code with strDir untouched.
[[gnu::visibility("default")]] int get_lib_directory(std::string& strDir);

/// The directory that holds the service's configuration; its folder "taskmodel" holds the
/// standard tasks. Returns 0, or a code with strDir untouched.
[[gnu::visibility("default")]] int get_config_directory(std::string& strDir);
}

}  // namespace HALD
