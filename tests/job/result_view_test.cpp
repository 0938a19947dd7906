// Result documents read back for people: display markers, the columns of a rowset written by the real
// writer, the sections of an invoice, the limits on untrusted documents, and the three renderings.
#include "job/result_view.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "common/error.h"
#include "data/recordset.h"
#include "job/result_render.h"
#include "support/error_text.h"
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

// A table as one text: the column names ("-" before a hidden heading), then each row ("*" before
// a bold one) with every cell led by its indentation.
std::string Shown(const ViewTable& table) {
  std::string out;
  for (const ViewColumn& c : table.columns)
    out += std::string(out.empty() ? "" : "|") + (c.heading_hidden ? "-" : "") + c.name;
  for (const ViewRow& row : table.rows) {
    out += row.bold ? "\n*" : "\n";
    for (size_t c = 0; c < row.cells.size(); ++c)
      out += std::string(c ? "|" : "") + std::string(static_cast<size_t>(row.cells[c].indent), ' ') +
             row.cells[c].text;
  }
  return out + "\n";
}

TEST(ResultViewTest, MarkersAreReadFromTheStartOfACellOnly) {
  // What is shown: "*" before a bold cell, then its indentation and its text.
  for (const auto& [text, shown] : std::vector<std::pair<std::string, std::string>>{
           {"[b]TOTAL ASSETS", "*TOTAL ASSETS"},
           {"[sp6]Cash on Hand", "      Cash on Hand"},
           {"[sp3][b]Total Liabilities", "*   Total Liabilities"},
           {"[b][sp12]x", "*            x"},
           {"Parts [b] and [sp3]", "Parts [b] and [sp3]"},
           {"[sp]x", "[sp]x"},
           {"[spx]x", "[spx]x"},
           {"[sp3", "[sp3"},
           {"[sp99999999999999999999]deep", std::string(200, ' ') + "deep"},
           {"[B]lower", "[B]lower"},
           {"", ""},
       }) {
    const ViewCell cell = ReadCell(text);
    EXPECT_EQ((cell.bold ? "*" : "") + std::string(static_cast<size_t>(cell.indent), ' ') + cell.text, shown);
  }
}

TEST(ResultViewTest, RowsetColumnsRowsAndMarkers) {
  // "Sales Class" and "hide_2 x" are written under other names and come back from rs:name; the
  // rows the writer left inside rs:insert are read all the same, and a null cell is empty.
  const ResultView view = ViewOf(StatementDocument({{"[b]ASSETS", " ", " "},
                                                    {"[sp3]Cash on Hand", "1,415.81", "<null>"},
                                                    {"[b]TOTAL ASSETS", " ", "1,415.81"}},
                                                   {"hide_Account_Name", "Sales Class", "hide_2 x"}));
  EXPECT_EQ(view.kind, "rowset");
  ASSERT_EQ(view.tables.size(), 1u);
  EXPECT_EQ(Shown(view.tables[0]),
            "-hide_Account_Name|Sales Class|-hide_2 x\n"
            "*ASSETS| | \n"
            "   Cash on Hand|1,415.81|\n"
            "*TOTAL ASSETS| |1,415.81\n");
}

TEST(ResultViewTest, InvoiceSectionsBecomeTables) {
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
  EXPECT_EQ(view.tables[0].rows[0].cells[1].text, "Bayfield Auto Service");
  EXPECT_EQ(
      Shown(view.tables[4]),
      "Qty|Hrs|Desc|PartNum|PartsEa|PartsTot|Lab|TX|Total|C|OK|Need|Skip|PresetPkgItem|PresetHeader|MiscID\n"
      "0|0.5|EMISSION TEST - OBD||0|0|35|B|35||Yes||No|False|False|0\n");
  // A payment line sits under its message, indented.
  EXPECT_NE(Shown(view.tables[6]).find("|Display=true\n   PayDetails|1/9/2023 "), std::string::npos);
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
  const std::string over = test::ErrorText([&] { LoadResultView(big, small); });
  EXPECT_NE(over.find("big.xml is larger than " + std::to_string(small.max_bytes) + " bytes"),
            std::string::npos);
  const std::string broken =
      test::ErrorText([&] { LoadResultView(Write(dir, "broken.xml", "<xml><s:Schema>")); });
  EXPECT_NE(broken.find("broken.xml is not an XML document"), std::string::npos) << broken;
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
  EXPECT_NE(html.find("<title>Result &lt;1&gt;</title>"), std::string::npos);
  EXPECT_NE(html.find("Content-Security-Policy\" content=\"default-src 'none'"), std::string::npos);
  EXPECT_EQ(
      html.substr(html.find("<body>")),
      "<body>\n<h1>Result &lt;1&gt;</h1>\n"
      "<table><thead><tr><th></th><th>&lt;i&gt;Amount&lt;/i&gt;</th></tr></thead><tbody>\n"
      "<tr><td>&lt;script&gt;alert(1)&lt;/script&gt;</td><td>&quot;q&quot; &amp; &#39;a&#39;</td></tr>\n"
      "<tr class=\"b\"><td style=\"padding-left:calc(.6em + 3ch)\">&lt;b&gt;Total&lt;/b&gt;</td>"
      "<td class=\"num\">-1,234.50</td></tr>\n"
      "</tbody></table>\n</body></html>\n");
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
