#pragma once

#include <ostream>
#include <string>

/// Asks on the terminal whether to go on; "y" and "yes" do. Without a terminal there is nobody to
/// ask and the answer is no, as it is when the question could not be written. A no is said on the
/// stream.
bool Confirm(const std::string& strQuestion, std::ostream& errors);
