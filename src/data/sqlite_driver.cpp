#include "data/sqlite_driver.h"

#include <sqlite3.h>

#include <cmath>
#include <filesystem>
#include <limits>

#include "common/error.h"
#include "data/sql_format_function.h"
#include "data/tsql_adapter.h"

namespace ent {

namespace {

constexpr int kBusyTimeoutMs = 30000;

struct DbCloser {
  void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
};
struct StmtFinalizer {
  void operator()(sqlite3_stmt* s) const { sqlite3_finalize(s); }
};
using DbHandle = std::unique_ptr<sqlite3, DbCloser>;
using StmtHandle = std::unique_ptr<sqlite3_stmt, StmtFinalizer>;

// SQLite's failure as the reference's numbers: a missing table, a syntax error, or a general failure.
[[noreturn]] void Raise(sqlite3* db) {
  std::string message = db ? sqlite3_errmsg(db) : "out of memory";
  int32_t number = err::kDatabaseError;
  if (message.rfind("no such table", 0) == 0)
    number = err::kTableNotFound;
  else if (message.find("syntax error") != std::string::npos || message.rfind("no such column", 0) == 0 ||
           message.rfind("no such function", 0) == 0 || message.find("wrong number of arguments") != std::string::npos)
    number = err::kSyntaxError;
  throw Error(number, message, "sqlite");
}

// The field a declared SQL Server type describes.
Field FieldFromDeclaredType(const tsql::DeclaredType& t) {
  Field f;
  const std::string& n = t.name;
  auto set = [&](DataType type, int64_t size, int precision = 0) {
    f.type = type;
    f.defined_size = size;
    f.precision = precision;
  };
  if (n == "int" || n == "integer") set(DataType::kInteger, 4, 10);
  else if (n == "bigint") set(DataType::kBigInt, 8, 19);
  else if (n == "smallint") set(DataType::kSmallInt, 2, 5);
  else if (n == "tinyint") set(DataType::kTinyInt, 1, 3);
  else if (n == "bit") set(DataType::kBoolean, 2);
  else if (n == "money") set(DataType::kCurrency, 8, 19);
  else if (n == "smallmoney") set(DataType::kCurrency, 8, 10);
  else if (n == "float" || n == "double") set(DataType::kDouble, 8, 15);
  else if (n == "real") set(DataType::kSingle, 4, 7);
  else if (n == "decimal" || n == "numeric") {
    set(DataType::kNumeric, 19, t.size_or_precision > 0 ? t.size_or_precision : 18);
    f.scale = t.scale;
  } else if (n == "datetime" || n == "smalldatetime" || n == "date" || n == "datetime2") {
    set(DataType::kDateTime, 16, 23);
    f.scale = 3;
  } else if (n == "char") set(DataType::kChar, t.size_or_precision > 0 ? t.size_or_precision : 1);
  else if (n == "nchar") set(DataType::kWChar, t.size_or_precision > 0 ? t.size_or_precision : 1);
  else if (n == "varchar") set(DataType::kVarChar, t.size_or_precision > 0 ? t.size_or_precision : 8000);
  else if (n == "nvarchar") set(DataType::kVarWChar, t.size_or_precision > 0 ? t.size_or_precision : 4000);
  else if (n == "text") set(DataType::kLongVarChar, 2147483647);
  else if (n == "ntext") set(DataType::kLongVarWChar, 1073741823);
  else if (n == "uniqueidentifier") set(DataType::kGuid, 16);
  else set(DataType::kVarWChar, 4000);
  return f;
}

// A computed column has no declared type: its values decide. Whole numbers give int (bigint beyond
// its range); fractions give money when every value has at most four decimals (sums and differences of
// amounts), float otherwise; text gives nvarchar.
Field FieldFromValues(const std::vector<std::vector<Variant>>& rows, size_t column) {
  bool any_real = false, any_text = false, big = false, all_money_like = true;
  for (const auto& row : rows) {
    const Variant& v = row[column];
    switch (v.kind()) {
      case Variant::Kind::kLongLong:
        if (v.whole() > std::numeric_limits<int32_t>::max() || v.whole() < std::numeric_limits<int32_t>::min())
          big = true;
        break;
      case Variant::Kind::kDouble: {
        any_real = true;
        double scaled = v.floating() * 10000;
        if (std::fabs(scaled) > 9e14 || std::fabs(scaled - std::nearbyint(scaled)) > 1e-6 * std::max(1.0, std::fabs(scaled)))
          all_money_like = false;
        break;
      }
      case Variant::Kind::kString:
        any_text = true;
        break;
      default:
        break;
    }
  }
  tsql::DeclaredType t;
  if (any_text) t.name = "nvarchar";
  else if (any_real) t.name = all_money_like ? "money" : "float";
  else t.name = big ? "bigint" : "int";
  return FieldFromDeclaredType(t);
}

// The raw SQLite value of a column.
Variant RawValue(sqlite3_stmt* stmt, int col) {
  switch (sqlite3_column_type(stmt, col)) {
    case SQLITE_NULL: return Variant::Null();
    case SQLITE_INTEGER: return Variant::LongLong(sqlite3_column_int64(stmt, col));
    case SQLITE_FLOAT: return Variant(sqlite3_column_double(stmt, col));
    default: {
      const unsigned char* text = sqlite3_column_text(stmt, col);
      return Variant(std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(sqlite3_column_bytes(stmt, col))));
    }
  }
}

// The raw value as the field's type; a value SQLite holds in another form than the type stays as it is.
Variant Typed(const Field& f, Variant raw) {
  using K = Variant::Kind;
  if (raw.IsNull()) return raw;
  const bool whole = raw.kind() == K::kLongLong, real = raw.kind() == K::kDouble;
  switch (f.type) {
    case DataType::kInteger:
      if (whole && raw.whole() >= std::numeric_limits<int32_t>::min() && raw.whole() <= std::numeric_limits<int32_t>::max())
        return Variant::Long(static_cast<int32_t>(raw.whole()));
      if (real && std::nearbyint(raw.floating()) == raw.floating() && std::fabs(raw.floating()) < 2147483648.0)
        return Variant::Long(static_cast<int32_t>(raw.floating()));
      return raw;
    case DataType::kSmallInt:
      if (whole) return Variant::Integer(static_cast<int16_t>(raw.whole()));
      return raw;
    case DataType::kTinyInt:
      if (whole) return Variant::Byte(static_cast<uint8_t>(raw.whole()));
      return raw;
    case DataType::kBigInt:
      return raw;
    case DataType::kBoolean:
      if (whole || real) return Variant(raw.ToDouble() != 0);
      return raw;
    case DataType::kCurrency:
      if (whole || real) return Variant(raw.ToCurrency());
      return raw;
    case DataType::kDouble:
      if (whole) return Variant(static_cast<double>(raw.whole()));
      return raw;
    case DataType::kSingle:
      if (whole || real) return Variant::Single(static_cast<float>(raw.ToDouble()));
      return raw;
    case DataType::kNumeric:
      if (whole || real) {
        Currency c = raw.ToCurrency();  // the shop's decimals have at most four places
        std::string text = c.ToString();
        size_t point = text.find('.');
        int have = point == std::string::npos ? 0 : static_cast<int>(text.size() - point - 1);
        if (f.scale > 0 && point == std::string::npos) text += '.';
        for (int i = have; i < f.scale; ++i) text += '0';
        return Variant::FromDecimal(Decimal{text, f.scale});
      }
      return raw;
    case DataType::kDateTime:
      if (raw.IsString()) {
        if (auto d = DateTime::Parse(raw.text())) return Variant(*d);
      }
      return raw;
    default:  // text types
      if (raw.IsString()) return raw;
      return Variant(raw.ToText());
  }
}

class SqliteConnection : public Connection {
 public:
  SqliteConnection(DbHandle db, std::string catalog) : db_(std::move(db)), catalog_(std::move(catalog)) {}

  void Execute(const std::string& sql) override {
    const std::string text = tsql::ToSqlite(sql);
    const char* tail = text.c_str();
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail);
      if (!stmt) continue;
      int rc;
      while ((rc = sqlite3_step(stmt.get())) == SQLITE_ROW) {
      }
      if (rc != SQLITE_DONE) Raise(db());
    }
  }

  QueryResult Query(const std::string& sql) override {
    const std::string text = tsql::ToSqlite(sql);
    const char* tail = text.c_str();
    // The rows of the first statement that returns columns; statements before it run for their effect.
    while (tail && *tail) {
      StmtHandle stmt = Prepare(tail, &tail);
      if (!stmt) continue;
      if (sqlite3_column_count(stmt.get()) == 0) {
        int rc = sqlite3_step(stmt.get());
        if (rc != SQLITE_DONE && rc != SQLITE_ROW) Raise(db());
        continue;
      }
      return Fetch(stmt.get());
    }
    return QueryResult{};
  }

  void InsertRow(const std::string& table, const std::vector<std::string>& columns,
                 const std::vector<Variant>& values) override {
    std::string sql = "INSERT INTO [" + table + "] (";
    std::string marks;
    for (size_t i = 0; i < columns.size(); ++i) {
      sql += (i ? ", [" : "[") + columns[i] + "]";
      marks += i ? ", ?" : "?";
    }
    sql += ") VALUES (" + marks + ")";
    if (columns.empty()) sql = "INSERT INTO [" + table + "] DEFAULT VALUES";
    StmtHandle stmt = Prepare(sql.c_str(), nullptr);
    for (size_t i = 0; i < values.size(); ++i) Bind(stmt.get(), static_cast<int>(i + 1), values[i]);
    if (sqlite3_step(stmt.get()) != SQLITE_DONE) Raise(db());
  }

  void Close() override { db_.reset(); }
  bool IsOpen() const override { return db_ != nullptr; }

 private:
  sqlite3* db() {
    if (!db_) throw Error(3704, "Operation is not allowed when the object is closed.");
    return db_.get();
  }

  StmtHandle Prepare(const char* sql, const char** tail) {
    sqlite3_stmt* raw = nullptr;
    if (sqlite3_prepare_v2(db(), sql, -1, &raw, tail) != SQLITE_OK) Raise(db());
    return StmtHandle(raw);
  }

  static void Bind(sqlite3_stmt* stmt, int index, const Variant& v) {
    using K = Variant::Kind;
    switch (v.kind()) {
      case K::kEmpty: case K::kNull: sqlite3_bind_null(stmt, index); break;
      case K::kBoolean: sqlite3_bind_int(stmt, index, v.boolean() ? 1 : 0); break;
      case K::kByte: case K::kInteger: case K::kLong: case K::kLongLong: sqlite3_bind_int64(stmt, index, v.whole()); break;
      case K::kDate: {
        std::string text = v.date().StoredText();
        sqlite3_bind_text(stmt, index, text.c_str(), static_cast<int>(text.size()), SQLITE_TRANSIENT);
        break;
      }
      case K::kString: sqlite3_bind_text(stmt, index, v.text().c_str(), static_cast<int>(v.text().size()), SQLITE_TRANSIENT); break;
      default: sqlite3_bind_double(stmt, index, v.ToDouble()); break;
    }
  }

  QueryResult Fetch(sqlite3_stmt* stmt) {
    QueryResult result;
    const int n = sqlite3_column_count(stmt);
    std::vector<bool> declared(static_cast<size_t>(n), false);
    for (int c = 0; c < n; ++c) {
      Field f;
      const char* decl = sqlite3_column_decltype(stmt, c);
      if (decl) {
        f = FieldFromDeclaredType(tsql::ParseDeclaredType(decl));
        declared[static_cast<size_t>(c)] = true;
      }
      f.name = sqlite3_column_name(stmt, c);
      DescribeBase(stmt, c, f);
      result.fields.push_back(std::move(f));
    }
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
      std::vector<Variant> row;
      row.reserve(static_cast<size_t>(n));
      for (int c = 0; c < n; ++c) row.push_back(RawValue(stmt, c));
      result.rows.push_back(std::move(row));
    }
    if (rc != SQLITE_DONE) Raise(db());
    for (size_t c = 0; c < result.fields.size(); ++c) {
      Field& f = result.fields[c];
      if (!declared[c]) {
        Field typed = FieldFromValues(result.rows, c);
        typed.name = std::move(f.name);
        f = std::move(typed);
      }
      for (auto& row : result.rows) row[c] = Typed(f, std::move(row[c]));
    }
    return result;
  }

  // Where a column comes from: its table and column, whether it may be null and whether it is a key.
  void DescribeBase(sqlite3_stmt* stmt, int c, Field& f) {
    const char* table = sqlite3_column_table_name(stmt, c);
    const char* origin = sqlite3_column_origin_name(stmt, c);
    const char* schema = sqlite3_column_database_name(stmt, c);
    if (!table || !origin) return;
    f.base_catalog = catalog_;
    f.base_table = table;
    f.base_column = origin;
    int not_null = 0, primary_key = 0, autoinc = 0;
    if (sqlite3_table_column_metadata(db(), schema, table, origin, nullptr, nullptr, &not_null, &primary_key,
                                      &autoinc) == SQLITE_OK) {
      f.may_be_null = !not_null && !primary_key;
      f.key_column = primary_key != 0;
      f.autoincrement = autoinc != 0;
    }
  }

  DbHandle db_;
  std::string catalog_;
};

}  // namespace

std::shared_ptr<Connection> OpenSqliteConnection(const std::string& path) {
  if (path.empty()) throw Error(err::kDatabaseError, "The connection string names no Data Source (the shop database file).", "sqlite");
  sqlite3* raw = nullptr;
  int rc = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  DbHandle db(raw);
  if (rc != SQLITE_OK) {
    std::string why = raw ? sqlite3_errmsg(raw) : "out of memory";
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  sqlite3_busy_timeout(db.get(), kBusyTimeoutMs);
  sqlite3_extended_result_codes(db.get(), 1);
  RegisterSqlFormatFunction(db.get());
  // Reading the schema proves the file is a database before anyone relies on it.
  if (sqlite3_exec(db.get(), "select count(*) from sqlite_master", nullptr, nullptr, nullptr) != SQLITE_OK) {
    std::string why = sqlite3_errmsg(db.get());
    throw Error(err::kDatabaseError, "Cannot open the shop database '" + path + "': " + why, "sqlite");
  }
  return std::make_shared<SqliteConnection>(std::move(db), std::filesystem::path(path).stem().string());
}

}  // namespace ent
