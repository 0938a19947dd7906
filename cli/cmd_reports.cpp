#include <iostream>

#include "commands.h"
#include "job/catalogue.h"
#include "options.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq reports [--json]\n"
    "\n"
    "Lists every report code a head office may ask for, in the order codes are looked up: its\n"
    "parameters (position pN, name, type, meaning, what an absent one reads as) and the columns of\n"
    "its result. Codes are matched without regard to case. 'serve' answers GET /reports with the\n"
    "same JSON.\n"
    "\n"
    "  --json   as JSON instead of text\n";

}  // namespace

int RunReports(const Args& args) {
  try {
    Options options(args, {}, {"--help", "--json"});
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    if (!options.positional().empty())
      throw std::invalid_argument("unexpected argument " + options.positional()[0]);
    std::cout << (options.Has("--json") ? ReportCatalogueJson() : ReportCatalogueText());
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "entprcreq reports: " << e.what() << "\n";
    return 2;
  }
}

}  // namespace ent::cli
