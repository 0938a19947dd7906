// The accounting work tables have fixed names in the shop database. A statement fills its table and
// reads it back under a WorkTableLock, so that no other statement mixes lines into it: within this
// process a mutex per shop database; across processes and machines one write transaction on the
// statement's connection (SQLite: BEGIN IMMEDIATE; SQL Server: a transaction holding an exclusive
// application lock). One transaction also means one disk flush per statement, not one per line.
#pragma once

#include <memory>
#include <mutex>
#include <string>

#include "data/connection.h"

namespace ent::accounting {

// The identity of the database a connection string names: for a database file its canonical path,
// otherwise the server and database names in lower case. Strings that name the same database give the
// same identity.
std::string DatabaseIdentity(const std::string& connection_string);

// The SQL texts that guard the work tables in a dialect. `begin` waits (up to the database's own
// timeout) until no other connection holds them; `commit` and `rollback` release them.
struct WorkTableGuardSql {
  std::string begin;
  std::string commit;
  std::string rollback;
};
WorkTableGuardSql WorkTableGuardSqlFor(SqlDialect dialect);

// Holds the work-table lock of one shop database for its lifetime. Without Commit the transaction is
// rolled back at the end (a failed statement leaves the tables as they were). When the transaction
// cannot begin (the database stayed busy), failure() says why and nothing is held in the database.
class WorkTableLock {
 public:
  // `connection` may be null (a statement without a connection fails on its own); it must outlive the lock.
  WorkTableLock(const std::string& connection_string, Connection* connection);
  ~WorkTableLock();
  WorkTableLock(const WorkTableLock&) = delete;
  WorkTableLock& operator=(const WorkTableLock&) = delete;

  // Empty when the lock is held.
  const std::string& failure() const { return failure_; }
  // Ends the transaction, keeping what it wrote. Raises Error when the database refuses.
  void Commit();

 private:
  std::shared_ptr<std::mutex> mutex_;
  std::lock_guard<std::mutex> guard_;
  Connection* connection_;
  WorkTableGuardSql sql_;
  bool open_ = false;
  std::string failure_;
};

}  // namespace ent::accounting
