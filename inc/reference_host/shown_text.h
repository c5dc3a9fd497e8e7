#pragma once

#include <cstddef>
#include <string>
#include <string_view>

/// The text as it may be shown to a person, on a terminal or in a log: on one line, and nothing in
/// it moves the cursor, colours the screen, turns the direction of writing or hides. Control
/// characters, line breaks, direction marks and invisible characters stand as "\n", "\x1b" or
/// "\u202e", bytes that are no UTF-8 as "\xff", a backslash as "\\". All else stays as it is.
/// Callable from any thread, whatever its locale.
[[gnu::visibility("default")]] std::string ShownText(std::string_view text);

/// How many columns a terminal gives to a text that ShownText has returned: two to a wide
/// character, none to a combining one.
[[gnu::visibility("default")]] std::size_t ColumnsOf(std::string_view shownText);
