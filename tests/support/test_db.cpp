#include "support/test_db.h"

#include <sqlite3.h>

#include <stdexcept>

#include "data/recordset.h"

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

std::string FirstValue(Connection& connection, const std::string& sql) {
  return connection.Query(sql).rows.at(0).at(0).ToText();
}

std::string IdsWhere(const TestDb& db, const std::string& table, const std::string& where) {
  auto rs = Recordset::OpenQuery(db.Connect(), "select id from " + table + " where " + where + " order by id",
                                 false);
  std::string ids;
  for (; !rs->IsEof(); rs->MoveNext()) ids += rs->Get("id").ToText();
  return ids;
}

}  // namespace ent::test
