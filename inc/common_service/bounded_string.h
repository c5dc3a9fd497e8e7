#pragma once

#include <cstddef>
#include <string>

extern "C" {

/// Sets count bytes, with the meaning of the C library annex: a null dest writes nothing; a count
/// above destMax sets destMax bytes and fails. Returns 0 or another value, which the library does
/// not look at. Its buffers have up to 65,536 bytes.
[[gnu::visibility("default")]] int memset_s(void* dest, std::size_t destMax, int value,
                                            std::size_t count);

/// Copies at most count characters and terminates, with the meaning of the C library annex: a text
/// that does not fit leaves the empty text and fails. Returns as memset_s, for the same buffers.
[[gnu::visibility("default")]] int strncpy_s(char* dest, std::size_t destMax, const char* src,
                                             std::size_t count);

/// Prints at most count characters, and never beyond destMax - 1, terminated. Returns the number
/// of characters written, or -1 when the text was cut or an argument is unusable.
[[gnu::visibility("default")]] int ORVA_SNPRINTF(char* pszDest, std::size_t destMax,
                                                 std::size_t count, const char* pszFormat, ...);

/// The address with its host part masked, for log lines: "192.168.*.*", and "*" for a text
/// that is no IPv4 address.
[[gnu::visibility("default")]] std::string ORVA_DesensitizeIPAddress(const std::string& strIp);
}
