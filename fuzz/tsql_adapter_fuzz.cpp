// Any text through the T-SQL adapter and the declared-type reader: no crash, no undefined behaviour.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "data/tsql_adapter.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  ent::tsql::ToSqlite(text);
  ent::tsql::ParseDeclaredType(text);
  return 0;
}
