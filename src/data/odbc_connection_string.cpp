#include "data/odbc_connection_string.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>

#include "common/error.h"
#include "common/text.h"

namespace ent {

namespace {

bool IsSqlServerProvider(const std::string& provider) {
  const std::string p = AsciiLower(provider);
  for (const char* family : {"sqloledb", "msoledbsql", "sqlncli"})
    if (p.rfind(family, 0) == 0) return true;
  return false;
}

// An ODBC attribute value, braced when it holds a character that would end or confuse it.
std::string OdbcValue(const std::string& value) {
  if (value.size() >= 2 && value.front() == '{' && value.back() == '}') return value;
  if (value.find_first_of(";{}=") == std::string::npos &&
      (value.empty() || (value.front() != ' ' && value.back() != ' ')))
    return value;
  std::string braced = "{";
  for (char c : value) braced += c == '}' ? std::string("}}") : std::string(1, c);
  return braced + "}";
}

long TimeoutOf(const ConnectionString& cs) {
  const std::string text = cs.GetAny({"Connect Timeout", "Connection Timeout"}).value_or("");
  if (text.empty()) return 15;
  try {
    size_t used = 0;
    long seconds = std::stol(text, &used);
    if (used == text.size() && seconds >= 0) return seconds;
  } catch (const std::exception&) {
  }
  throw Error(err::kDatabaseError, "Invalid value for the connection timeout: '" + text + "'.", "odbc");
}

OdbcTarget FreeTdsTarget(const ConnectionString& cs) {
  const std::string integrated =
      AsciiLower(cs.GetAny({"Integrated Security", "Trusted_Connection"}).value_or(""));
  if (integrated == "sspi" || integrated == "true" || integrated == "yes")
    throw Error(err::kDatabaseError,
                "Integrated Security (Windows authentication) is not supported on this server: give the "
                "connection string a User ID and Password.",
                "odbc");
  std::string server =
      cs.GetAny({"Data Source", "Server", "Address", "Addr", "Network Address"}).value_or("");
  if (server.empty())
    throw Error(err::kDatabaseError,
                "The connection string names no Data Source (the SQL Server to connect to).", "odbc");
  std::string port;
  if (size_t comma = server.find(','); comma != std::string::npos) {
    port = server.substr(comma + 1);
    server = server.substr(0, comma);
  }
  if (server == "." || AsciiLower(server) == "(local)" || AsciiLower(server) == "localhost")
    server = "127.0.0.1";
  const char* driver = std::getenv("ENTPRCREQ_FREETDS_DRIVER");
  std::string odbc =
      "Driver=" + OdbcValue(driver && *driver ? driver : "FreeTDS") + ";Server=" + OdbcValue(server);
  if (!port.empty()) odbc += ";Port=" + OdbcValue(port);
  if (auto database = cs.GetAny({"Initial Catalog", "Database"})) odbc += ";Database=" + OdbcValue(*database);
  if (auto user = cs.GetAny({"User ID", "UID", "User"})) odbc += ";UID=" + OdbcValue(*user);
  if (auto password = cs.GetAny({"Password", "PWD"})) odbc += ";PWD=" + OdbcValue(*password);
  odbc += ";TDS_Version=7.4;ClientCharset=UTF-8";
  return {odbc, TimeoutOf(cs)};
}

}  // namespace

std::optional<OdbcTarget> OdbcTargetOf(const ConnectionString& cs) {
  const std::optional<std::string> provider = cs.Get("Provider");
  if (provider && AsciiLower(*provider) == "sqlite") return std::nullopt;
  if (cs.Get("Driver") || cs.Get("DSN")) {
    std::string odbc;
    for (const auto& [key, value] : cs.entries()) {
      if (AsciiLower(key) == "provider") continue;
      odbc += (odbc.empty() ? "" : ";") + key + "=" + OdbcValue(value);
    }
    return OdbcTarget{odbc, TimeoutOf(cs)};
  }
  if (!provider || IsSqlServerProvider(*provider)) return FreeTdsTarget(cs);
  return std::nullopt;
}

}  // namespace ent
