// The document of a free SQL text travels from the database to the head office as the writer wrote
// it: what `entprcreq query` prints, what the head office stores and what it keeps are the same bytes.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>

#include "common/thread_values.h"
#include "server/cls_process_request.h"
#include "server/head_office.h"
#include "server/soap_client.h"
#include "support/program.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"
#include "support/test_db.h"

namespace ent {
namespace {

std::string ShellQuoted(const std::string& text) {
  std::string quoted = "'";
  for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return quoted + "'";
}

class StreamedPostTest : public ::testing::Test {
 protected:
  void SetUp() override {
    // Values that test every escape on the way: markup characters and quotes, CR LF inside a value,
    // non-ASCII text, a null, money and dates, and rows long enough to wrap.
    db_.Exec(
        "create table part (id int primary key, descr varchar(200), price money, sold datetime, note text);"
        "insert into part values (1, 'Nuts & <bolts> \"M8\" O''Ring', 12.5, '2024-03-01 10:20:30', "
        "'line one' || char(13) || char(10) || 'line two');"
        "insert into part values (2, 'Bremsbeläge vorn', 0.1, null, null);");
    std::string rows = "begin;";
    for (int i = 3; i <= 1400; ++i)  // over 256 kB: read and sent in several pieces
      rows += "insert into part values (" + std::to_string(i) + ", '" + std::string(120, 'x') + "', " +
              std::to_string(i) + ".25, '2024-01-02', 'n" + std::to_string(i) + "');";
    db_.Exec(rows + "commit;");
    port_ = office_.Start("127.0.0.1", 0);
  }

  HeadOfficePost Post(const std::string& sql) {
    clsProcessRequest request;
    request.set_ApplicationPath(db_.connection_string());
    request.HostAddress = "127.0.0.1";
    request.HostPort = std::to_string(port_);
    request.GUID = "g";
    request.Passcode = "p";
    request.SessionID = "s";
    request.set_DBSize(true);
    request.set_TokenDirectory(dir_.file("token"));
    request.set_SoapOptions({2, 20});
    request.setDomDocument("<report><type>2</type><clientid>7</clientid><sql>" + sql +
                           "</sql><name/><params><reportItem/></params><sessionid>s</sessionid></report>");
    request.prepareDBReport();
    auto posts = office_.Posts();
    return posts.empty() ? HeadOfficePost{} : posts.back();
  }

  test::TempDir dir_;
  test::TestDb db_;
  HeadOffice office_{[this] {
    HeadOfficeOptions o;
    o.out_dir = dir_.file("posts");
    return o;
  }()};
  int port_ = 0;
};

TEST_F(StreamedPostTest, TheHeadOfficeStoresExactlyWhatQueryPrints) {
  const std::string sql = "select * from part order by id";
  const std::string printed =
      test::ShellOutput(std::string(ENTPRCREQ_BINARY) + " query --connection " +
                        ShellQuoted(db_.connection_string()) + " --sql " + ShellQuoted(sql));
  ASSERT_EQ(printed.rfind("<xml ", 0), 0u) << printed;
  ASSERT_EQ(printed.substr(printed.size() - 6), "</xml>");

  const HeadOfficePost post = Post(sql);
  ASSERT_EQ(post.arguments.size(), 6u);
  EXPECT_EQ(post.arguments[4].second, "0");
  EXPECT_EQ(post.arguments[5].second, "");  // stored, not kept
  const std::string received = test::FileText(dir_.file("posts/0001.xml"));
  EXPECT_EQ(received.size(), printed.size());
  EXPECT_TRUE(received == printed) << "the posted document differs from the printed one";
  EXPECT_EQ(post.rows, 1400);
  EXPECT_EQ(post.document_root, "xml");

  // The writer's own form came through: its escapes, the CR LF inside a value, non-ASCII as UTF-8.
  for (const char* part : {"descr='Nuts &#x26; &#x3c;bolts&#x3e; &#x22;M8&#x22; O&#x27;Ring'",
                           "note='line one\r\nline two'", "Bremsbeläge vorn",
                           // A wrapped row: its continuation line starts with two tabs and a blank.
                           "\r\n\t\t price='3.25'"})
    EXPECT_NE(received.find(part), std::string::npos) << part;
}

TEST_F(StreamedPostTest, AFailureWhileReadingRowsIsPostedAsTheStatus) {
  // The error comes from the database after many rows have been written.
  const HeadOfficePost post =
      Post("select * from part where id &lt; 300 or abs(-9223372036854775807 + 299 - id) &gt; 0 order by id");
  ASSERT_EQ(post.arguments.size(), 6u);
  EXPECT_EQ(post.arguments[4].second, "integer overflow");
  EXPECT_EQ(post.arguments[5].second, "");
}

}  // namespace
}  // namespace ent
