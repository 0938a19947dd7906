// What an installation puts in place: `cmake --install` into a fresh prefix, the unit's hardening as
// systemd-analyze scores it, and the bash completion checked against the commands' own help.
#include <gtest/gtest.h>

#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include "support/program.h"
#include "support/temp_dir.h"

namespace ent {
namespace {

std::string ReadFile(const std::string& path) {
  std::ifstream in(path);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::set<std::string> Words(const std::string& text) {
  std::istringstream in(text);
  std::set<std::string> words;
  for (std::string word; in >> word;) words.insert(word);
  return words;
}

const std::vector<std::string> kCommands = {"process", "query",   "sample-db", "headoffice", "token",
                                            "serve",   "journal", "render",    "reports"};

TEST(InstallTest, PutsTheProgramUnitManualAndCompletionUnderThePrefix) {
  test::TempDir dir;
  const std::string prefix = dir.file("prefix");
  const std::string log =
      test::ShellOutput("cmake --install '" ENTPRCREQ_BUILD_DIR "' --prefix '" + prefix + "' 2>&1");
  const std::string program = prefix + "/bin/entprcreq";
  ASSERT_TRUE(std::filesystem::exists(program)) << log;
  EXPECT_EQ(test::RunProgram({"--version"}, dir.path().string()).out,
            test::ShellOutput("'" + program + "' --version"));

  // serve and headoffice run as the HTTP servers' program, found where the installation put it.
  EXPECT_TRUE(std::filesystem::exists(prefix + "/libexec/entprcreq/entprcreq-http")) << log;
  EXPECT_EQ(test::ShellOutput("'" + program + "' headoffice --help | head -1"),
            "usage: entprcreq headoffice --listen HOST:PORT [--out DIR] [options]\n");
  // Without it they say so.
  std::filesystem::create_directory(dir.file("alone"));
  std::filesystem::copy_file(program, dir.file("alone/entprcreq"));
  EXPECT_NE(test::ShellOutput("'" + dir.file("alone/entprcreq") + "' serve --help 2>&1")
                .find("the program that runs the HTTP servers cannot be started"),
            std::string::npos);

  // The unit starts the program where this installation put it.
  const std::string unit = ReadFile(prefix + "/lib/systemd/system/entprcreq.service");
  EXPECT_NE(unit.find("ExecStart=" + program + " serve "), std::string::npos) << unit;
  EXPECT_NE(unit.find("Type=notify"), std::string::npos);
  EXPECT_TRUE(std::filesystem::exists(prefix + "/lib/sysusers.d/entprcreq.conf"));

  // The manual page carries every command's help.
  const std::string manual = ReadFile(prefix + "/share/man/man1/entprcreq.1");
  EXPECT_EQ(manual.rfind(".TH ENTPRCREQ 1", 0), 0u);
  for (const std::string& command : kCommands)
    EXPECT_NE(manual.find(".SS " + command + "\n"), std::string::npos);
  EXPECT_NE(manual.find("\\-\\-journal\\-days"), std::string::npos);

  // The completion, sourced by bash, completes commands and a command's options.
  const std::string completion = prefix + "/share/bash-completion/completions/entprcreq";
  auto complete = [&](const std::string& words) {
    return test::ShellOutput("bash -c 'source \"" + completion + "\"; COMP_WORDS=(entprcreq " + words +
                             "); COMP_CWORD=$((${#COMP_WORDS[@]}-1)); _entprcreq; echo \"${COMPREPLY[@]}\"'");
  };
  EXPECT_EQ(complete("jo"), "journal\n");
  EXPECT_EQ(Words(complete("serve --jo")), (std::set<std::string>{"--journal", "--journal-days"}));
}

// The options the completion offers for a command are exactly those its help describes.
TEST(InstallTest, CompletionOffersEachCommandsOwnOptions) {
  test::TempDir dir;
  const std::string script = ENTPRCREQ_SOURCE_DIR "/packaging/entprcreq.bash-completion";
  const std::regex option_line(R"(^  (--[a-z-]+))");
  for (const std::string& command : kCommands) {
    const std::string offered =
        test::ShellOutput("bash -c 'source \"" + script + "\"; COMP_WORDS=(entprcreq " + command +
                          " --); COMP_CWORD=2; _entprcreq; echo \"${COMPREPLY[@]}\"'");
    std::set<std::string> described = {"--help"};
    std::istringstream help(test::RunProgram({command, "--help"}, dir.path().string()).out);
    for (std::string line; std::getline(help, line);) {
      std::smatch match;
      if (std::regex_search(line, match, option_line)) described.insert(match[1]);
    }
    EXPECT_EQ(Words(offered), described) << command;
  }
}

TEST(InstallTest, TheUnitsExposureIsAtMostTwo) {
  const std::string report = test::ShellOutput(
      "systemd-analyze security --offline=true '" ENTPRCREQ_SOURCE_DIR "/packaging/entprcreq.service' 2>&1");
  std::smatch match;
  ASSERT_TRUE(std::regex_search(report, match, std::regex(R"(Overall exposure level for \S+: ([0-9.]+))")))
      << report;
  EXPECT_LE(std::stod(match[1]), 2.0) << report;
}

}  // namespace
}  // namespace ent
