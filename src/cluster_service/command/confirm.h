#pragma once

#include <ostream>
#include <string>

/// Asks on the terminal whether to go on; "y" and "yes" do. With bYes nothing is asked and the
/// answer is yes. Without a terminal there is nobody to ask and the answer is no. A no is said on
/// the stream.
bool Confirm(const std::string& strQuestion, bool bYes, std::ostream& errors);
