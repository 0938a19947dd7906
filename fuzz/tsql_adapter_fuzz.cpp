// Any text through the T-SQL adapter and the declared-type reader: no crash, no undefined behaviour.
// A date literal the server could not read (in a table the text creates) fails with an Error.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "common/error.h"
#include "data/tsql_adapter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  try {
    ent::tsql::ToSqlite(text);
  } catch (const ent::Error&) {
  }
  ent::tsql::ParseDeclaredType(text);
  return 0;
}
