// Text case and trimming. Case is ASCII only: names, keywords and codes are compared and shown this
// way; the data's own text never changes case here.
#pragma once

#include <string>
#include <string_view>

namespace ent {

std::string AsciiUpper(std::string_view text);
std::string AsciiLower(std::string_view text);
bool EqualsIgnoreCase(std::string_view a, std::string_view b);

// Without blanks (' ') at either end; other white space is kept.
std::string TrimBlanks(std::string_view text);
// Without white space (blank, tab, line ends, ...) at either end.
std::string_view TrimSpace(std::string_view text);

}  // namespace ent
