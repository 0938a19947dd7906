#include "reports/accounting/work_table_lock.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "common/error.h"
#include "common/text.h"
#include "data/connection_string.h"

namespace ent::accounting {

namespace {

std::shared_ptr<std::mutex> MutexFor(const std::string& identity) {
  static std::mutex registry_mutex;
  static std::map<std::string, std::shared_ptr<std::mutex>> registry;
  std::lock_guard<std::mutex> guard(registry_mutex);
  auto& slot = registry[identity];
  if (!slot) slot = std::make_shared<std::mutex>();
  return slot;
}

}  // namespace

std::string DatabaseIdentity(const std::string& connection_string) {
  try {
    ConnectionString parsed = ConnectionString::Parse(connection_string);
    const std::string provider = AsciiLower(parsed.Get("Provider").value_or("sqloledb"));
    const std::string source =
        parsed.GetAny({"Data Source", "DataSource", "Server", "Address", "Addr"}).value_or("");
    if (provider == "sqlite") {
      std::error_code ec;
      std::filesystem::path canonical = std::filesystem::weakly_canonical(source, ec);
      return "sqlite:" + (ec ? source : canonical.string());
    }
    const std::string database = parsed.GetAny({"Initial Catalog", "Database"}).value_or("");
    return provider + ":" + AsciiLower(source) + "|" + AsciiLower(database);
  } catch (const Error&) {
    return connection_string;
  }
}

WorkTableGuardSql WorkTableGuardSqlFor(SqlDialect dialect) {
  if (dialect == SqlDialect::kSqlite) return {"BEGIN IMMEDIATE", "COMMIT", "ROLLBACK"};
  // The application lock belongs to the transaction: it goes with the commit or the rollback, and with
  // the connection if the process dies. A refusal (timeout, deadlock victim) is raised as an error.
  return {
      "SET XACT_ABORT ON; BEGIN TRANSACTION; DECLARE @entWorkLock int; "
      "EXEC @entWorkLock = sp_getapplock @Resource = N'entprcreq.worktables', @LockMode = 'Exclusive', "
      "@LockOwner = 'Transaction', @LockTimeout = 30000; "
      "IF @entWorkLock < 0 BEGIN ROLLBACK TRANSACTION; "
      "RAISERROR('The accounting work tables stayed in use by another statement for 30 seconds.', 16, 1) "
      "END",
      "COMMIT TRANSACTION", "IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION"};
}

WorkTableLock::WorkTableLock(const std::string& connection_string, Connection* connection)
    : mutex_(MutexFor(DatabaseIdentity(connection_string))), guard_(*mutex_), connection_(connection) {
  if (!connection_ || !connection_->IsOpen()) return;
  sql_ = WorkTableGuardSqlFor(connection_->dialect());
  try {
    connection_->Execute(sql_.begin);
    open_ = true;
  } catch (const Error& e) {
    failure_ = "The accounting work tables are in use by another statement: " + e.description();
  }
}

WorkTableLock::~WorkTableLock() {
  if (!open_) return;
  try {
    connection_->Execute(sql_.rollback);
  } catch (const Error&) {
    // The connection is gone or the database already ended the transaction: nothing is held.
  }
}

void WorkTableLock::Commit() {
  if (!open_) return;
  open_ = false;
  connection_->Execute(sql_.commit);
}

}  // namespace ent::accounting
