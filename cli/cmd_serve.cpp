#include <cstdlib>
#include <fstream>
#include <iostream>
#include <sstream>

#include "commands.h"
#include "common/error.h"
#include "common/thread_values.h"
#include "data/query_limits.h"
#include "options.h"
#include "query_limit_options.h"
#include "server/execution_journal.h"
#include "server/host_server.h"
#include "server/systemd_notify.h"
#include "serving.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq serve [--listen HOST:PORT] [options]\n"
    "\n"
    "Takes report requests from the host service over HTTP, several at once, and runs each one as\n"
    "'entprcreq process' would. Each call is a POST to /requests with a JSON object of the request's\n"
    "settings and its document:\n"
    "  {\"ApplicationPath\": \"Provider=SQLite;Data Source=/srv/shop.db\", \"HostAddress\": \"ho.example\",\n"
    "   \"HostPort\": \"80\", \"GUID\": \"...\", \"Passcode\": \"...\", \"ClientID\": \"7\", \"SessionID\": "
    "\"S1\",\n"
    "   \"bDebug\": false, \"DBSize\": true, \"SizeErr\": \"\", \"XMLPath\": \"\", \"Request\": "
    "\"<report>...</report>\"}\n"
    "The answer, once the result has been posted to the head office, is {\"KillFlag\": true}; when the\n"
    "database-in-use token cannot be used it is HTTP 500 with the reason. GET /health checks the token\n"
    "and log folders (HTTP 503 when one fails) and shows the version and the load; GET /metrics gives\n"
    "counters in the Prometheus text format. Every call is written to the execution journal and as one\n"
    "line to stderr, as is every answer that is not a success. Under systemd (Type=notify) it reports\n"
    "when it is ready.\n"
    "SIGTERM or Ctrl-C stops taking requests; those in progress have their queries interrupted and\n"
    "post the failure (or their result, when their query had ended) first.\n"
    "\n"
    "  --listen HOST:PORT    where to listen (default 127.0.0.1:8420; port 0 picks a free port)\n"
    "  --workers N           requests that run at once (default 4)\n"
    "  --queue N             requests that may wait for a worker (default 16); more are refused\n"
    "                        with HTTP 503 and Retry-After\n"
    "  --connections N       connections read at once besides the running and waiting requests\n"
    "                        (default 128); a client that sends slowly holds one, never a worker\n"
    "  --request-time S      seconds a call may take to arrive whole; slower ones are cut off\n"
    "                        (default 20)\n"
    "  --token-dir DIR       where the database-in-use token is kept (as for 'process')\n"
    "  --log-dir DIR         where log files go (as for 'process')\n"
    "  --connect-timeout S   seconds to wait for the head office to accept a connection (default 10)\n"
    "  --timeout S           seconds one exchange with the head office may take (default 60)\n"
    "  --allow-remote        allow listening on an address other than loopback; needs a secret\n"
    "  --secret-file FILE    a shared secret (the file's first line) that every call must send as\n"
    "                        'Authorization: Bearer <secret>'; $ENTPRCREQ_SECRET works too, and so\n"
    "                        does a systemd credential named secret ($CREDENTIALS_DIRECTORY/secret)\n"
    "  --journal FILE        the execution journal (default: journal.db in the log folder)\n"
    "  --journal-days N      how many days the journal keeps its records (default 30)\n";

std::string ReadSecret(std::string file) {
  // A credential systemd passed (LoadCredential=secret:...) stays out of the environment and the unit.
  const char* credentials = std::getenv("CREDENTIALS_DIRECTORY");
  if (file.empty() && credentials && *credentials) file = std::string(credentials) + "/secret";
  if (file.empty()) {
    const char* from_environment = std::getenv("ENTPRCREQ_SECRET");
    return from_environment ? from_environment : "";
  }
  std::ifstream in(file);
  if (!in) throw std::invalid_argument("cannot read the secret file " + file);
  std::string line;
  std::getline(in, line);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  if (line.empty()) throw std::invalid_argument("the secret file " + file + " is empty");
  return line;
}

}  // namespace

int RunServe(const Args& args) {
  HostServerOptions settings;
  std::string host;
  int port = 0;
  try {
    Options options(args,
                    {"--listen", "--workers", "--queue", "--token-dir", "--log-dir", "--connect-timeout",
                     "--timeout", "--secret-file", "--journal", "--journal-days", "--connections",
                     "--request-time", kQueryTimeoutOption, kMaxResultOption},
                    {"--allow-remote", "--help"}, std::string(kHelp) + kQueryLimitHelp);
    if (options.Has("--help")) {
      std::cout << kHelp << kQueryLimitHelp;
      return 0;
    }
    options.RejectPositional();
    ParseListen(options.Get("--listen", "127.0.0.1:8420"), host, port);
    settings.workers = static_cast<int>(options.GetNumber("--workers", settings.workers));
    settings.queue = static_cast<int>(options.GetNumber("--queue", settings.queue, 0));
    settings.connections = static_cast<int>(options.GetNumber("--connections", settings.connections));
    settings.request_seconds =
        static_cast<int>(options.GetNumber("--request-time", settings.request_seconds));
    ApplyQueryLimitOptions(options);
    settings.token_dir = options.Get("--token-dir");
    settings.soap.connect_timeout_seconds =
        options.GetNumber("--connect-timeout", settings.soap.connect_timeout_seconds);
    settings.soap.total_timeout_seconds = options.GetNumber("--timeout", settings.soap.total_timeout_seconds);
    settings.allow_remote = options.Has("--allow-remote");
    settings.secret = ReadSecret(options.Get("--secret-file"));
    if (options.Has("--log-dir")) SetLogDirectory(options.Get("--log-dir"));
    if (options.Has("--journal")) SetJournalPath(options.Get("--journal"));
    SetJournalRetentionDays(static_cast<int>(options.GetNumber("--journal-days", 30)));
    settings.log_calls = true;
  } catch (const std::exception& e) {
    std::cerr << "entprcreq serve: " << e.what() << "\n";
    return 2;
  }

  BlockStopSignals();
  try {
    HostServer server(settings);
    port = server.Start(host, port);
    std::cout << "serving on http://" << host << ":" << port << "/requests" << std::endl;
    NotifySystemd("READY=1\nSTATUS=serving on " + host + ":" + std::to_string(port));
    WaitForStopSignal();
    NotifySystemd("STOPPING=1");
    std::cout << "stopping: queries in progress are interrupted, their requests post the failure"
              << std::endl;
    StopAllQueries();
    server.Stop();
  } catch (const Error& e) {
    std::cerr << "entprcreq serve: " << e.description() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace ent::cli
