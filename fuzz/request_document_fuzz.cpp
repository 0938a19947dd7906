// Any text a head office could send as a request document, run the whole way the host runs it: on
// an empty shop opened for reading only, with tight query limits, posting to a port where nothing
// listens (so every post fails quickly and is logged nowhere).
#include <sqlite3.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/error.h"
#include "data/query_limits.h"
#include "server/cls_process_request.h"

namespace {

struct Setting {
  Setting() {
    char folder[] = "/tmp/entprcreq-fuzz-XXXXXX";
    directory = mkdtemp(folder);
    const std::string shop = directory + "/shop.db";
    sqlite3* db = nullptr;
    sqlite3_open(shop.c_str(), &db);
    sqlite3_exec(db, "create table customer (cusid int, lname varchar(30))", nullptr, nullptr, nullptr);
    sqlite3_close(db);
    connection = "Provider=SQLite;Data Source=" + shop + ";Mode=Read";
    ent::QueryLimits limits;
    limits.seconds = 1;
    limits.result_bytes = 1 << 20;
    ent::SetQueryLimits(limits);
  }
  std::string directory;
  std::string connection;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Setting setting;
  ent::clsProcessRequest request;
  request.set_ApplicationPath(setting.connection);
  request.HostAddress = "127.0.0.1";
  request.HostPort = "1";
  request.SessionID = "fuzz";
  request.set_DBSize(true);
  request.set_TokenDirectory(setting.directory);
  request.set_SoapOptions({1, 2});
  request.setDomDocument(std::string(reinterpret_cast<const char*>(data), size));
  try {
    request.prepareDBReport();
  } catch (const ent::Error&) {
  }
  return 0;
}
