#include "support/test_db.h"

#include <sqlite3.h>

#include <stdexcept>

namespace ent::test {

TestDb::TestDb() : path_(dir_.file("shop.db")) {
  sqlite3* db = nullptr;
  int rc = sqlite3_open_v2(path_.c_str(), &db, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE, nullptr);
  sqlite3_close(db);
  if (rc != SQLITE_OK) throw std::runtime_error("cannot create " + path_);
}

std::shared_ptr<Connection> TestDb::Connect() const {
  return OpenConnection(connection_string());
}

void TestDb::Exec(const std::string& sql) const {
  Connect()->Execute(sql);
}

}  // namespace ent::test
