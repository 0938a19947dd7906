// The commands that show results to people: query --format and render, run as a user would.
#include <gtest/gtest.h>

#include "support/program.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

test::ProgramRun Entprcreq(const std::vector<std::string>& arguments) {
  test::TempDir dir;
  std::vector<std::string> args = {"query", "--connection",
                                   "Provider=SQLite;Data Source=" + test::SmallSampleShop(), "--sql",
                                   "select '[b]TOTAL' as hide_Label, 1234.5 as Amount"};
  args.insert(args.end(), arguments.begin(), arguments.end());
  return test::RunProgram(args, dir.path());
}

TEST(RenderCommandTest, QueryShowsItsDocumentInEachFormat) {
  const test::ProgramRun csv = Entprcreq({"--format", "csv"});
  EXPECT_EQ(csv.exit_code, 0);
  EXPECT_EQ(csv.out, "hide_Label,Amount\r\nTOTAL,1234.5\r\n");
  EXPECT_EQ(Entprcreq({"--format", "text"}).out, "       Amount\n-------------\nTOTAL  1234.5\n");
  EXPECT_NE(Entprcreq({"--format", "html"})
                .out.find("<tr class=\"b\"><td>TOTAL</td><td class=\"num\">1234.5</td></tr>"),
            std::string::npos);
  EXPECT_EQ(Entprcreq({}).out.rfind("<xml xmlns:s=", 0), 0u);
  const test::ProgramRun wrong = Entprcreq({"--format", "pdf"});
  EXPECT_EQ(wrong.exit_code, 2);
  EXPECT_NE(wrong.err.find("--format takes text, html or csv, not 'pdf'"), std::string::npos) << wrong.err;
}

}  // namespace
}  // namespace ent
