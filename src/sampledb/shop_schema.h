// Creating the shop schema (db/schema.sql, db/supplier_purchases.sql) in a SQLite database.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "sampledb/sqlite_out.h"

namespace ent::sampledb {

// The statements of a T-SQL script, without comments, in order. Statements end with ";".
std::vector<std::string> SplitStatements(std::string_view script);

// Creates every table of the shop schema; the indexes come later (CreateShopIndexes), once the
// data is in. CreateShopIndexes also gathers the statistics (ANALYZE) without which SQLite plans the
// reports' joins over the placeholder keys as loops over whole tables.
void CreateShopTables(Database& db);
void CreateShopIndexes(Database& db);

// Creates suph<supid>, the purchase table of one supplier.
void CreateSupplierTable(Database& db, int supid);

}  // namespace ent::sampledb
