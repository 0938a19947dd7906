// Result documents read back for people: display markers, the columns of a rowset written by the real
// writer, the sections of an invoice, the limits on untrusted documents, and the three renderings.
#include "job/result_view.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "common/error.h"
#include "data/recordset.h"
#include "job/result_render.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

std::string Write(const test::TempDir& dir, const std::string& name, const std::string& text) {
  std::ofstream(dir.file(name), std::ios::binary) << text;
  return dir.file(name);
}

// A statement as the accounting reports write it: every column hidden, labels with markers, and a
// second rowset-shaped detail: a row added in memory stays inside rs:insert (not flattened).
std::string StatementDocument(const std::vector<std::vector<std::string>>& rows,
                              const std::vector<std::string>& names = {"hide_Account_Name", "hide_cTot3",
                                                                       "hide_Total"}) {
  Recordset rs;
  for (const std::string& name : names) rs.AppendField(AppendedField(name));
  rs.Open();
  for (const auto& row : rows) {
    rs.AddNew();
    for (size_t c = 0; c < row.size(); ++c)
      if (row[c] != "<null>") rs.Set(c, Variant(row[c]));
    rs.Update();
  }
  return rs.SaveToString();
}

ResultView ViewOf(const std::string& xml, const ViewLimits& limits = {}) {
  pugi::xml_document doc;
  EXPECT_TRUE(doc.load_string(xml.c_str()));
  return ReadResultView(doc, limits);
}

TEST(ResultViewTest, MarkersAreReadFromTheStartOfACellOnly) {
  struct Case {
    std::string text, shown;
    int indent;
    bool bold;
  };
  for (const Case& c : std::vector<Case>{
           {"[b]TOTAL ASSETS", "TOTAL ASSETS", 0, true},
           {"[sp6]Cash on Hand", "Cash on Hand", 6, false},
           {"[sp3][b]Total Liabilities", "Total Liabilities", 3, true},
           {"[b][sp12]x", "x", 12, true},
           {"Parts [b] and [sp3]", "Parts [b] and [sp3]", 0, false},
           {"[sp]x", "[sp]x", 0, false},
           {"[spx]x", "[spx]x", 0, false},
           {"[sp3", "[sp3", 0, false},
           {"[sp99999999999999999999]deep", "deep", 200, false},
           {"[B]lower", "[B]lower", 0, false},
           {"", "", 0, false},
       }) {
    const ViewCell cell = ReadCell(c.text);
    EXPECT_EQ(cell.text, c.shown) << c.text;
    EXPECT_EQ(cell.indent, c.indent) << c.text;
    EXPECT_EQ(cell.bold, c.bold) << c.text;
  }
}

TEST(ResultViewTest, RowsetColumnsRowsAndMarkers) {
  const ResultView view = ViewOf(StatementDocument({{"[b]ASSETS", " ", " "},
                                                    {"[sp3]Cash on Hand", "1,415.81", "<null>"},
                                                    {"[b]TOTAL ASSETS", " ", "1,415.81"}},
                                                   {"hide_Account_Name", "Debit", "hide_Total"}));
  EXPECT_EQ(view.kind, "rowset");
  ASSERT_EQ(view.tables.size(), 1u);
  const ViewTable& t = view.tables[0];
  ASSERT_EQ(t.columns.size(), 3u);
  EXPECT_TRUE(t.columns[0].heading_hidden);
  EXPECT_FALSE(t.columns[1].heading_hidden);
  EXPECT_TRUE(t.columns[2].heading_hidden);
  // The rows the writer left inside rs:insert are read all the same.
  ASSERT_EQ(t.rows.size(), 3u);
  EXPECT_EQ(t.total_rows, 3u);
  EXPECT_TRUE(t.rows[0].bold);
  EXPECT_FALSE(t.rows[1].bold);
  EXPECT_EQ(t.rows[1].cells[0].text, "Cash on Hand");
  EXPECT_EQ(t.rows[1].cells[0].indent, 3);
  EXPECT_EQ(t.rows[1].cells[1].text, "1,415.81");
  EXPECT_EQ(t.rows[1].cells[2].text, "");  // a null column is left out of its z:row
  EXPECT_TRUE(t.rows[2].bold);
  EXPECT_EQ(t.rows[2].cells[2].text, "1,415.81");
}

TEST(ResultViewTest, NamesTheWriterHadToReplaceComeBackFromRsName) {
  const ResultView view = ViewOf(StatementDocument({{"PARTS", "5"}}, {"Sales Class", "hide_2 x"}));
  const ViewTable& t = view.tables[0];
  ASSERT_EQ(t.columns.size(), 2u);
  EXPECT_EQ(t.columns[0].name, "Sales Class");
  EXPECT_EQ(t.columns[1].name, "hide_2 x");
  EXPECT_TRUE(t.columns[1].heading_hidden);
  EXPECT_EQ(t.rows[0].cells[0].text, "PARTS");
  EXPECT_EQ(t.rows[0].cells[1].text, "5");
}

TEST(ResultViewTest, InvoiceSectionsBecomeTables) {
  test::TempDir dir;
  const ResultView view =
      LoadResultView(std::string(ENTPRCREQ_SOURCE_DIR) + "/tests/enterprise/invoice_100002.xml");
  EXPECT_EQ(view.kind, "RepairOrder");
  ASSERT_EQ(view.attributes.size(), 1u);
  EXPECT_EQ(view.attributes[0].first, "InvoiceType");
  std::vector<std::string> captions;
  for (const ViewTable& t : view.tables) captions.push_back(t.caption.substr(0, t.caption.find(' ')));
  EXPECT_EQ(captions, (std::vector<std::string>{"CompanyInfo", "Customer", "Vehicle", "InvoiceAdmin", "Items",
                                                "Totals", "Messages"}));
  EXPECT_EQ(view.tables[2].caption, "Vehicle (PartsWo=False)");
  const ViewTable& items = view.tables[4];
  ASSERT_GE(items.columns.size(), 2u);
  EXPECT_EQ(items.columns[0].name, "Qty");
  EXPECT_FALSE(items.columns[0].heading_hidden);
  EXPECT_EQ(items.rows.size(), 1u);
  // A payment line sits under its message, indented.
  const ViewTable& messages = view.tables[6];
  bool indented_payment = false;
  for (const ViewRow& row : messages.rows)
    indented_payment = indented_payment || (row.cells[0].text == "PayDetails" && row.cells[0].indent == 3);
  EXPECT_TRUE(indented_payment);
  EXPECT_EQ(view.tables[0].rows[0].cells[1].text, "Bayfield Auto Service");
}

TEST(ResultViewTest, UntrustedDocumentsAreBounded) {
  test::TempDir dir;
  std::string deep;
  for (int i = 0; i < 40; ++i) deep += "<a>";
  for (int i = 0; i < 40; ++i) deep += "</a>";
  EXPECT_THROW(ViewOf(deep), Error);
  EXPECT_NO_THROW(ViewOf("<a><b><c/></b></a>"));

  const std::string big = Write(dir, "big.xml", StatementDocument({{"x", "1", "2"}}));
  ViewLimits exact;
  exact.max_bytes = static_cast<size_t>(std::filesystem::file_size(big));
  EXPECT_NO_THROW(LoadResultView(big, exact));
  ViewLimits small = exact;
  small.max_bytes -= 1;
  try {
    LoadResultView(big, small);
    FAIL() << "a file over the limit was read";
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("big.xml is larger than " + std::to_string(small.max_bytes) + " bytes"),
              std::string::npos)
        << e.description();
  }

  try {
    LoadResultView(Write(dir, "broken.xml", "<xml><s:Schema>"));
    FAIL() << "broken XML was read";
  } catch (const Error& e) {
    EXPECT_NE(e.description().find("broken.xml is not an XML document"), std::string::npos)
        << e.description();
  }
  EXPECT_THROW(LoadResultView(dir.file("missing.xml")), Error);

  ViewLimits few;
  few.max_rows = 2;
  const ResultView view = ViewOf(StatementDocument({{"a"}, {"b"}, {"c"}, {"d"}}, {"Name"}), few);
  EXPECT_EQ(view.tables[0].rows.size(), 2u);
  EXPECT_EQ(view.tables[0].total_rows, 4u);
  EXPECT_NE(RenderText(view).find("showing the first 2 of 4 rows"), std::string::npos);
}

TEST(ResultRenderTest, TextShowsMarkersAsLayout) {
  const ResultView statement = ViewOf(StatementDocument({{"[b]ASSETS", " ", " "},
                                                         {"[sp3]Cash", "1,415.81", " "},
                                                         {"[sp6]Petty cash", "15.00", " "},
                                                         {"[b]TOTAL ASSETS", " ", "1,430.81"}}));
  const std::string text = RenderText(statement);
  // Every heading is hidden: no heading line, and the markers never show.
  EXPECT_EQ(text.find("hide_"), std::string::npos) << text;
  EXPECT_EQ(text.find("[b]"), std::string::npos) << text;
  EXPECT_EQ(text.find("[sp"), std::string::npos) << text;
  EXPECT_EQ(text,
            "ASSETS\n"
            "   Cash           1,415.81\n"
            "      Petty cash     15.00\n"
            "------------------------------------\n"
            "TOTAL ASSETS                1,430.81\n");

  const ResultView mixed = ViewOf(StatementDocument({{"Oil", "3"}}, {"hide_Name", "Count"}));
  EXPECT_EQ(RenderText(mixed), "     Count\n----------\nOil      3\n");
}

TEST(ResultRenderTest, HtmlEscapesEveryDocumentText) {
  const ResultView view = ViewOf(
      StatementDocument({{"<script>alert(1)</script>", "\"q\" & 'a'"}, {"[b][sp3]<b>Total</b>", "-1,234.50"}},
                        {"hide_Name", "<i>Amount</i>"}));
  const std::string html = RenderHtmlPage(view, "Result <1>");
  EXPECT_EQ(html.find("<script>"), std::string::npos);
  EXPECT_EQ(html.find("<i>"), std::string::npos);
  EXPECT_EQ(html.find("<b>Total"), std::string::npos);
  EXPECT_NE(html.find("&lt;script&gt;alert(1)&lt;/script&gt;"), std::string::npos);
  EXPECT_NE(html.find("&quot;q&quot; &amp; &#39;a&#39;"), std::string::npos);
  EXPECT_NE(html.find("<title>Result &lt;1&gt;</title>"), std::string::npos);
  EXPECT_NE(html.find("<th></th><th>&lt;i&gt;Amount&lt;/i&gt;</th>"), std::string::npos) << html;
  EXPECT_NE(
      html.find("<tr class=\"b\"><td style=\"padding-left:calc(.6em + 3ch)\">&lt;b&gt;Total&lt;/b&gt;</td>"
                "<td class=\"num\">-1,234.50</td></tr>"),
      std::string::npos)
      << html;
  EXPECT_NE(html.find("Content-Security-Policy\" content=\"default-src 'none'"), std::string::npos);
}

TEST(ResultRenderTest, CsvQuotesAndNeverStartsAFormula) {
  const ResultView view = ViewOf(StatementDocument(
      {{"[sp3]Cash, on hand", "-1,234.50"}, {"=HYPERLINK(\"x\")", "+1"}, {"@SUM(A1)", "-x"}},
      {"hide_Name", "Amount"}));
  EXPECT_EQ(RenderCsv(view),
            "hide_Name,Amount\r\n"
            "\"   Cash, on hand\",\"-1,234.50\"\r\n"
            "\"'=HYPERLINK(\"\"x\"\")\",'+1\r\n"
            "'@SUM(A1),'-x\r\n");
}

}  // namespace
}  // namespace ent
