#pragma once

#include <string>

/// Replaces a file by the text, through a file beside it, so that a reader or a power failure finds
/// the old text or the new one. Returns what went wrong, with the file as it was; empty when it
/// stands.
std::string WriteWholeFile(const std::string& strFile, const std::string& strText);
