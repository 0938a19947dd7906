#include <unistd.h>

#include <iostream>

#include "commands.h"
#include "common/thread_values.h"
#include "job/cls_prebuilt_report.h"
#include "job/result_document.h"
#include "job/result_view.h"
#include "options.h"
#include "query_limit_options.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq query --connection STRING --sql TEXT [--format xml|text|html|csv] [--write]\n"
    "\n"
    "Runs a head office's free SQL text against the shop database and prints the result document\n"
    "that a custom report request with that text would post. Use it to try a SQL text before the\n"
    "head office sends it. Nothing is posted and the database-in-use token is not touched.\n"
    "\n"
    "  --connection STRING  the shop database, e.g. \"Provider=SQLite;Data Source=/srv/shop.db\"\n"
    "  --sql TEXT           the SQL text, exactly as the head office would send it\n"
    "  --format FORMAT      xml: the document itself (default); text, html, csv: the document as\n"
    "                       'entprcreq render' shows it\n"
    "  --write              let the text change the database (SQLite; without it the database is\n"
    "                       opened for reading only and a write fails)\n"
    "\n"
    "Prints the document exactly as the head office would receive it, or \"No records found.\" when the\n"
    "text returns no rows (exit code 0).\n"
    "When the text fails, prints the status text the head office would receive (exit code 1).\n";

}  // namespace

int RunQuery(const Args& args) {
  try {
    Options options(args, {"--connection", "--sql", "--format", kQueryTimeoutOption, kMaxResultOption},
                    {"--help", "--write"}, std::string(kHelp) + kQueryLimitHelp);
    if (options.Has("--help")) {
      std::cout << kHelp << kQueryLimitHelp;
      return 0;
    }
    options.Require("--connection");
    options.Require("--sql");
    options.RejectPositional();
    const std::string format = options.Get("--format", "xml");
    if (format != "xml") RenderAs(ResultView{}, format, "");  // an unknown format fails before the query runs
    ApplyQueryLimitOptions(options);
    std::string connection = options.Get("--connection");
    if (!options.Has("--write")) connection += ";Mode=Read";
    SetShopConnectionString(connection);
    // The same job a custom request runs, so that what is printed is what would be posted.
    clsPrebuiltReport job;
    job.CustomReport = true;
    job.sqlString = options.Get("--sql");
    const std::shared_ptr<ISendable> result = job.generateDOC();
    const std::shared_ptr<ResultDocument>& document = result->XMLDocument();
    if (!document) {
      std::cout << job.StatusStr << "\n";
      return job.StatusStr == "No records found." ? 0 : 1;
    }
    if (format != "xml") {
      pugi::xml_document doc;
      doc.load_string(document->Text().c_str());
      std::cout << RenderAs(ReadResultView(doc), format, "Query result");
      return 0;
    }
    document->CopyTo(std::cout);
    // The document itself ends without a line end; a terminal gets one so the prompt starts afresh.
    if (isatty(STDOUT_FILENO)) std::cout << "\n";
    std::cout.flush();
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "entprcreq query: " << e.what() << "\n";
    return 2;
  }
}

}  // namespace ent::cli
