// The catalogue's description: every code it describes runs on the sample shop with parameters
// chosen from the description alone and gives the columns the description lists; the JSON is the
// same from the library, the command and the server.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "job/catalogue.h"
#include "server/host_server.h"
#include "server/http_client.h"
#include "support/program.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

// A value a person reading the description would give: dates of the sample shop's busy years,
// an invoice and a customer that exist, no filters.
std::string ValueFor(const ReportParameter& p) {
  const std::string name = p.name;
  if (p.type == 'B') return "false";
  if (p.type == 'C') return "0";
  if (name == "lInvoiceId") return "100002";
  if (name == "lCusID") return "1";
  if (p.type == 'W') return name == "lVehYear" ? "1990" : name == "lInvCount" ? "1" : "20";
  if (name.find('2') != std::string::npos) return name.rfind("start", 0) == 0 ? "1/1/2023" : "12/31/2023";
  for (const char* start : {"sDTFrom", "dtStart", "startDate", "sDateStart"})
    if (name == start) return "1/1/2024";
  if (name.find("Date") != std::string::npos || name.rfind("dt", 0) == 0 || name.rfind("sDT", 0) == 0)
    return "12/31/2024";
  return "";
}

TEST(ReportCatalogueTest, EveryDescribedCodeGivesTheDescribedColumns) {
  std::set<std::string> codes;
  for (const ReportDescription& r : ReportCatalogue()) {
    SCOPED_TRACE(r.code);
    EXPECT_TRUE(codes.insert(r.code).second) << "described twice";
    // Parameters are p0, p1, ... without gaps, each with a meaning.
    for (size_t i = 0; i < r.parameters.size(); ++i) {
      EXPECT_EQ(r.parameters[i].position, static_cast<int>(i));
      EXPECT_NE(std::string(r.parameters[i].meaning), "");
    }
    std::vector<std::string> params;
    for (const ReportParameter& p : r.parameters) params.push_back(ValueFor(p));
    const test::ReportRun run = test::RunReport(r.code, params);
    const std::string result = r.result;
    if (result == "none") {
      EXPECT_NE(run.status, "0");
      EXPECT_FALSE(run.has_document);
      continue;
    }
    ASSERT_EQ(run.status, "0");
    ASSERT_TRUE(run.has_document);
    if (result == "rowset") {
      const std::vector<std::string> described(r.columns.begin(), r.columns.end());
      EXPECT_EQ(run.columns, described);
    } else {
      EXPECT_TRUE(r.columns.empty());
    }
  }
  EXPECT_EQ(codes.size(), 30u);  // 28 reports and two retired codes
  // A code is read without regard to case.
  EXPECT_EQ(test::RunReport("profaloss01", {"1/1/2025", "6/30/2025"}).status, "0");
}

TEST(ReportCatalogueTest, OneJsonFromTheLibraryTheCommandAndTheServer) {
  const nlohmann::json listed = nlohmann::json::parse(ReportCatalogueJson());
  const auto& loyal = *std::find_if(listed["reports"].begin(), listed["reports"].end(),
                                    [](const nlohmann::json& r) { return r["code"] == "LOYAL01"; });
  EXPECT_EQ(loyal["parameters"][3], (nlohmann::json{{"position", 3},
                                                    {"key", "p3"},
                                                    {"name", "cSubTot"},
                                                    {"type", "currency"},
                                                    {"meaning", loyal["parameters"][3]["meaning"]},
                                                    {"default", "0"}}));
  EXPECT_EQ(loyal["parameters"][0]["type"], "date");
  EXPECT_EQ(loyal["parameters"][0]["default"], "");

  EXPECT_EQ(nlohmann::json::parse(test::ShellOutput(std::string(ENTPRCREQ_BINARY) + " reports --json")),
            listed);
  const std::string text = test::ShellOutput(std::string(ENTPRCREQ_BINARY) + " reports");
  EXPECT_NE(text.find("BL01  Balance sheet\n    p0  dtAsOf (date): "), std::string::npos) << text;
  EXPECT_NE(text.find("    p6  bQOHOnly (true/false): "), std::string::npos);

  test::TempDir dir;
  HostServerOptions options;
  options.token_dir = dir.file("token");
  HostServer server(options);
  const int port = server.Start("127.0.0.1", 0);
  const HttpResponse answer = HttpGet("http://127.0.0.1:" + std::to_string(port) + "/reports", {5, 30});
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.content_type, "application/json");
  EXPECT_EQ(nlohmann::json::parse(answer.body), listed);
}

}  // namespace
}  // namespace ent
