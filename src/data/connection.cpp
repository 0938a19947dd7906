#include "data/connection.h"

#include <algorithm>
#include <cctype>

#include "common/error.h"
#include "common/text.h"
#include "data/connection_string.h"
#include "data/odbc_driver.h"
#include "data/sqlite_driver.h"

namespace ent {

namespace {

class FetchedRows : public RowCursor {
 public:
  explicit FetchedRows(QueryResult result) : result_(std::move(result)) {}
  const std::vector<Field>& fields() const override { return result_.fields; }
  bool Next(std::vector<Variant>& row) override {
    if (next_ >= result_.rows.size()) return false;
    row = std::move(result_.rows[next_++]);
    return true;
  }

 private:
  QueryResult result_;
  size_t next_ = 0;
};

}  // namespace

std::unique_ptr<RowCursor> CursorOver(QueryResult result) {
  return std::make_unique<FetchedRows>(std::move(result));
}

std::unique_ptr<RowCursor> Connection::OpenCursor(const std::string& sql, const ComputedTypes& /*computed*/) {
  return CursorOver(Query(sql));
}

std::shared_ptr<Connection> OpenConnection(const std::string& connection_string) {
  ConnectionString cs = ConnectionString::Parse(connection_string);
  if (std::optional<OdbcTarget> odbc = OdbcTargetOf(cs)) return OpenOdbcConnection(*odbc);
  const std::string provider = AsciiLower(cs.Get("Provider").value_or("sqloledb"));
  if (provider == "sqlite") {
    // "Mode=Read" (as ADO names it) opens the database for reading only.
    const std::string mode = AsciiLower(cs.Get("Mode").value_or(""));
    return OpenSqliteConnection(cs.GetAny({"Data Source", "DataSource"}).value_or(""), mode == "read");
  }
  throw Error(err::kProviderNotFound,
              "Provider cannot be found. It may not be properly installed. (provider '" + provider +
                  "'; this server opens SQLite, SQL Server providers and ODBC Driver= or DSN= strings)",
              "connection");
}

}  // namespace ent
