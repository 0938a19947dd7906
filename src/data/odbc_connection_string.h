// Which shop connection strings go to ODBC, and the ODBC connection string each becomes. A string for
// the SQL Server providers (sqloledb, SQLOLEDB.1, MSOLEDBSQL, SQLNCLI11 and the like, in any case, or
// no provider at all, since sqloledb is the default) is mapped to the FreeTDS ODBC driver; a string
// that names an ODBC Driver= or DSN= goes to ODBC as it is (without its Provider key).
#pragma once

#include <optional>
#include <string>

#include "data/connection_string.h"

namespace ent {

struct OdbcTarget {
  std::string connection_string;    // for SQLDriverConnect
  long login_timeout_seconds = 15;  // "Connect Timeout", as the SQL Server providers default it
};

// The ODBC target of a connection string, or nullopt when it is not for ODBC (Provider=SQLite). Raises
// ent::Error for what cannot be mapped: Windows authentication, or no server to connect to.
// $ENTPRCREQ_FREETDS_DRIVER names the FreeTDS driver in odbcinst.ini (default "FreeTDS").
std::optional<OdbcTarget> OdbcTargetOf(const ConnectionString& cs);

}  // namespace ent
