#include "sampledb/embedded_sql.h"

#include <string>

#include "common/error.h"

namespace ent::sampledb {

std::string_view EmbeddedSql(std::string_view file_name) {
  for (const EmbeddedSqlFile& file : EmbeddedSqlFiles()) {
    if (file.name == file_name) return file.text;
  }
  throw Error(err::kItemNotFound, "The program was built without db/" + std::string(file_name) + ".",
              "sample-db");
}

}  // namespace ent::sampledb
