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

TEST_F(LogTest, WritesDatedLinesWithCrLfOnlyWhileTheSwitchIsOn) {
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
}

TEST_F(LogTest, MissingDirectoryIsSilentAndNotCreated) {
  ent::SetDebugSwitch(true);
  fs::path missing = dir_.path() / "log";
  ent::SetLogDirectory(missing.string());
  ent::WriteLog("S1", "lost");
  EXPECT_FALSE(fs::exists(missing));
}
