#include "reports/accounting/work_table_lock.h"

#include <algorithm>
#include <cctype>
#include <filesystem>
#include <map>

#include "common/error.h"
#include "data/connection_string.h"

namespace ent::accounting {

namespace {

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

std::shared_ptr<std::mutex> MutexFor(const std::string& identity) {
  static std::mutex registry_mutex;
  static std::map<std::string, std::shared_ptr<std::mutex>> registry;
  std::lock_guard<std::mutex> guard(registry_mutex);
  auto& slot = registry[identity];
  if (!slot) slot = std::make_shared<std::mutex>();
  return slot;
}

}  // namespace

std::string DatabaseIdentity(const std::string& connection_string) {
  try {
    ConnectionString parsed = ConnectionString::Parse(connection_string);
    const std::string provider = Lower(parsed.Get("Provider").value_or("sqloledb"));
    const std::string source =
        parsed.GetAny({"Data Source", "DataSource", "Server", "Address", "Addr"}).value_or("");
    if (provider == "sqlite") {
      std::error_code ec;
      std::filesystem::path canonical = std::filesystem::weakly_canonical(source, ec);
      return "sqlite:" + (ec ? source : canonical.string());
    }
    const std::string database = parsed.GetAny({"Initial Catalog", "Database"}).value_or("");
    return provider + ":" + Lower(source) + "|" + Lower(database);
  } catch (const Error&) {
    return connection_string;
  }
}

WorkTableLock::WorkTableLock(const std::string& connection_string)
    : mutex_(MutexFor(DatabaseIdentity(connection_string))), guard_(*mutex_) {}

}  // namespace ent::accounting
