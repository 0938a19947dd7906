#include "sampledb/sample_db.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include "common/error.h"
#include "sampledb/shop.h"
#include "sampledb/shop_schema.h"
#include "sampledb/sqlite_out.h"
#include "sampledb/untidy.h"

namespace ent::sampledb {
namespace {

ShopScale ScaleOf(Size size) {
  switch (size) {
    case Size::kSmall:
      return {60, 300, 1};
    case Size::kMedium:
      return {1500, 9000, 3};
    case Size::kLarge:
      return {18000, 120000, 8};
  }
  return {60, 300, 1};
}

std::vector<TableRows> CountRows(Database& db) {
  std::vector<TableRows> counts;
  sqlite3_stmt* raw = nullptr;
  sqlite3_prepare_v2(
      db.handle(),
      "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite%' ORDER BY name", -1,
      &raw, nullptr);
  const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> tables(raw, sqlite3_finalize);
  while (tables && sqlite3_step(tables.get()) == SQLITE_ROW) {
    counts.push_back({reinterpret_cast<const char*>(sqlite3_column_text(tables.get(), 0)), 0});
  }
  for (TableRows& count : counts) {
    sqlite3_stmt* stmt = nullptr;
    sqlite3_prepare_v2(db.handle(), ("SELECT count(*) FROM \"" + count.table + "\"").c_str(), -1, &stmt,
                       nullptr);
    const std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)> guard(stmt, sqlite3_finalize);
    if (stmt && sqlite3_step(stmt) == SQLITE_ROW) count.rows = sqlite3_column_int64(stmt, 0);
  }
  return counts;
}

[[noreturn]] void FailFile(const std::string& what, const std::string& path, int error) {
  throw Error(err::kDatabaseError, what + " " + path + ": " + std::strerror(error), "sample-db");
}

}  // namespace

std::optional<Size> ParseSize(std::string_view text) {
  if (text == "small") return Size::kSmall;
  if (text == "medium") return Size::kMedium;
  if (text == "large") return Size::kLarge;
  return std::nullopt;
}

std::vector<TableRows> CreateSampleDb(const std::string& path, const Options& options) {
  namespace fs = std::filesystem;
  std::error_code ec;
  if (!options.replace && fs::exists(path, ec)) {
    throw Error(err::kInvalidProcedureCall, "The file " + path + " already exists.", "sample-db");
  }
  const fs::path folder = fs::path(path).parent_path();
  if (!folder.empty() && !fs::is_directory(folder, ec)) {
    throw Error(err::kInvalidProcedureCall, "The folder " + folder.string() + " does not exist.",
                "sample-db");
  }
  // Built under a temporary name and moved into place when complete.
  const std::string partial = path + ".partial";
  fs::remove(partial, ec);
  std::vector<TableRows> counts;
  try {
    Database db(partial);
    // A fixed page size and no journal: the file depends only on what is written into it.
    db.Exec("PRAGMA page_size = 4096");
    db.Exec("PRAGMA journal_mode = OFF");
    db.Exec("PRAGMA synchronous = OFF");
    db.Exec("PRAGMA cache_size = -65536");
    db.Exec("BEGIN");
    CreateShopTables(db);
    Shop(db, ScaleOf(options.size), options.seed, options.progress).Build();
    if (options.untidy) MakeUntidy(db);
    CreateShopIndexes(db);
    db.Exec("COMMIT");
    counts = CountRows(db);
  } catch (...) {
    fs::remove(partial, ec);
    throw;
  }
  if (options.replace) {
    if (std::rename(partial.c_str(), path.c_str()) != 0) {
      const int error = errno;
      fs::remove(partial, ec);
      FailFile("Cannot write", path, error);
    }
  } else {
    // link() refuses to replace a file that appeared in the meantime; where the file system has
    // no hard links, a rename after a last look has to do.
    int rc = ::link(partial.c_str(), path.c_str());
    int error = errno;
    if (rc != 0 && error != EEXIST && !fs::exists(path, ec)) {
      rc = std::rename(partial.c_str(), path.c_str());
      error = errno;
    }
    fs::remove(partial, ec);
    if (rc != 0) {
      if (error == EEXIST) {
        throw Error(err::kInvalidProcedureCall, "The file " + path + " already exists.", "sample-db");
      }
      FailFile("Cannot write", path, error);
    }
  }
  return counts;
}

}  // namespace ent::sampledb
