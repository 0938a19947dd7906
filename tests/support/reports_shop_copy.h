// A changed copy of a sample shop for one test: the file copied into the test's directory, then
// statements run on the copy with SQLite directly.
#pragma once

#include <string>

#include "support/temp_dir.h"

namespace ent::test {

// Copies the shop database `from` into `dir`, runs `sql` on the copy (a statement that fails fails
// the test) and returns the copy's path.
std::string ChangedCopy(const std::string& from, const TempDir& dir, const std::string& sql);

}  // namespace ent::test
