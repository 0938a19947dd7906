#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "commands.h"
#include "common/error.h"
#include "common/thread_values.h"
#include "options.h"
#include "query_limit_options.h"
#include "server/cls_process_request.h"
#include "server/execution_journal.h"
#include "server/host_call.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq process --request FILE|- [options]\n"
    "\n"
    "Runs one report request the way the host service does: checks that no administrator holds the\n"
    "shop database, runs the report, and posts the result (or an error text) to the head office's\n"
    "web service. Exit code 0 once the request was handled, whatever its outcome (the outcome went\n"
    "to the head office, to the execution journal and to the log with --debug); 1 when the database-in-use "
    "token cannot be\n"
    "used, in which case nothing was run, posted or logged; 2 for wrong options.\n"
    "\n"
    "  --request FILE        the request document (XML); '-' reads it from standard input\n"
    "  --connection STRING   the shop database, e.g. \"Provider=SQLite;Data Source=/srv/shop.db\"\n"
    "  --host-address NAME   host name or address of the head office's web service\n"
    "  --host-port PORT      its port\n"
    "  --guid TEXT           this shop's identity towards the head office\n"
    "  --passcode TEXT       this shop's pass code for the head office\n"
    "  --client-id N         the client identifier the host was given (default 0)\n"
    "  --session-id TEXT     the session identifier; it also names the log file\n"
    "  --debug               write every step to <log dir>/<session id>.txt\n"
    "  --db-size             the database is small enough to work on; without it every request is\n"
    "                        answered \"Target location requires a database compact.\"\n"
    "  --token-dir DIR       where the database-in-use token is kept (see 'entprcreq token --help')\n"
    "  --log-dir DIR         where log files go (default: the log folder beside the program; it is\n"
    "                        never created: without it nothing is logged)\n"
    "  --connect-timeout S   seconds to wait for the head office to accept a connection (default 10)\n"
    "  --timeout S           seconds one exchange with the head office may take (default 60)\n"
    "  --journal FILE        the execution journal (default: journal.db in the log folder)\n"
    "  --quiet               print nothing; without it one line tells what became of the request\n";

std::string ReadRequest(const std::string& source) {
  if (source == "-") return std::string(std::istreambuf_iterator<char>(std::cin), {});
  std::ifstream in(source, std::ios::binary);
  if (!in) throw std::invalid_argument("cannot read the request file " + source);
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

}  // namespace

int RunProcess(const Args& args) {
  std::unique_ptr<clsProcessRequest> request;
  bool quiet = false;
  try {
    Options options(args,
                    {"--request", "--connection", "--host-address", "--host-port", "--guid", "--passcode",
                     "--client-id", "--session-id", "--token-dir", "--log-dir", "--connect-timeout",
                     "--timeout", "--journal", kQueryTimeoutOption, kMaxResultOption},
                    {"--debug", "--db-size", "--help", "--quiet"}, std::string(kHelp) + kQueryLimitHelp);
    if (options.Has("--help")) {
      std::cout << kHelp << kQueryLimitHelp;
      return 0;
    }
    options.Require("--request");
    options.RejectPositional();
    if (options.Has("--log-dir")) SetLogDirectory(options.Get("--log-dir"));
    if (options.Has("--journal")) SetJournalPath(options.Get("--journal"));
    quiet = options.Has("--quiet");
    ApplyQueryLimitOptions(options);
    HostCall call;
    call.ApplicationPath = options.Get("--connection");
    call.HostAddress = options.Get("--host-address");
    call.HostPort = options.Get("--host-port");
    call.GUID = options.Get("--guid");
    call.Passcode = options.Get("--passcode");
    call.ClientID = options.Get("--client-id", "0");
    call.SessionID = options.Get("--session-id");
    call.bDebug = options.Has("--debug");
    call.DBSize = call.has_DBSize = options.Has("--db-size");
    call.Request = ReadRequest(options.Get("--request"));
    request = std::make_unique<clsProcessRequest>();
    request->set_TokenDirectory(options.Get("--token-dir"));
    SoapOptions soap;
    soap.connect_timeout_seconds = options.GetNumber("--connect-timeout", soap.connect_timeout_seconds);
    soap.total_timeout_seconds = options.GetNumber("--timeout", soap.total_timeout_seconds);
    request->set_SoapOptions(soap);
    ApplyHostCall(call, *request);
  } catch (const std::exception& e) {
    std::cerr << "entprcreq process: " << e.what() << "\n";
    return 2;
  }
  try {
    request->prepareDBReport();
  } catch (const Error& e) {
    std::cerr << "entprcreq process: " << e.description() << "\n";
    return 1;
  }
  if (!quiet) std::cout << DescribeExecution(LastExecution()) << std::endl;
  return request->KillFlag ? 0 : 1;
}

}  // namespace ent::cli
