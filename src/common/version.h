// The program's version, fixed when it is built: the project's version number, followed by the
// source revision in parentheses when the build was made from a git checkout.
#pragma once

#include <string>

namespace ent {

const std::string& ProgramVersion();

}  // namespace ent
