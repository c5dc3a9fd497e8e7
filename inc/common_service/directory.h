#pragma once

#include <string>

namespace HALD {

extern "C" {

/// The directory that holds the service's libraries; its folder "plugins" holds the plug-ins.
/// Returns 0, or a code with strDir untouched.
int get_lib_directory(std::string& strDir);

/// The directory that holds the service's configuration; its folder "taskmodel" holds the
/// standard tasks. Returns 0, or a code with strDir untouched.
int get_config_directory(std::string& strDir);
}

/// What the reference host adds. An empty text makes the getter fail. Set before other threads run.
void set_lib_directory(const std::string& strDir);
void set_config_directory(const std::string& strDir);

}  // namespace HALD
