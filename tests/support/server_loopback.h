// What the server tests share: a file's bytes, request documents, and the host server on loopback
// posting to a stand-in head office.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "server/head_office.h"
#include "server/host_server.h"
#include "server/http_client.h"
#include "support/temp_dir.h"

namespace ent::test {

// A file's bytes ("" when it cannot be read).
std::string FileText(const std::string& path);

// The names in a folder, sorted.
std::vector<std::string> FileNames(const std::string& dir);

// A request document for the prebuilt report `code` with parameters p0, p1, ...
std::string CodeRequest(const std::string& code, const std::vector<std::string>& params = {},
                        const std::string& session = "S");
// A request document for the free SQL text `sql`.
std::string SqlRequest(const std::string& sql, const std::string& session = "S");

// A host server on loopback (token in the test's folder) that posts to a stand-in head office.
class HostOnLoopback : public ::testing::Test {
 protected:
  // Starts the server, replacing one started before; the token goes to the test's folder unless
  // `options` name another.
  void Serve(HostServerOptions options = {});
  std::string Url(const std::string& path) const;
  // A call that runs `document` on the shop `connection` and posts to `office_port_`.
  nlohmann::json Call(const std::string& session, const std::string& document,
                      const std::string& connection = "") const;
  HttpResponse Post(const nlohmann::json& call, long timeout = 30,
                    std::vector<std::string> headers = {}) const;

  TempDir dir_;
  HeadOffice office_{HeadOfficeOptions{}};
  int office_port_ = office_.Start("127.0.0.1", 0);
  std::unique_ptr<HostServer> server_;
  int port_ = 0;
};

}  // namespace ent::test
