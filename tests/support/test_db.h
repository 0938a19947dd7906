// A shop database file for one test: created empty in a temporary directory, then filled through the
// server's own connection (so DDL goes through the T-SQL adapter).
#pragma once

#include <memory>
#include <string>

#include "data/connection.h"
#include "support/temp_dir.h"

namespace ent::test {

class TestDb {
 public:
  TestDb();
  const std::string& path() const { return path_; }
  std::string connection_string() const { return "Provider=SQLite;Data Source=" + path_; }
  // A new connection to the file.
  std::shared_ptr<Connection> Connect() const;
  // Runs statements on a connection of its own.
  void Exec(const std::string& sql) const;

 private:
  TempDir dir_;
  std::string path_;
};

// The first value a query returns on `connection`, as text.
std::string FirstValue(Connection& connection, const std::string& sql);
// The ids of the rows of `table` that `where` lets through, in order and run together ("124"),
// read as a request's text on a new connection to `db`.
std::string IdsWhere(const TestDb& db, const std::string& table, const std::string& where);

}  // namespace ent::test
