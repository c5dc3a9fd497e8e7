#pragma once

#include <optional>
#include <string>

#include "serve/http.h"

/// The page that shows a running cluster, and the files that it is made of: "/", "/style.css",
/// "/icon.svg" and the scripts. They are part of the program and the same for everybody; all that
/// moves on the page is asked from the routes. Nothing for any other path.
std::optional<CHttpReply> PageReply(const std::string& strPath);
