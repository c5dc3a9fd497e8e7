#pragma once

#include <string>

/// Feeds one line of a journal or of a file that is played. What is read as an input and written
/// again reads as the same input.
void FeedInput(const std::string& strInput);
