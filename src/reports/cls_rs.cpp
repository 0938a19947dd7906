#include "reports/cls_rs.h"

#include "common/error.h"
#include "common/log.h"
#include "common/thread_values.h"
#include "data/connection_string.h"

namespace ent {

clsRS::~clsRS() {
  // A rowset still reading its rows from the connection (a report read as it is written) holds it
  // too; it closes with the last of them.
  try {
    if (conn_ && conn_.use_count() == 1) conn_->Close();
  } catch (...) {
  }
}

void clsRS::openConnections() {
  WriteLog("openConnections");
  conn_ = OpenConnection(ShopConnectionString());
  WriteLog("EndConnections");
}

std::unique_ptr<Recordset> clsRS::getCustomRS(const std::string& sql, std::string& sInnerErr) {
  try {
    WriteLog("Starting getCustomRS");
    WriteLog(sql);
    WriteLog(MaskedConnectionString(ShopConnectionString()));
    std::shared_ptr<Connection> connection = OpenConnection(ShopConnectionString());
    auto rs = Recordset::OpenForwardOnly(std::move(connection), sql);
    sInnerErr = "0";
    WriteLog("Finished getCustomRS");
    return rs;
  } catch (const Error& e) {
    sInnerErr = e.description();
    WriteLog("ERROR IN getCustomRS:" + e.description());
    return nullptr;
  }
}

}  // namespace ent
