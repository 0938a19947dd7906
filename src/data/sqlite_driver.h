// The SQLite driver: the embedded default shop database ("Provider=SQLite;Data Source=FILE").
// Every SQL text passes through the T-SQL adapter; column values are typed by the columns' declared
// SQL Server types; SQLite's failures become Errors with the numbers SQL Server's driver gives.
#pragma once

#include <memory>
#include <string>

#include "data/connection.h"

namespace ent {

// Opens an existing database file for reading and writing, or only for reading (every write then
// fails). Raises Error when it cannot be opened.
std::shared_ptr<Connection> OpenSqliteConnection(const std::string& path, bool read_only = false);

}  // namespace ent
