// The commands that show results to people: query --format and render, run as a user would.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <array>
#include <cstdio>
#include <memory>

#include "support/sample_shop.h"

namespace ent {
namespace {

struct Outcome {
  int code;
  std::string out;
};

Outcome Entprcreq(const std::string& arguments) {
  Outcome outcome{-1, ""};
  FILE* pipe = popen((std::string(ENTPRCREQ_BINARY) + " " + arguments + " 2>&1").c_str(), "r");
  std::array<char, 4096> chunk;
  while (pipe && fgets(chunk.data(), chunk.size(), pipe)) outcome.out += chunk.data();
  if (pipe) outcome.code = WEXITSTATUS(pclose(pipe));
  return outcome;
}

TEST(RenderCommandTest, QueryShowsItsDocumentInEachFormat) {
  const std::string query = "query --connection 'Provider=SQLite;Data Source=" + test::SmallSampleShop() +
                            "' --sql \"select '[b]TOTAL' as hide_Label, 1234.5 as Amount\"";
  const Outcome csv = Entprcreq(query + " --format csv");
  EXPECT_EQ(csv.code, 0);
  EXPECT_EQ(csv.out, "hide_Label,Amount\r\nTOTAL,1234.5\r\n");
  const Outcome text = Entprcreq(query + " --format text");
  EXPECT_EQ(text.out, "       Amount\n-------------\nTOTAL  1234.5\n");
  const Outcome html = Entprcreq(query + " --format html");
  EXPECT_NE(html.out.find("<tr class=\"b\"><td>TOTAL</td><td class=\"num\">1234.5</td></tr>"),
            std::string::npos);
  const Outcome xml = Entprcreq(query);
  EXPECT_EQ(xml.out.rfind("<xml xmlns:s=", 0), 0u) << xml.out;
  const Outcome wrong = Entprcreq(query + " --format pdf");
  EXPECT_EQ(wrong.code, 2);
  EXPECT_NE(wrong.out.find("--format takes text, html or csv, not 'pdf'"), std::string::npos) << wrong.out;
}

}  // namespace
}  // namespace ent
