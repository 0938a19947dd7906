#include <iostream>
#include <string>

#include "commands.h"
#include "common/version.h"

namespace {

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
  if (command == "headoffice") return ent::cli::RunHeadOffice(args);
  if (command == "token") return ent::cli::RunToken(args);
  if (command == "serve") return ent::cli::RunServe(args);
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
