#pragma once

#include <string>

/// Replaces a file by the text, so that a reader or a power failure finds the old text or the new
/// one. A new file has the mode that the umask leaves it, another keeps its own. Whoever kills the
/// program finds nothing beside the file, where the file system has files without a name. Returns
/// what went wrong, with the file as it was; empty when it stands.
std::string WriteWholeFile(const std::string& strFile, const std::string& strText);
