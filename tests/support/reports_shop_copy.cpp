#include "support/reports_shop_copy.h"

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>
#include <memory>

namespace ent::test {

std::string ChangedCopy(const std::string& from, const TempDir& dir, const std::string& sql) {
  const std::string path = dir.file("copy.db");
  std::filesystem::copy_file(from, path, std::filesystem::copy_options::overwrite_existing);
  sqlite3* raw = nullptr;
  const int opened = sqlite3_open(path.c_str(), &raw);
  std::unique_ptr<sqlite3, decltype(&sqlite3_close)> db(raw, sqlite3_close);
  char* message = nullptr;
  if (opened != SQLITE_OK || sqlite3_exec(db.get(), sql.c_str(), nullptr, nullptr, &message) != SQLITE_OK) {
    ADD_FAILURE() << (message ? message : sqlite3_errmsg(db.get())) << " in " << sql;
  }
  sqlite3_free(message);
  return path;
}

}  // namespace ent::test
