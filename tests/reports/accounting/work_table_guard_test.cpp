// The work tables are guarded across processes: statements run by separate programs on one shop
// database post what one alone posts; on SQL Server the guard is an application lock in a transaction.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "common/error.h"
#include "reports/accounting/work_table_lock.h"
#include "server/head_office.h"
#include "support/sample_shop.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

// A test double for a SQL Server connection: it runs nothing and records every text it is sent.
class SqlServerDouble : public Connection {
 public:
  SqlDialect dialect() const override { return SqlDialect::kSqlServer; }
  void Execute(const std::string& sql) override {
    sent.push_back(sql);
    if (refuse) throw Error(err::kDatabaseError, "Lock request time out period exceeded.");
  }
  QueryResult Query(const std::string& sql) override {
    sent.push_back(sql);
    return {};
  }
  void InsertRow(const std::string&, const std::vector<std::string>&, const std::vector<Variant>&) override {}
  void Close() override {}
  bool IsOpen() const override { return true; }

  std::vector<std::string> sent;
  bool refuse = false;
};

TEST(WorkTableGuard, OnSqlServerAnExclusiveApplicationLockBelongsToTheTransaction) {
  SqlServerDouble server;
  {
    accounting::WorkTableLock lock("Provider=sqloledb;Server=s;Database=shop", &server);
    ASSERT_TRUE(lock.failure().empty());
    ASSERT_EQ(server.sent.size(), 1u);
    const std::string& begin = server.sent[0];
    for (const char* part : {"BEGIN TRANSACTION", "sp_getapplock", "@LockMode = 'Exclusive'",
                             "@LockOwner = 'Transaction'", "@LockTimeout = 30000", "RAISERROR"})
      EXPECT_NE(begin.find(part), std::string::npos) << part << " missing in " << begin;
    // The lock is asked for inside the transaction, and a refusal (a negative result) is raised.
    EXPECT_LT(begin.find("BEGIN TRANSACTION"), begin.find("sp_getapplock"));
    EXPECT_NE(begin.find("IF @entWorkLock < 0"), std::string::npos);
    lock.Commit();
  }
  EXPECT_EQ(server.sent, (std::vector<std::string>{server.sent[0], "COMMIT TRANSACTION"}));

  // Without a commit (a failed statement) the transaction, and with it the lock, is rolled back.
  server.sent.clear();
  { accounting::WorkTableLock lock("Provider=sqloledb;Server=s;Database=shop", &server); }
  ASSERT_EQ(server.sent.size(), 2u);
  EXPECT_EQ(server.sent[1], "IF @@TRANCOUNT > 0 ROLLBACK TRANSACTION");

  // A lock that cannot be had is a failure text naming the work tables; nothing is rolled back.
  server.sent.clear();
  server.refuse = true;
  {
    accounting::WorkTableLock lock("Provider=sqloledb;Server=s;Database=shop", &server);
    EXPECT_NE(lock.failure().find("work tables are in use"), std::string::npos) << lock.failure();
    EXPECT_NE(lock.failure().find("Lock request time out"), std::string::npos) << lock.failure();
  }
  EXPECT_EQ(server.sent.size(), 1u);
}

// Runs `entprcreq process` for one request file; returns its process id.
pid_t StartProcess(const std::vector<std::string>& args) {
  const pid_t pid = fork();
  if (pid == 0) {
    std::vector<char*> argv;
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(argv[0], argv.data());
    _exit(127);
  }
  return pid;
}

TEST(WorkTableGuard, StatementsInSeparateProcessesDoNotMixTheirLines) {
  test::TempDir dir;
  const std::string shop = dir.file("shop.db");
  std::filesystem::copy_file(test::SmallSampleShop(), shop);
  HeadOffice office{HeadOfficeOptions{}};
  const int port = office.Start("127.0.0.1", 0);
  const std::vector<std::pair<std::string, std::string>> requests = {
      {"BL01", "<item n='p0' v='6/30/2025'/>"},
      {"TB01", "<item n='p0' v='6/30/2025'/>"},
  };
  std::vector<pid_t> running;
  int session = 0;
  for (int round = 0; round < 3; ++round) {
    for (const auto& [code, items] : requests) {
      const std::string name = std::to_string(++session);
      std::ofstream(dir.file(name + ".xml"))
          << "<report><type>1</type><clientid>1</clientid><sql></sql><name>" << code
          << "</name><params><reportItem>" << items << "</reportItem></params><sessionid>" << name
          << "</sessionid></report>";
      running.push_back(StartProcess({ENTPRCREQ_BINARY, "process", "--request", dir.file(name + ".xml"),
                                      "--connection", "Provider=SQLite;Data Source=" + shop, "--host-address",
                                      "127.0.0.1", "--host-port", std::to_string(port), "--session-id", name,
                                      "--db-size", "--token-dir", dir.file("token")}));
    }
  }
  for (pid_t pid : running) {
    int status = 0;
    ASSERT_EQ(waitpid(pid, &status, 0), pid);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const std::vector<HeadOfficePost> posts = office.Posts();
  ASSERT_EQ(posts.size(), running.size());
  // Each run posts the whole statement, and every run of one code the same lines as the first.
  std::map<std::string, std::string> first_document;
  for (const HeadOfficePost& post : posts) {
    const int index = (std::stoi(post.arguments.at(2).second) - 1) % 2;
    EXPECT_EQ(post.arguments.at(4).second, "0");
    EXPECT_GT(post.rows, 10);
    auto [known, inserted] = first_document.emplace(requests[index].first, post.arguments.at(5).second);
    if (!inserted) {
      EXPECT_EQ(post.arguments.at(5).second, known->second) << requests[index].first;
    }
  }
  EXPECT_EQ(first_document.size(), 2u);
  // The last run's lines stay in the shop's work tables (its transaction was committed).
  std::shared_ptr<Connection> check = OpenConnection("Provider=SQLite;Data Source=" + shop);
  EXPECT_GT(check->Query("select count(*) as n from entBalanceShtRPT").rows.at(0).at(0).ToLong(), 10);
  EXPECT_GT(check->Query("select count(*) as n from entTrialBalanceRPT").rows.at(0).at(0).ToLong(), 10);
}

}  // namespace
}  // namespace ent
