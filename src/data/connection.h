// A connection to a shop database. Drivers (SQLite, ODBC) implement it; OpenConnection picks the
// driver from a provider-style connection string ("Provider=SQLite;Data Source=shop.db").
// Every failure is an Error carrying the database's number and description.
#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "common/variant.h"
#include "data/field.h"

namespace ent {

// The rows of one query, fetched whole (a static client-side cursor).
struct QueryResult {
  std::vector<Field> fields;
  std::vector<std::vector<Variant>> rows;
};

// The SQL a connection speaks: the shop's SQL Server dialect as it stands, or SQLite's (texts pass the
// T-SQL adapter). Statements that are not portable (transactions, locks) are chosen by it.
enum class SqlDialect { kSqlServer, kSqlite };

// The rows of one query read once, in order (a forward-only cursor), typed as Query types them.
class RowCursor {
 public:
  virtual ~RowCursor() = default;
  virtual const std::vector<Field>& fields() const = 0;
  // Reads the next row into `row`, one value per field; false after the last row. Failures raise.
  virtual bool Next(std::vector<Variant>& row) = 0;
};

// The types of a query's computed columns, when its author knows them: column name and SQL Server
// type name ("money", "nvarchar", "float"). SQLite declares no type for a computed column, so one
// not named here is typed from all of its values, and its query's rows are fetched whole first.
using ComputedTypes = std::vector<std::pair<std::string, std::string>>;

class Connection {
 public:
  virtual ~Connection() = default;

  virtual SqlDialect dialect() const = 0;

  // Runs statements that return no rows.
  virtual void Execute(const std::string& sql) = 0;
  // Runs a query and fetches every row.
  virtual QueryResult Query(const std::string& sql) = 0;
  // Runs a query whose rows are read once, in order. Statements before the first one that returns
  // columns run for their effect. Drivers that cannot read row by row fetch every row first, and so
  // does SQLite when a computed column's type is not in `computed`.
  virtual std::unique_ptr<RowCursor> OpenCursor(const std::string& sql, const ComputedTypes& computed);
  // Inserts one row into a table (an editable rowset's Update).
  virtual void InsertRow(const std::string& table, const std::vector<std::string>& columns,
                         const std::vector<Variant>& values) = 0;
  virtual void Close() = 0;
  virtual bool IsOpen() const = 0;
};

// A cursor over rows already fetched.
std::unique_ptr<RowCursor> CursorOver(QueryResult result);

// Opens the database a connection string names ("Mode=Read" opens an SQLite database for reading
// only). Raises Error for an unknown provider, a malformed string or a database that cannot be opened.
std::shared_ptr<Connection> OpenConnection(const std::string& connection_string);

}  // namespace ent
