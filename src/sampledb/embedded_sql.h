// The SQL files of db/ (the shop schema), built into the program as text.
#pragma once

#include <span>
#include <string_view>

namespace ent::sampledb {

struct EmbeddedSqlFile {
  std::string_view name;  // file name, e.g. "schema.sql"
  std::string_view text;
};

// Every db/*.sql file as it was when the program was built, in file-name order.
std::span<const EmbeddedSqlFile> EmbeddedSqlFiles();

// The text of db/<file_name>. Throws ent::Error when no such file was built in.
std::string_view EmbeddedSql(std::string_view file_name);

}  // namespace ent::sampledb
