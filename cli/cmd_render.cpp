#include <fstream>
#include <iostream>

#include "commands.h"
#include "common/error.h"
#include "job/result_render.h"
#include "job/result_view.h"
#include "options.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq render [--format text|html|csv] [--out FILE] [--title TEXT] DOCUMENT\n"
    "\n"
    "Shows a result document (a rowset, or the RepairOrder of one invoice) as the head office's client\n"
    "shows it: lines whose first cell begins with [b] in bold, cells beginning with [sp n] indented by\n"
    "n, no heading over columns named hide_... The markers themselves are not shown.\n"
    "\n"
    "  --format text   a plain-text table (default); a rule stands above each bold line\n"
    "  --format html   a web page with no scripts\n"
    "  --format csv    one line per row, for a spreadsheet (indentation kept as blanks)\n"
    "  --out FILE      write to FILE instead of the standard output\n"
    "  --title TEXT    the page's title (html; default: the document's file name)\n"
    "\n"
    "Documents larger than 256 MiB or nested deeper than 32 elements are refused (exit code 1).\n";

}  // namespace

std::string RenderAs(const ResultView& view, const std::string& format, const std::string& title) {
  if (format == "html") return RenderHtmlPage(view, title);
  if (format == "csv") return RenderCsv(view);
  if (format == "text") return RenderText(view);
  throw std::invalid_argument("--format takes text, html or csv, not '" + format + "'");
}

int RunRender(const Args& args) {
  std::string format, out, title, document;
  try {
    Options options(args, {"--format", "--out", "--title"}, {"--help"});
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    if (options.positional().size() != 1) {
      std::cerr << "entprcreq render: name one document to render\n\n" << kHelp;
      return 2;
    }
    document = options.positional()[0];
    format = options.Get("--format", "text");
    out = options.Get("--out");
    title = options.Get("--title", document);
    RenderAs(ResultView{}, format, title);  // an unknown format is a usage error, before any reading
  } catch (const std::exception& e) {
    std::cerr << "entprcreq render: " << e.what() << "\n";
    return 2;
  }
  try {
    const std::string text = RenderAs(LoadResultView(document), format, title);
    if (out.empty()) {
      std::cout << text;
    } else {
      std::ofstream file(out, std::ios::binary);
      file << text;
      if (!file.flush()) throw Error(err::kInvalidProcedureCall, "cannot write " + out);
    }
  } catch (const Error& e) {
    std::cerr << "entprcreq render: " << e.description() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace ent::cli
