#include "support/server_loopback.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/error.h"
#include "support/sample_shop.h"

namespace ent::test {

std::string FileText(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::vector<std::string> FileNames(const std::string& dir) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) names.push_back(entry.path().filename());
  std::sort(names.begin(), names.end());
  return names;
}

namespace {

std::string Document(const std::string& type, const std::string& code, const std::vector<std::string>& params,
                     const std::string& sql, const std::string& session) {
  std::string items;
  for (size_t i = 0; i < params.size(); ++i)
    items += "<item n='p" + std::to_string(i) + "' v='" + params[i] + "'/>";
  return "<report><type>" + type + "</type><clientid>12</clientid><sql>" + sql + "</sql><name>" + code +
         "</name><params><reportItem>" + items + "</reportItem></params><sessionid>" + session +
         "</sessionid></report>";
}

}  // namespace

std::string CodeRequest(const std::string& code, const std::vector<std::string>& params,
                        const std::string& session) {
  return Document("1", code, params, "", session);
}

std::string SqlRequest(const std::string& sql, const std::string& session) {
  return Document("2", "", {}, sql, session);
}

void HostOnLoopback::Serve(HostServerOptions options) {
  if (options.token_dir.empty()) options.token_dir = dir_.file("token");
  options.soap = {2, 10};
  server_.reset();
  server_ = std::make_unique<HostServer>(options);
  port_ = server_->Start("127.0.0.1", 0);
}

std::string HostOnLoopback::Url(const std::string& path) const {
  return "http://127.0.0.1:" + std::to_string(port_) + path;
}

nlohmann::json HostOnLoopback::Call(const std::string& session, const std::string& document,
                                    const std::string& connection) const {
  return {{"ApplicationPath",
           connection.empty() ? "Provider=SQLite;Data Source=" + SmallSampleShop() : connection},
          {"HostAddress", "127.0.0.1"},
          {"HostPort", std::to_string(office_port_)},
          {"GUID", "g"},
          {"SessionID", session},
          {"ClientID", session},
          {"DBSize", true},
          {"Request", document}};
}

HttpResponse HostOnLoopback::Post(const nlohmann::json& call, long timeout,
                                  std::vector<std::string> headers) const {
  headers.push_back("Content-Type: application/json");
  return HttpPost(Url("/requests"), headers, call.dump(), {5, timeout});
}

}  // namespace ent::test
