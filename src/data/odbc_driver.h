// The ODBC driver (unixODBC): SQL Server in the field, through FreeTDS, or any ODBC data source. The
// SQL texts go to a SQL Server as they stand; a data source that reports itself as SQLite gets them
// through the T-SQL adapter. Columns are typed by the SQL Server type names the driver reports, values
// as the SQLite driver types them, and failures carry the database's own message.
#pragma once

#include <memory>

#include "data/connection.h"
#include "data/odbc_connection_string.h"

namespace ent {

// Connects. Raises ent::Error with the driver's message when the connection cannot be made.
std::shared_ptr<Connection> OpenOdbcConnection(const OdbcTarget& target);

}  // namespace ent
