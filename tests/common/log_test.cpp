#include "common/log.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/thread_values.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace {

std::string ReadFile(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class LogTest : public ::testing::Test {
 protected:
  void SetUp() override { ent::SetLogDirectory(dir_.path().string()); }
  void TearDown() override {
    ent::SetDebugSwitch(false);
    ent::SetLogDirectory("");
  }
  ent::test::TempDir dir_;
};

}  // namespace

TEST_F(LogTest, WritesDatedLinesWithCrLfOnlyWhileTheSwitchIsOnIntoAnExistingFolder) {
  ent::SetDebugSwitch(false);
  ent::WriteLog("S1", "hidden");
  EXPECT_TRUE(fs::is_empty(dir_.path()));

  ent::SetDebugSwitch(true);
  ent::WriteLog("S1", "Start");
  ent::WriteLog("S1", "EXIT MAIN SUB");
  ent::WriteLog("", "no name");
  std::string text = ReadFile(dir_.path() / "S1.txt");
  // "M/d/yyyy[ h:mm:ss AM]" TAB message CR LF, twice.
  EXPECT_TRUE(text.find("\tStart\r\n") != std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - 16), "\tEXIT MAIN SUB\r\n");
  EXPECT_NE(text.find('/'), std::string::npos);
  EXPECT_TRUE(fs::exists(dir_.path() / ".txt"));

  // A missing folder is not created, and the line is lost without a word.
  ent::SetLogDirectory((dir_.path() / "log").string());
  ent::WriteLog("S1", "lost");
  EXPECT_FALSE(fs::exists(dir_.path() / "log"));
}

TEST_F(LogTest, ANameNeverChoosesWhereTheLogGoes) {
  ent::SetDebugSwitch(true);
  const fs::path log = dir_.path() / "log";
  fs::create_directory(log);
  ent::SetLogDirectory(log.string());
  const std::vector<std::pair<std::string, std::string>> names = {
      {"../X", "..%2FX.txt"},
      {"/etc/cron.d/x", "%2Fetc%2Fcron.d%2Fx.txt"},
      {std::string("a\0b", 3), "a%00b.txt"},
      {"a%2Fb", "a%252Fb.txt"},  // distinct from "a/b"
      {"line\r\nbreak\\", "line%0D%0Abreak%5C.txt"},
      {"Werkstatt Müller 12", "Werkstatt Müller 12.txt"},
      {std::string(300, 'x'), std::string(200, 'x') + ".txt"},
      {std::string(199, 'x') + "ü", std::string(199, 'x') + ".txt"},  // no half character
      {std::string(198, 'x') + "/", std::string(198, 'x') + ".txt"},  // no half %XX
  };
  for (const auto& [name, file] : names) {
    EXPECT_EQ(ent::LogFileName(name), file);
    ent::WriteLog(name, "line");
    EXPECT_TRUE(fs::exists(log / file)) << file;
  }
  // Nothing was written outside the log folder; the files are not for everyone to read.
  EXPECT_EQ(std::distance(fs::directory_iterator(dir_.path()), fs::directory_iterator()), 1);
  EXPECT_EQ(std::distance(fs::directory_iterator(log), fs::directory_iterator()),
            static_cast<long>(names.size()));
  const fs::perms mode = fs::status(log / "..%2FX.txt").permissions();
  EXPECT_EQ(mode & (fs::perms::others_all | fs::perms::group_write), fs::perms::none);

  // A link planted in the log folder is not followed.
  std::ofstream(dir_.path() / "victim") << "intact";
  fs::create_symlink(dir_.path() / "victim", log / "S9.txt");
  ent::WriteLog("S9", "overwrite?");
  EXPECT_EQ(ReadFile(dir_.path() / "victim"), "intact");
}

TEST_F(LogTest, LongMessagesAreCutWithoutSplittingACharacter) {
  ent::SetDebugSwitch(true);
  std::string message = "a";
  while (message.size() < ent::kMaxLogMessageBytes + 5000) message += "é";
  ent::WriteLog("S1", message);
  const std::string text = ReadFile(dir_.path() / "S1.txt");
  const size_t start = text.find('\t') + 1;
  const size_t note = text.find(" ... (");
  ASSERT_NE(note, std::string::npos);
  EXPECT_EQ(note - start, ent::kMaxLogMessageBytes - 1);  // the last whole character fits
  EXPECT_EQ(text.substr(note),
            " ... (" + std::to_string(message.size() - (note - start)) + " more bytes not logged)\r\n");
  EXPECT_EQ(text.substr(start, note - start), message.substr(0, note - start));

  fs::remove(dir_.path() / "S1.txt");
  const std::string fits(ent::kMaxLogMessageBytes, 'x');
  ent::WriteLog("S1", fits);
  EXPECT_EQ(ReadFile(dir_.path() / "S1.txt").find(fits + "\r\n") != std::string::npos, true);
}
