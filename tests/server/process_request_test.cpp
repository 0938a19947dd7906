// One request from its document to the stand-in head office over loopback HTTP, as the host runs it.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/thread_values.h"
#include "server/cls_process_request.h"
#include "server/head_office.h"
#include "server/token.h"
#include "support/program.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"
#include "support/test_db.h"

namespace ent {
namespace {

std::string Request(const std::string& type, const std::string& name, const std::string& sql,
                    const std::string& extra = "") {
  return "<report><type>" + type + "</type><clientid>\n  12 </clientid><sql>" + sql + "</sql><name>" + name +
         "</name><params><reportItem/></params><sessionid>4711</sessionid>" + extra + "</report>";
}

class ProcessRequestTest : public ::testing::Test {
 protected:
  void SetUp() override {
    db_.Exec(
        "create table customer (cusid int primary key, fname varchar(30), lname varchar(30));"
        "insert into customer values (1, 'Pat', 'O''Brien');"
        "insert into customer values (2, 'Lee', null);");
    std::filesystem::create_directory(dir_.file("log"));
    SetLogDirectory(dir_.file("log"));
    port_ = office_.Start("127.0.0.1", 0);
  }
  void TearDown() override {
    SetLogDirectory("");
    SetDebugSwitch(false);
  }

  // Runs one request against `port` (the stand-in head office by default) and returns its post.
  HeadOfficePost Run(const std::string& document, bool db_size = true, int port = 0) {
    clsProcessRequest request;
    request.set_ApplicationPath(db_.connection_string() + connection_suffix_);
    request.HostAddress = "127.0.0.1";
    request.HostPort = std::to_string(port ? port : port_);
    request.GUID = "shop-guid";
    request.Passcode = "pass";
    request.ClientID = "33";
    request.SessionID = host_session_;
    request.set_bDebug(true);
    request.set_DBSize(db_size);
    request.set_TokenDirectory(dir_.file("token"));
    request.set_SoapOptions({2, 5});
    request.setDomDocument(document);
    request.prepareDBReport();
    EXPECT_TRUE(request.KillFlag);
    auto posts = office_.Posts();
    return posts.empty() ? HeadOfficePost{} : posts.back();
  }

  // The messages of a log file, without their time stamps.
  std::vector<std::string> Log(const std::string& name) const {
    std::ifstream in(dir_.file("log/" + name + ".txt"), std::ios::binary);
    std::vector<std::string> lines;
    for (std::string line; std::getline(in, line);) {
      EXPECT_EQ(line.back(), '\r');
      lines.push_back(line.substr(line.find('\t') + 1, line.size() - line.find('\t') - 2));
    }
    return lines;
  }

  int Token() const { return DbInUseToken::Create(dir_.file("token"))->GetdbInUse(); }
  void SetToken(int state) const { DbInUseToken::Create(dir_.file("token"))->SetdbInUse(state); }

  test::TempDir dir_;
  test::TestDb db_;
  HeadOffice office_{HeadOfficeOptions{}};
  int port_ = 0;
  std::string host_session_ = "99";
  std::string connection_suffix_;
};

std::vector<std::string> Values(const HeadOfficePost& post) {
  std::vector<std::string> values;
  for (const auto& argument : post.arguments) values.push_back(argument.second);
  return values;
}

// A request whose report sits `levels` elements deep (the report itself counts as one).
std::string NestedRequest(int levels, const std::string& report) {
  std::string text;
  for (int i = 1; i < levels; ++i) text += "<a>";
  text += report;
  for (int i = 1; i < levels; ++i) text += "</a>";
  return text;
}

TEST_F(ProcessRequestTest, WhatReachesTheHeadOfficeInEachOutcome) {
  // Rows: "0" and the document, with the request's session and client.
  HeadOfficePost post = Run(Request("2", "", "select cusid, fname, lname from customer order by cusid"));
  std::vector<std::string> args = Values(post);
  ASSERT_EQ(args.size(), 6u);
  EXPECT_EQ(std::vector<std::string>(args.begin(), args.begin() + 5),
            (std::vector<std::string>{"shop-guid", "pass", "4711", "12", "0"}));
  EXPECT_EQ(post.rows, 2);
  EXPECT_EQ(args[5].rfind("<xml xmlns:s=", 0), 0u);
  // 256 levels to the deepest element (reportItem, two below the report) is still a request.
  EXPECT_EQ(Values(Run(NestedRequest(254, Request("2", "", "select 1 as one"))))[4], "0");

  struct Case {
    std::string document;
    bool db_size;
    std::string status;
    std::string session;  // the failure path posts the host's identifiers
  };
  const std::string too_deep = "The request document is nested deeper than 256 elements.";
  const std::string not_xml = "The request document is not XML: ";
  const std::vector<Case> cases = {
      // Element texts are read without the white space around them.
      {Request("\n 2\n", "", "\n  select * from customer where cusid = 0\n"), true, "No records found.",
       "4711"},
      {Request("2", "", "select * from nosuch"), true, "no such table: nosuch", "4711"},
      // A long error text is cut to 250 characters.
      {Request("2", "", "select * from " + std::string(300, 't')), true,
       ("no such table: " + std::string(300, 't')).substr(0, 250), "4711"},
      {Request("1", "NOSUCHCODE", ""), true, "Prebuilt report not found.", "4711"},
      {Request("1", "\n  transreq\n", ""), true,
       "Prebuilt report not found. Please Run Version 4 of the Enterprise Client.", "4711"},
      {Request("2", "", "select 1"), false, "Target location requires a database compact.", "99"},
      {Request("2", "", "select 1", "<DateProcessed>1/1/2020</DateProcessed>"), true, "", "99"},
      {Request("2", "", ""), true, "", "99"},
      {"<report><type>2</type></report>", true, "The request document has no //report/clientid element.",
       "99"},
      // Deep enough to overflow a recursive reader, or one level too deep.
      {NestedRequest(70000, Request("2", "", "select 1")), true, too_deep, "99"},
      {NestedRequest(255, Request("2", "", "select 1 as one")), true, too_deep, "99"},
      // Text that is not XML posts the parser's reason and where it stopped.
      {"<report><type>2</type><name>x</report>", true, not_xml + "Start-end tags mismatch at offset 31.",
       "99"},
      {"this is not XML", true, not_xml + "No document element found at offset 15.", "99"},
      {"", true, not_xml + "No document element found at offset 0.", "99"},
      {std::string("<report><type>2</type>\0</report>", 32), true,
       not_xml + "Start-end tags mismatch at offset 22.", "99"},
  };
  for (const Case& c : cases) {
    args = Values(Run(c.document, c.db_size));
    ASSERT_EQ(args.size(), 6u) << c.status;
    EXPECT_EQ(args[4], c.status);
    EXPECT_EQ(args[5], "") << c.status;
    EXPECT_EQ(args[2], c.session) << c.status;
    EXPECT_EQ(args[3], c.session == "99" ? "33" : "12") << c.status;
  }
  EXPECT_EQ(Token(), 0);
}

// The host's session's log follows the request from start to end, whether the post went or failed.
TEST_F(ProcessRequestTest, LogsTheRequestFromStartToEndAndFailedSends) {
  auto contains = [](const std::vector<std::string>& log, const std::string& prefix) {
    return std::any_of(log.begin(), log.end(), [&](const std::string& l) { return l.rfind(prefix, 0) == 0; });
  };
  HeadOfficeOptions lower;
  lower.answer = "true";
  HeadOffice lower_case(lower);
  int closed_port = 0;
  {
    HeadOffice gone{HeadOfficeOptions{}};
    closed_port = gone.Start("127.0.0.1", 0);
  }
  for (const auto& [port, line, outcome] : std::vector<std::tuple<int, std::string, std::string>>{
           {port_, "SOAP:RESP::True", "Dom Sent"},
           {lower_case.Start("127.0.0.1", 0), "SOAP:RESP::true", "Report Sent Failed or Nothing to send"},
           {closed_port, "SEND SOAP ERR:The service at http://127.0.0.1:" + std::to_string(closed_port),
            "Report Sent Failed or Nothing to send"}}) {
    Run(Request("2", "", "select 1 as one"), true, port);
    const std::vector<std::string> log = Log("99");
    std::filesystem::remove(dir_.file("log/99.txt"));
    ASSERT_FALSE(log.empty());
    EXPECT_EQ(log.front() + " ... " + log.back(), "Start ... EXIT MAIN SUB") << line;
    EXPECT_TRUE(contains(log, line) && contains(log, outcome)) << line << ", " << outcome;
  }
  // The post's own first line goes to the log of the request's session, once for each run.
  EXPECT_EQ(Log("4711"), std::vector<std::string>(3, "Starting: clsGenericReport"));

  Run("<report/>");
  EXPECT_EQ(Log("99").back(), "ERROR: The request document has no //report/type element.");
}

TEST_F(ProcessRequestTest, TheDatabaseInUseToken) {
  // Held by an administrator: refused, and the token stays theirs.
  SetToken(1);
  std::vector<std::string> args = Values(Run(Request("2", "", "select cusid from customer")));
  EXPECT_EQ(args[4], "Database is in use by an administrator. Please try again later.");
  EXPECT_EQ(Token(), 1);

  // Taken by the server and given back, on the failure path too.
  SetToken(0);
  args = Values(Run("<report><type>2</type><clientid>1</clientid><sql>select 1</sql></report>"));
  EXPECT_EQ(args[4], "The request document has no //report/name element.");
  EXPECT_EQ(Token(), 0);
  const std::vector<std::string> log = Log("99");
  EXPECT_NE(std::find(log.begin(), log.end(), "Setting DB in use by server."), log.end());
}

TEST_F(ProcessRequestTest, SessionIdentifiersAndPasswordsDoNotEscapeIntoTheFileSystemOrTheLog) {
  connection_suffix_ = ";User ID=shop;Password=hunter2";
  host_session_ = "../host";
  std::vector<std::string> args =
      Values(Run("<report><type>2</type><clientid>1</clientid><sql>select 1 as one</sql><name/>"
                 "<params><reportItem/></params><sessionid>../../office</sessionid></report>"));
  ASSERT_EQ(args.size(), 6u);
  EXPECT_EQ(args[2], "../../office");  // posted as it came
  EXPECT_EQ(test::FileNames(dir_.path()), (std::vector<std::string>{"log", "token"}));
  EXPECT_EQ(test::FileNames(dir_.file("log")),
            (std::vector<std::string>{"..%2F..%2Foffice.txt", "..%2Fhost.txt", "journal.db", "journal.db-shm",
                                      "journal.db-wal"}));

  const std::vector<std::string> log = Log("..%2Fhost");
  EXPECT_NE(std::find(log.begin(), log.end(), "Starting getCustomRS"), log.end());
  for (const std::string& line : log) EXPECT_EQ(line.find("hunter2"), std::string::npos) << line;
}

// The document of a free SQL text travels from the database to the head office as the writer wrote
// it: what `entprcreq query` prints is what the head office stores, byte for byte.
TEST_F(ProcessRequestTest, TheHeadOfficeStoresExactlyWhatQueryPrints) {
  // Values that test every escape on the way: markup characters and quotes, CR LF inside a value,
  // non-ASCII text, a null, money and dates, and rows long enough to wrap.
  std::string rows =
      "create table part (id int primary key, descr varchar(200), price money, sold datetime, note text);"
      "insert into part values (1, 'Nuts & <bolts> \"M8\" O''Ring', 12.5, '2024-03-01 10:20:30', "
      "'line one' || char(13) || char(10) || 'line two');"
      "insert into part values (2, 'Bremsbeläge vorn', 0.1, null, null);";
  for (int i = 3; i <= 1400; ++i)  // over 256 kB: read and sent in several pieces
    rows += "insert into part values (" + std::to_string(i) + ", '" + std::string(120, 'x') + "', " +
            std::to_string(i) + ".25, '2024-01-02', 'n" + std::to_string(i) + "');";
  db_.Exec("begin;" + rows + "commit;");
  HeadOfficeOptions storing;
  storing.out_dir = dir_.file("posts");
  HeadOffice office(storing);
  const int port = office.Start("127.0.0.1", 0);

  const std::string sql = "select * from part order by id";
  const std::string printed =
      test::RunProgram({"query", "--connection", db_.connection_string(), "--sql", sql}, dir_.path().string())
          .out;
  ASSERT_EQ(printed.rfind("<xml ", 0), 0u) << printed;
  Run(Request("2", "", sql), true, port);
  ASSERT_EQ(office.Posts().size(), 1u);
  EXPECT_EQ(Values(office.Posts()[0])[4] + " " + std::to_string(office.Posts()[0].rows) + " " +
                office.Posts()[0].document_root,
            "0 1400 xml");
  const std::string received = test::FileText(dir_.file("posts/0001.xml"));
  EXPECT_TRUE(received == printed) << "the posted document differs from the printed one";

  // A failure from the database after many rows have been written is posted as the status.
  Run(Request("2", "", "select * from part where id &lt; 300 or abs(-9223372036854775807 + 299 - id) &gt; 0"),
      true, port);
  ASSERT_EQ(office.Posts().size(), 2u);
  EXPECT_EQ(Values(office.Posts()[1])[4], "integer overflow");
}

}  // namespace
}  // namespace ent
