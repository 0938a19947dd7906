#include "data/connection.h"

#include <algorithm>
#include <cctype>

#include "common/error.h"
#include "data/connection_string.h"
#include "data/odbc_driver.h"
#include "data/sqlite_driver.h"

namespace ent {

std::shared_ptr<Connection> OpenConnection(const std::string& connection_string) {
  ConnectionString cs = ConnectionString::Parse(connection_string);
  if (std::optional<OdbcTarget> odbc = OdbcTargetOf(cs)) return OpenOdbcConnection(*odbc);
  std::string provider = cs.Get("Provider").value_or("sqloledb");
  std::transform(provider.begin(), provider.end(), provider.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  if (provider == "sqlite") {
    // "Mode=Read" (as ADO names it) opens the database for reading only.
    std::string mode = cs.Get("Mode").value_or("");
    std::transform(mode.begin(), mode.end(), mode.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return OpenSqliteConnection(cs.GetAny({"Data Source", "DataSource"}).value_or(""), mode == "read");
  }
  throw Error(3706,
              "Provider cannot be found. It may not be properly installed. (provider '" + provider +
                  "'; this server opens SQLite, SQL Server providers and ODBC Driver= or DSN= strings)",
              "connection");
}

}  // namespace ent
