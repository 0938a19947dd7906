// The accounting work tables have fixed names in the shop database. Statements that fill them run one
// at a time per shop database within this process: each run holds a WorkTableLock for its database.
#pragma once

#include <memory>
#include <mutex>
#include <string>

namespace ent::accounting {

// The identity of the database a connection string names: for a database file its canonical path,
// otherwise the server and database names in lower case. Strings that name the same database give the
// same identity.
std::string DatabaseIdentity(const std::string& connection_string);

// Holds the work-table lock of one shop database for its lifetime.
class WorkTableLock {
 public:
  explicit WorkTableLock(const std::string& connection_string);
  WorkTableLock(const WorkTableLock&) = delete;
  WorkTableLock& operator=(const WorkTableLock&) = delete;

 private:
  std::shared_ptr<std::mutex> mutex_;
  std::lock_guard<std::mutex> guard_;
};

}  // namespace ent::accounting
