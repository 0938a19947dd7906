#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <string>

#include "commands.h"
#include "common/version.h"

namespace {

// The program that runs the HTTP servers: beside this one in a build folder, in
// ../libexec/entprcreq/ once installed.
constexpr const char* kHttpProgram = "entprcreq-http";

// Runs `entprcreq serve|headoffice ...` as the HTTP servers' program, in this process (the same
// process id, environment and open files, as a service manager expects); returns only on failure.
int RunHttpProgram(char** argv) {
  std::error_code ec;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", ec);
  if (ec) {
    std::cerr << "entprcreq: cannot find where this program is (/proc/self/exe: " << ec.message() << ")\n";
    return 1;
  }
  const std::filesystem::path here = self.parent_path();
  std::string tried;
  for (const std::filesystem::path& candidate :
       {here / kHttpProgram, here / ".." / "libexec" / "entprcreq" / kHttpProgram}) {
    execv(candidate.c_str(), argv);
    tried += (tried.empty() ? "" : ", ") + candidate.lexically_normal().string() + " (" +
             std::strerror(errno) + ")";
  }
  std::cerr << "entprcreq: the program that runs the HTTP servers cannot be started: " << tried << "\n";
  return 1;
}

const char kUsage[] =
    "usage: entprcreq <command> [options]\n"
    "\n"
    "commands:\n"
    "  process     run one report request, as the host service does\n"
    "  query       show the result document a free SQL text would produce\n"
    "  sample-db   create a sample shop database (SQLite)\n"
    "  headoffice  run a stand-in head-office web service for demos and tests\n"
    "  token       read or set the database-in-use token (administrators)\n"
    "  serve       take the host service's requests over HTTP, several at once\n"
    "  journal     list what the requests did (the execution journal)\n"
    "  render      show a result document as a text table, a web page or CSV\n"
    "  reports     list the report codes with their parameters and result columns\n"
    "\n"
    "'entprcreq <command> --help' explains a command's options; 'entprcreq --version' shows the version.\n";

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::cerr << kUsage;
    return 2;
  }
  const std::string command = argv[1];
  const ent::cli::Args args(argv + 2, argv + argc);
  if (command == "process") return ent::cli::RunProcess(args);
  if (command == "query") return ent::cli::RunQuery(args);
  if (command == "sample-db") return ent::cli::RunSampleDb(args);
  if (command == "headoffice" || command == "serve") return RunHttpProgram(argv);
  if (command == "token") return ent::cli::RunToken(args);
  if (command == "journal") return ent::cli::RunJournal(args);
  if (command == "--version" || command == "version") {
    std::cout << "entprcreq " << ent::ProgramVersion() << "\n";
    return 0;
  }
  if (command == "render") return ent::cli::RunRender(args);
  if (command == "reports") return ent::cli::RunReports(args);
  if (command == "--help" || command == "-h" || command == "help") {
    std::cout << kUsage;
    return 0;
  }
  std::cerr << "entprcreq: unknown command '" << command << "'\n\n" << kUsage;
  return 2;
}
