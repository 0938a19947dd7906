// The execution journal: real `entprcreq process` runs against a stand-in head office on loopback,
// then the records read back from the SQLite journal and through `entprcreq journal`.
#include "server/execution_journal.h"

#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "server/head_office.h"
#include "support/program.h"
#include "support/sample_shop.h"
#include "support/server_loopback.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

using nlohmann::json;

// A record's outcome on one line: code, status, post and HTTP status, and whether it is a failure.
std::string Outcome(const ExecutionRecord& r) {
  return r.code + " | " + r.status + " | " + r.post + " " + std::to_string(r.http_status) +
         (r.failed() ? " | failed" : "");
}

// A record's rows and document bytes.
std::string Rows(const ExecutionRecord& r) {
  return std::to_string(r.rows) + " rows in " + std::to_string(r.document_bytes) + " bytes";
}

class ExecutionJournalTest : public ::testing::Test {
 protected:
  ExecutionJournalTest() { std::filesystem::create_directory(dir_.file("log")); }

  // Runs one request through the program against the head office at `port`; returns what it printed.
  test::ProgramRun Process(int port, const std::string& document, const std::string& session,
                           std::vector<std::string> extra = {}, const std::string& connection_extra = "") {
    const std::string file = dir_.file(session + ".xml");
    std::ofstream(file) << document;
    const std::string shop = "Provider=SQLite;Data Source=" + test::SmallSampleShop() + connection_extra;
    std::vector<std::string> args = {"process",        "--request", file,          "--connection",      shop,
                                     "--host-address", "127.0.0.1", "--host-port", std::to_string(port)};
    args.insert(args.end(), {"--guid", "g", "--session-id", session, "--client-id", "12", "--db-size"});
    args.insert(args.end(),
                {"--token-dir", dir_.file("token"), "--log-dir", dir_.file("log"), "--timeout", "20"});
    args.insert(args.end(), extra.begin(), extra.end());
    return test::RunProgram(args, dir_.path().string());
  }

  std::vector<ExecutionRecord> Records() {
    ExecutionJournal::Filter all;
    all.limit = 100;
    return ExecutionJournal(dir_.file("log/journal.db")).Select(all);
  }
  ExecutionRecord RecordOf(const std::string& session) {
    for (const ExecutionRecord& r : Records())
      if (r.session == session) return r;
    ADD_FAILURE() << "no record of session " << session;
    return {};
  }

  test::TempDir dir_;
};

TEST_F(ExecutionJournalTest, EachRunLeavesOneRecordOfWhatWasPostedWithoutDebug) {
  HeadOfficeOptions storing;
  storing.out_dir = dir_.file("posts");
  HeadOffice office(storing);
  const int port = office.Start("127.0.0.1", 0);
  const auto before = std::chrono::system_clock::now();
  const std::vector<std::string> params = {"1/1/2024", "12/31/2024", "true", "true", "false"};
  const test::ProgramRun run = Process(port, test::CodeRequest("INVSUM01", params), "A1");
  ASSERT_EQ(run.exit_code, 0) << run.err;
  ASSERT_EQ(office.Posts().size(), 1u);

  const ExecutionRecord r = RecordOf("A1");
  EXPECT_EQ(Outcome(r) + " | client " + r.client + ", " + Rows(r),
            "INVSUM01 | 0 | accepted 200 | client 12, " + std::to_string(office.Posts()[0].rows) +
                " rows in " + std::to_string(test::FileText(dir_.file("posts/0001.xml")).size()) + " bytes");
  EXPECT_EQ(r.params, params);
  const int64_t before_ms =
      std::chrono::duration_cast<std::chrono::milliseconds>(before.time_since_epoch()).count();
  EXPECT_GE(r.start_ms, before_ms);
  EXPECT_LT(r.start_ms, before_ms + 60000);
  EXPECT_TRUE(r.read_ms > 0 && r.build_ms > 0 && r.post_ms > 0)
      << r.read_ms << " " << r.build_ms << " " << r.post_ms;
  EXPECT_LE(r.read_ms + r.build_ms + r.post_ms, r.total_ms);
  // No debug log was written, and the program said what happened in one line.
  EXPECT_FALSE(std::filesystem::exists(dir_.file("log/A1.txt")));
  EXPECT_EQ(std::count(run.out.begin(), run.out.end(), '\n'), 1) << run.out;
  EXPECT_NE(run.out.find("INVSUM01"), std::string::npos);
  EXPECT_NE(run.out.find("post=accepted http=200"), std::string::npos) << run.out;

  // No rows is an answer, not a failure (and a type written "2.0" is free SQL too).
  std::string none = test::SqlRequest("select cusid from customer where 1=0");
  none.replace(none.find("<type>2<") + 6, 1, "2.0");
  ASSERT_EQ(Process(port, none, "A2", {"--quiet"}).out, "");
  const ExecutionRecord empty = RecordOf("A2");
  EXPECT_EQ(Outcome(empty) + ", " + Rows(empty),
            "custom | No records found. | accepted 200, 0 rows in 0 bytes");
}

TEST_F(ExecutionJournalTest, FailedPostsAndRefusedRequestsAreJournaled) {
  // A head office that answers with a fault: the post failed, with its HTTP status and reason.
  HeadOfficeOptions faulty;
  faulty.fault = "Shop unknown";
  HeadOffice office(faulty);
  const int port = office.Start("127.0.0.1", 0);
  test::ProgramRun run = Process(port, test::CodeRequest("AVGINV01", {"1/1/2024", "12/31/2024"}), "F1");
  EXPECT_EQ(run.exit_code, 0);
  EXPECT_EQ(Outcome(RecordOf("F1")), "AVGINV01 | 0 | failed 500 | failed");
  EXPECT_NE(RecordOf("F1").post_detail.find("Shop unknown"), std::string::npos);
  EXPECT_NE(run.out.find("post=failed"), std::string::npos);
  EXPECT_NE(run.out.find("Shop unknown"), std::string::npos);

  // An answer other than "True", even in another case, is a refusal.
  HeadOfficeOptions refusing;
  refusing.answer = "true";
  HeadOffice no(refusing);
  const int no_port = no.Start("127.0.0.1", 0);
  Process(no_port, test::CodeRequest("NOSUCH", {"x"}), "F2");
  EXPECT_EQ(Outcome(RecordOf("F2")), "NOSUCH | Prebuilt report not found. | refused 200 | failed");
  EXPECT_EQ(RecordOf("F2").post_detail, "true");

  // The token cannot be created: nothing ran or was posted, and the record says why.
  std::ofstream(dir_.file("blocked")) << "a file where the token folder should be";
  run = Process(port, test::CodeRequest("AVGINV01"), "F4", {"--token-dir", dir_.file("blocked")});
  EXPECT_EQ(run.exit_code, 1);
  const ExecutionRecord r = RecordOf("F4");
  EXPECT_EQ(r.post, "");
  EXPECT_EQ(r.status.rfind("the token component cannot be created", 0), 0u) << r.status;
  EXPECT_TRUE(r.failed());
}

TEST_F(ExecutionJournalTest, TheConnectionPasswordNeverReachesTheJournal) {
  HeadOffice office(HeadOfficeOptions{});
  const int port = office.Start("127.0.0.1", 0);
  // A failure text that quotes the password: the head office gets it as it is, the journal does not.
  std::string request = test::SqlRequest("select * from [Hunter22!]");
  request.replace(request.find("<reportItem>") + 12, 0, "<item n='p0' v='Hunter22!'/>");
  Process(port, request, "P1", {}, ";Password=Hunter22!");
  ASSERT_EQ(office.Posts().size(), 1u);
  ASSERT_NE(office.Posts()[0].arguments.at(4).second.find("Hunter22!"), std::string::npos);
  const ExecutionRecord r = RecordOf("P1");
  EXPECT_EQ(r.status.find("Hunter22!"), std::string::npos) << r.status;
  EXPECT_NE(r.status.find("***"), std::string::npos) << r.status;
  // Parameters are kept as the request gave them.
  EXPECT_EQ(r.params, std::vector<std::string>{"Hunter22!"});
}

TEST_F(ExecutionJournalTest, TheJournalCommandFiltersAndOrders) {
  {
    ExecutionJournal journal(dir_.file("log/journal.db"));
    ExecutionRecord r;
    for (const auto& row : std::vector<std::tuple<int64_t, std::string, double, std::string, std::string>>{
             {1000, "BL01", 50, "0", "accepted"},
             {2000, "SC01", 900, "0", "failed"},
             {3000, "BL01", 300, "Database is in use by an administrator. Please try again later.",
              "accepted"},
             {4000, "custom", 10, "No records found.", "accepted"},
             {5000, "bl01", 700, "0", "refused"}}) {
      std::tie(r.start_ms, r.code, r.total_ms, r.status, r.post) = row;
      r.session = "s" + std::to_string(r.start_ms);
      journal.Append(r);
    }
  }
  auto sessions = [&](std::vector<std::string> args) {
    args.insert(args.begin(), {"journal", "--json", "--log-dir", dir_.file("log")});
    const test::ProgramRun run = test::RunProgram(args, dir_.path().string());
    EXPECT_EQ(run.exit_code, 0) << run.err;
    std::vector<std::string> found;
    std::istringstream lines(run.out);
    for (std::string line; std::getline(lines, line);) found.push_back(json::parse(line).at("session"));
    return found;
  };
  using V = std::vector<std::string>;
  EXPECT_EQ(sessions({}), (V{"s5000", "s4000", "s3000", "s2000", "s1000"}));
  EXPECT_EQ(sessions({"--last", "2"}), (V{"s5000", "s4000"}));
  EXPECT_EQ(sessions({"--failures"}), (V{"s5000", "s3000", "s2000"}));
  EXPECT_EQ(sessions({"--code", "BL01"}), (V{"s5000", "s3000", "s1000"}));
  EXPECT_EQ(sessions({"--slowest", "--last", "3"}), (V{"s2000", "s5000", "s3000"}));
  EXPECT_EQ(sessions({"--failures", "--code", "bl01", "--slowest"}), (V{"s5000", "s3000"}));

  // The table names the columns; a missing journal is said plainly.
  const test::ProgramRun table =
      test::RunProgram({"journal", "--log-dir", dir_.file("log")}, dir_.path().string());
  EXPECT_NE(table.out.find("total ms"), std::string::npos);
  EXPECT_NE(table.out.find("refused (0)"), std::string::npos) << table.out;
  const test::ProgramRun none =
      test::RunProgram({"journal", "--journal", dir_.file("none.db")}, dir_.path().string());
  EXPECT_EQ(none.exit_code, 1);
  EXPECT_NE(none.err.find("no journal at"), std::string::npos);
}

TEST_F(ExecutionJournalTest, OldRecordsAgeOutTheLogStaysShortAndAnUnwritableJournalIsReported) {
  const int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
  SetJournalPath(dir_.file("log/journal.db"));
  SetJournalRetentionDays(2);
  ExecutionRecord record;
  for (const auto& [session, days_ago] : {std::pair{"old", 3}, {"recent", 1}, {"fresh", 0}}) {
    record.start_ms = now - days_ago * 86400000LL;
    record.session = session;
    RecordExecution(record);
  }
  std::vector<std::string> kept;
  for (const ExecutionRecord& r : Records()) kept.push_back(r.session);
  EXPECT_EQ(kept, (std::vector<std::string>{"fresh", "recent"}));

  // Every process reads the whole log when it opens the journal, so the log must not grow to
  // SQLite's thousand pages between two copies into the file.
  record.status = std::string(300, 's');
  for (int i = 0; i < 400; ++i) {
    record.session = std::to_string(i);
    RecordExecution(record);
  }
  EXPECT_EQ(Records().size(), 100u);
  EXPECT_LT(std::filesystem::file_size(dir_.file("log/journal.db-wal")), 600u * 1024);

  // A journal that cannot be written loses the record but never fails the caller.
  SetJournalPath(dir_.file("no-such-folder/journal.db"));
  EXPECT_NO_THROW(RecordExecution(record));
  SetJournalPath("");
  SetJournalRetentionDays(30);
}

}  // namespace
}  // namespace ent
