#include "data/odbc_driver.h"

#include <sql.h>
#include <sqlext.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <filesystem>
#include <map>
#include <optional>
#include <utility>

#include "common/error.h"
#include "common/text.h"
#include "data/column_values.h"
#include "data/query_limits.h"
#include "data/sql_text.h"
#include "data/tsql_adapter.h"

namespace ent {

namespace {

// One ODBC handle, freed with its owner.
class Handle {
 public:
  Handle(SQLSMALLINT type, SQLHANDLE parent) : type_(type) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(type, parent, &handle_)))
      throw Error(err::kDatabaseError, "The ODBC driver manager cannot allocate a handle.", "odbc");
  }
  Handle(Handle&& other) noexcept
      : type_(other.type_), handle_(std::exchange(other.handle_, static_cast<SQLHANDLE>(nullptr))) {}
  ~Handle() {
    if (handle_ != nullptr) SQLFreeHandle(type_, handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;
  SQLHANDLE get() const { return handle_; }
  SQLSMALLINT type() const { return type_; }

 private:
  SQLSMALLINT type_;
  SQLHANDLE handle_ = nullptr;
};

// The driver's message without the "[vendor][driver][server]" prefixes, so that the database's own
// text is what is reported.
std::string NativeText(std::string message) {
  while (!message.empty() && message.front() == '[') {
    size_t close = message.find(']');
    if (close == std::string::npos) break;
    message.erase(0, close + 1);
  }
  return message;
}

[[noreturn]] void Raise(const Handle& handle, const std::string& prefix = "") {
  SQLCHAR state[6] = {};
  SQLINTEGER native = 0;
  SQLCHAR text[2048] = {};
  SQLSMALLINT length = 0;
  std::string message = "the ODBC driver gave no reason", sqlstate;
  if (SQL_SUCCEEDED(
          SQLGetDiagRec(handle.type(), handle.get(), 1, state, &native, text, sizeof text, &length))) {
    message = NativeText(reinterpret_cast<char*>(text));
    sqlstate = reinterpret_cast<char*>(state);
  }
  int32_t number = err::kDatabaseError;
  if (sqlstate == "42S02" || message.find("no such table") != std::string::npos)
    number = err::kTableNotFound;
  else if (sqlstate == "42000" || sqlstate == "42S22" || sqlstate == "37000")
    number = err::kSyntaxError;
  throw Error(number, prefix + message, "odbc");
}

void Check(SQLRETURN rc, const Handle& handle, const std::string& prefix = "") {
  if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) Raise(handle, prefix);
}

bool IsWhole(SQLSMALLINT t) {
  return t == SQL_INTEGER || t == SQL_SMALLINT || t == SQL_BIGINT || t == SQL_TINYINT;
}
bool IsFraction(SQLSMALLINT t) {
  return t == SQL_DOUBLE || t == SQL_FLOAT || t == SQL_REAL || t == SQL_NUMERIC || t == SQL_DECIMAL;
}

std::string TextAttribute(const Handle& stmt, SQLUSMALLINT column, SQLUSMALLINT attribute) {
  SQLCHAR text[512] = {};
  SQLSMALLINT length = 0;
  if (!SQL_SUCCEEDED(SQLColAttribute(stmt.get(), column, attribute, text, sizeof text, &length, nullptr)))
    return "";
  return reinterpret_cast<char*>(text);
}

SQLLEN NumberAttribute(const Handle& stmt, SQLUSMALLINT column, SQLUSMALLINT attribute) {
  SQLLEN value = 0;
  if (!SQL_SUCCEEDED(SQLColAttribute(stmt.get(), column, attribute, nullptr, 0, nullptr, &value))) return 0;
  return value;
}

// A whole cell as text (SQL_C_CHAR, in as many pieces as it takes); nullopt for null.
std::optional<std::string> TextCell(const Handle& stmt, SQLUSMALLINT column) {
  std::string value;
  char buffer[4096];
  for (;;) {
    SQLLEN indicator = 0;
    SQLRETURN rc = SQLGetData(stmt.get(), column, SQL_C_CHAR, buffer, sizeof buffer, &indicator);
    if (rc == SQL_NO_DATA) break;
    Check(rc, stmt);
    if (indicator == SQL_NULL_DATA) return std::nullopt;
    const size_t piece = (indicator == SQL_NO_TOTAL || indicator >= static_cast<SQLLEN>(sizeof buffer))
                             ? sizeof buffer - 1
                             : static_cast<size_t>(indicator);
    value.append(buffer, piece);
    if (rc == SQL_SUCCESS) break;
  }
  return value;
}

template <typename T>
std::optional<T> FixedCell(const Handle& stmt, SQLUSMALLINT column, SQLSMALLINT c_type) {
  T value{};
  SQLLEN indicator = 0;
  Check(SQLGetData(stmt.get(), column, c_type, &value, sizeof value, &indicator), stmt);
  if (indicator == SQL_NULL_DATA) return std::nullopt;
  return value;
}

class OdbcConnection : public Connection {
 public:
  explicit OdbcConnection(const OdbcTarget& target) : env_(SQL_HANDLE_ENV, SQL_NULL_HANDLE) {
    SQLSetEnvAttr(env_.get(), SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    dbc_ = std::make_unique<Handle>(SQL_HANDLE_DBC, env_.get());
    SQLSetConnectAttr(dbc_->get(), SQL_ATTR_LOGIN_TIMEOUT,
                      reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(target.login_timeout_seconds)), 0);
    std::string text = target.connection_string;
    SQLCHAR out[1024];
    SQLSMALLINT out_length = 0;
    SQLRETURN rc = SQLDriverConnect(dbc_->get(), nullptr, reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS,
                                    out, sizeof out, &out_length, SQL_DRIVER_NOPROMPT);
    if (!SQL_SUCCEEDED(rc)) Raise(*dbc_, "Cannot connect to the shop database: ");
    connected_ = true;
    sqlite_ = AsciiLower(Info(SQL_DBMS_NAME)).find("sqlite") != std::string::npos;
    catalog_ = Info(SQL_DATABASE_NAME);
    if (sqlite_) catalog_ = std::filesystem::path(catalog_).stem().string();
  }

  ~OdbcConnection() override { Close(); }

  SqlDialect dialect() const override { return sqlite_ ? SqlDialect::kSqlite : SqlDialect::kSqlServer; }

  void Execute(const std::string& sql) override {
    Handle stmt(SQL_HANDLE_STMT, dbc()->get());
    QueryWatch watch(Canceller(stmt));
    Run(stmt, sql, watch);
    while (SQL_SUCCEEDED(SQLMoreResults(stmt.get()))) {
    }
  }

  QueryResult Query(const std::string& sql) override {
    Handle stmt(SQL_HANDLE_STMT, dbc()->get());
    QueryWatch watch(Canceller(stmt));
    Run(stmt, sql, watch);
    SQLSMALLINT columns = 0;
    for (;;) {
      Check(SQLNumResultCols(stmt.get(), &columns), stmt);
      if (columns > 0) return Fetch(stmt, columns, watch);
      SQLRETURN rc = SQLMoreResults(stmt.get());
      if (rc == SQL_NO_DATA) return QueryResult{};
      Check(rc, stmt);
    }
  }

  void InsertRow(const std::string& table, const std::vector<std::string>& columns,
                 const std::vector<Variant>& values) override {
    std::string sql = InsertStatement(table, columns);
    Handle stmt(SQL_HANDLE_STMT, dbc()->get());
    // Every value goes as text; the database converts it to the column's type.
    std::vector<std::string> texts(values.size());
    std::vector<SQLLEN> lengths(values.size());
    for (size_t i = 0; i < values.size(); ++i) {
      const Variant& v = values[i];
      if (v.IsNull() || v.kind() == Variant::Kind::kEmpty) {
        lengths[i] = SQL_NULL_DATA;
      } else {
        texts[i] = v.kind() == Variant::Kind::kDate      ? v.date().StoredText()
                   : v.kind() == Variant::Kind::kBoolean ? std::string(v.boolean() ? "1" : "0")
                                                         : v.ToText();
        lengths[i] = static_cast<SQLLEN>(texts[i].size());
      }
      Check(SQLBindParameter(stmt.get(), static_cast<SQLUSMALLINT>(i + 1), SQL_PARAM_INPUT, SQL_C_CHAR,
                             SQL_VARCHAR, std::max<SQLULEN>(1, texts[i].size()), 0, texts[i].data(),
                             static_cast<SQLLEN>(texts[i].size()), &lengths[i]),
            stmt);
    }
    Check(SQLExecDirect(stmt.get(), reinterpret_cast<SQLCHAR*>(sql.data()), SQL_NTS), stmt);
  }

  void Close() override {
    if (connected_) SQLDisconnect(dbc_->get());
    connected_ = false;
  }
  bool IsOpen() const override { return connected_; }

 private:
  const Handle* dbc() const {
    if (!connected_) throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
    return dbc_.get();
  }

  std::string Info(SQLUSMALLINT what) {
    SQLCHAR text[512] = {};
    SQLSMALLINT length = 0;
    if (!SQL_SUCCEEDED(SQLGetInfo(dbc_->get(), what, text, sizeof text, &length))) return "";
    return reinterpret_cast<char*>(text);
  }

  // Over SQLite: the tables' columns as declared, for the adapter; read again when the schema changed.
  const tsql::Schema& AdapterSchema() {
    int64_t version = -1;
    {
      Handle stmt(SQL_HANDLE_STMT, dbc()->get());
      std::string query = tsql::kSqliteSchemaVersionQuery;
      Check(SQLExecDirect(stmt.get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS), stmt);
      if (SQL_SUCCEEDED(SQLFetch(stmt.get()))) version = std::stoll(TextCell(stmt, 1).value_or("-1"));
    }
    if (version == schema_version_ && version != -1) return schema_;
    tsql::Schema schema;
    Handle stmt(SQL_HANDLE_STMT, dbc()->get());
    std::string query = tsql::kSqliteColumnsQuery;
    Check(SQLExecDirect(stmt.get(), reinterpret_cast<SQLCHAR*>(query.data()), SQL_NTS), stmt);
    while (SQL_SUCCEEDED(SQLFetch(stmt.get())))
      tsql::AddDeclaredColumn(schema, TextCell(stmt, 1).value_or(""), TextCell(stmt, 2).value_or(""),
                              TextCell(stmt, 3).value_or(""));
    schema_ = std::move(schema);
    schema_version_ = version;
    return schema_;
  }

  // Stops the statement from another thread when the running queries are interrupted.
  static std::function<void()> Canceller(const Handle& stmt) {
    SQLHANDLE handle = stmt.get();
    return [handle] { SQLCancel(handle); };
  }

  // Runs a text on `stmt` within the watch's time limit (the database's own query timeout).
  void Run(const Handle& stmt, const std::string& sql, const QueryWatch& watch) {
    std::string text =
        sqlite_ ? tsql::ToSqlite(sql, [this]() -> const tsql::Schema& { return AdapterSchema(); }) : sql;
    SQLSetStmtAttr(stmt.get(), SQL_ATTR_QUERY_TIMEOUT,
                   reinterpret_cast<SQLPOINTER>(static_cast<SQLULEN>(watch.SecondsLeft())), 0);
    const SQLRETURN rc = SQLExecDirect(stmt.get(), reinterpret_cast<SQLCHAR*>(text.data()), SQL_NTS);
    if (!SQL_SUCCEEDED(rc) && rc != SQL_NO_DATA) watch.RaiseIfStopped();
    Check(rc, stmt);
  }

  // What the database declares about the columns of a base table, asked once per table.
  struct ColumnInfo {
    std::string name;       // as declared
    std::string type_name;  // "varchar(60)" from SQLite, "varchar" from SQL Server
    int64_t size = 0;
    int digits = 0;
    bool nullable = true;
    bool key = false;
  };
  using TableInfo = std::map<std::string, ColumnInfo>;  // by column name in lower case

  const TableInfo& TableColumns(const std::string& table) {
    auto found = tables_.find(table);
    if (found != tables_.end()) return found->second;
    TableInfo& info = tables_[table];
    std::string name = table;
    {
      Handle stmt(SQL_HANDLE_STMT, dbc()->get());
      if (SQL_SUCCEEDED(SQLColumns(stmt.get(), nullptr, 0, nullptr, 0,
                                   reinterpret_cast<SQLCHAR*>(name.data()), SQL_NTS, nullptr, 0))) {
        while (SQL_SUCCEEDED(SQLFetch(stmt.get()))) {
          ColumnInfo column;
          column.name = TextCell(stmt, 4).value_or("");
          column.type_name = TextCell(stmt, 6).value_or("");
          column.size = FixedCell<SQLBIGINT>(stmt, 7, SQL_C_SBIGINT).value_or(0);
          column.digits = static_cast<int>(FixedCell<SQLBIGINT>(stmt, 9, SQL_C_SBIGINT).value_or(0));
          column.nullable =
              FixedCell<SQLBIGINT>(stmt, 11, SQL_C_SBIGINT).value_or(SQL_NULLABLE) != SQL_NO_NULLS;
          info[AsciiLower(column.name)] = column;
        }
      }
    }
    Handle stmt(SQL_HANDLE_STMT, dbc()->get());
    if (SQL_SUCCEEDED(SQLPrimaryKeys(stmt.get(), nullptr, 0, nullptr, 0,
                                     reinterpret_cast<SQLCHAR*>(name.data()), SQL_NTS))) {
      while (SQL_SUCCEEDED(SQLFetch(stmt.get()))) {
        auto column = info.find(AsciiLower(TextCell(stmt, 4).value_or("")));
        if (column != info.end()) column->second.key = true;
      }
    }
    return info;
  }

  // The field of a type as the database names it, with the size and digits ODBC reports.
  static Field FieldOfTypeName(const std::string& type_name, int64_t size, int digits) {
    tsql::DeclaredType declared = tsql::ParseDeclaredType(type_name);
    const bool sized = declared.name.find("char") != std::string::npos || declared.name == "decimal" ||
                       declared.name == "numeric";
    if (sized && declared.size_or_precision == 0) {
      declared.size_or_precision = static_cast<int>(size);
      declared.scale = digits;
    }
    return FieldOfSqlServerType(declared.name, declared.size_or_precision, declared.scale);
  }

  Field Describe(const Handle& stmt, SQLUSMALLINT column, bool& typed) {
    SQLCHAR name[256] = {};
    SQLSMALLINT name_length = 0, sql_type = 0, digits = 0, nullable = 0;
    SQLULEN size = 0;
    Check(SQLDescribeCol(stmt.get(), column, name, sizeof name, &name_length, &sql_type, &size, &digits,
                         &nullable),
          stmt);
    const std::string table = TextAttribute(stmt, column, SQL_DESC_BASE_TABLE_NAME);
    const std::string origin = TextAttribute(stmt, column, SQL_DESC_BASE_COLUMN_NAME);
    const ColumnInfo* base = nullptr;
    if (!table.empty() && !origin.empty()) {
      const TableInfo& info = TableColumns(table);
      auto found = info.find(AsciiLower(origin));
      if (found != info.end()) base = &found->second;
    }
    const std::string type_name = TextAttribute(stmt, column, SQL_DESC_TYPE_NAME);
    Field f;
    typed = true;
    if (base) {
      f = FieldOfTypeName(base->type_name, base->size, base->digits);
      f.base_catalog = catalog_;
      f.base_table = table;
      f.base_column = base->name;
      f.key_column = base->key;
      f.may_be_null = base->nullable && !base->key;
    } else if (sqlite_ && !table.empty()) {
      // A renamed column of a table: its declared type, though not which column it was.
      f = FieldOfTypeName(type_name, static_cast<int64_t>(size), digits);
    } else if (sqlite_) {
      // SQLite's computed columns are typed by their values, as the SQLite driver types them.
      typed = false;
      f.type = IsWhole(sql_type)      ? DataType::kBigInt
               : IsFraction(sql_type) ? DataType::kDouble
                                      : DataType::kVarWChar;
    } else if (!type_name.empty()) {
      // A computed or renamed column whose type the driver still names.
      f = FieldOfTypeName(type_name, static_cast<int64_t>(size), digits);
      f.may_be_null = nullable != SQL_NO_NULLS;
    } else {
      typed = false;  // typed by its values, read as text
    }
    f.autoincrement = NumberAttribute(stmt, column, SQL_DESC_AUTO_UNIQUE_VALUE) == SQL_TRUE;
    f.name = reinterpret_cast<char*>(name);
    return f;
  }

  // One cell as a raw value for TypeColumns, fetched in the C type that keeps it exact.
  Variant RawCell(const Handle& stmt, SQLUSMALLINT column, const Field& f, bool typed) {
    if (!typed && f.type == DataType::kVarWChar) {
      auto text = TextCell(stmt, column);
      return text ? Variant(*text) : Variant::Null();
    }
    switch (f.type) {
      case DataType::kTinyInt:
      case DataType::kSmallInt:
      case DataType::kInteger:
      case DataType::kBigInt:
      case DataType::kBoolean: {
        auto v = FixedCell<SQLBIGINT>(stmt, column, SQL_C_SBIGINT);
        return v ? Variant::LongLong(*v) : Variant::Null();
      }
      case DataType::kDouble:
      case DataType::kSingle: {
        auto v = FixedCell<double>(stmt, column, SQL_C_DOUBLE);
        if (!typed && v && std::nearbyint(*v) == *v && std::fabs(*v) < 9e15)
          return Variant::LongLong(static_cast<int64_t>(*v));
        return v ? Variant(*v) : Variant::Null();
      }
      case DataType::kCurrency:
      case DataType::kNumeric: {
        auto text = TextCell(stmt, column);
        return text ? Variant(Currency::FromDecimalText(*text)) : Variant::Null();
      }
      case DataType::kDateTime: {
        auto v = FixedCell<SQL_TIMESTAMP_STRUCT>(stmt, column, SQL_C_TYPE_TIMESTAMP);
        if (!v) return Variant::Null();
        return Variant(DateTime::FromParts(v->year, v->month, v->day, v->hour, v->minute, v->second));
      }
      default: {
        auto text = TextCell(stmt, column);
        return text ? Variant(*text) : Variant::Null();
      }
    }
  }

  QueryResult Fetch(const Handle& stmt, SQLSMALLINT columns, QueryWatch& watch) {
    QueryResult result;
    std::vector<bool> typed(static_cast<size_t>(columns));
    for (SQLSMALLINT c = 1; c <= columns; ++c) {
      bool has_type = false;
      result.fields.push_back(Describe(stmt, static_cast<SQLUSMALLINT>(c), has_type));
      typed[static_cast<size_t>(c - 1)] = has_type;
    }
    SQLRETURN rc;
    while ((rc = SQLFetch(stmt.get())) != SQL_NO_DATA) {
      if (!SQL_SUCCEEDED(rc) || watch.MustStop()) watch.RaiseIfStopped();
      Check(rc, stmt);
      std::vector<Variant> row;
      row.reserve(static_cast<size_t>(columns));
      int64_t bytes = 0;
      for (SQLSMALLINT c = 1; c <= columns; ++c) {
        const size_t i = static_cast<size_t>(c - 1);
        row.push_back(RawCell(stmt, static_cast<SQLUSMALLINT>(c), result.fields[i], typed[i]));
        bytes += row.back().IsString() ? static_cast<int64_t>(row.back().text().size()) + 16 : 16;
      }
      watch.AddBytes(bytes);
      result.rows.push_back(std::move(row));
    }
    TypeColumns(result, typed);
    return result;
  }

  Handle env_;
  std::unique_ptr<Handle> dbc_;
  bool connected_ = false;
  bool sqlite_ = false;
  tsql::Schema schema_;  // over SQLite only
  int64_t schema_version_ = -1;
  std::string catalog_;
  std::map<std::string, TableInfo> tables_;
};

}  // namespace

std::shared_ptr<Connection> OpenOdbcConnection(const OdbcTarget& target) {
  return std::make_shared<OdbcConnection>(target);
}

}  // namespace ent
