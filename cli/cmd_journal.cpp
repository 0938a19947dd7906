#include <ctime>
#include <filesystem>
#include <iomanip>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "commands.h"
#include "common/error.h"
#include "common/thread_values.h"
#include "options.h"
#include "server/execution_journal.h"

namespace ent::cli {

namespace {

const char kHelp[] =
    "usage: entprcreq journal [--last N] [--failures] [--code CODE] [--slowest] [--json] [options]\n"
    "\n"
    "Lists the execution journal: one record per request that 'process' or 'serve' handled, kept\n"
    "whether or not debugging was on. Newest first unless --slowest.\n"
    "\n"
    "  --last N         how many records to show (default 20)\n"
    "  --failures       only requests whose report failed or whose post the head office did not take\n"
    "  --code CODE      only this report code (custom for free SQL)\n"
    "  --slowest        the longest requests first\n"
    "  --json           one JSON object per line instead of a table\n"
    "  --journal FILE   the journal to read (default: journal.db in the log folder)\n"
    "  --log-dir DIR    the log folder (as for 'process')\n";

std::string LocalTime(int64_t ms) {
  const std::time_t seconds = static_cast<std::time_t>(ms / 1000);
  std::tm parts{};
  localtime_r(&seconds, &parts);
  std::ostringstream out;
  out << std::put_time(&parts, "%Y-%m-%d %H:%M:%S") << '.' << std::setw(3) << std::setfill('0') << ms % 1000;
  return out.str();
}

nlohmann::json AsJson(const ExecutionRecord& r) {
  return {{"start", LocalTime(r.start_ms)},
          {"start_ms", r.start_ms},
          {"session", r.session},
          {"client", r.client},
          {"code", r.code},
          {"params", r.params},
          {"rows", r.rows < 0 ? nlohmann::json(nullptr) : nlohmann::json(r.rows)},
          {"document_bytes", r.document_bytes},
          {"status", r.status},
          {"post", r.post},
          {"post_detail", r.post_detail},
          {"http_status", r.http_status},
          {"read_ms", r.read_ms},
          {"build_ms", r.build_ms},
          {"post_ms", r.post_ms},
          {"total_ms", r.total_ms}};
}

}  // namespace

int RunJournal(const Args& args) {
  ExecutionJournal::Filter filter;
  std::string path;
  bool json = false;
  try {
    Options options(args, {"--last", "--code", "--journal", "--log-dir"},
                    {"--failures", "--slowest", "--json", "--help"}, kHelp);
    if (options.Has("--help")) {
      std::cout << kHelp;
      return 0;
    }
    options.RejectPositional();
    filter.limit = static_cast<int>(options.GetNumber("--last", filter.limit));
    filter.failures_only = options.Has("--failures");
    filter.slowest = options.Has("--slowest");
    filter.code = options.Get("--code");
    json = options.Has("--json");
    if (options.Has("--log-dir")) SetLogDirectory(options.Get("--log-dir"));
    if (options.Has("--journal")) SetJournalPath(options.Get("--journal"));
    path = JournalPath();
  } catch (const std::exception& e) {
    std::cerr << "entprcreq journal: " << e.what() << "\n";
    return 2;
  }
  std::error_code missing;
  if (!std::filesystem::exists(path, missing)) {
    std::cerr << "entprcreq journal: there is no journal at " << path << " (yet)\n";
    return 1;
  }
  try {
    ExecutionJournal journal(path);
    const std::vector<ExecutionRecord> records = journal.Select(filter);
    if (json) {
      for (const ExecutionRecord& r : records) std::cout << AsJson(r).dump() << "\n";
      return 0;
    }
    std::cout << std::left << std::setw(24) << "start" << std::setw(17) << "code" << std::setw(13)
              << "session" << std::right << std::setw(8) << "rows" << std::setw(10) << "bytes" << std::setw(9)
              << "read ms" << std::setw(9) << "build ms" << std::setw(9) << "post ms" << std::setw(9)
              << "total ms"
              << "  post (http)  status\n";
    for (const ExecutionRecord& r : records) {
      std::ostringstream post;
      post << (r.post.empty() ? "none" : r.post) << " (" << r.http_status << ")";
      std::cout << std::left << std::setw(24) << LocalTime(r.start_ms) << std::setw(17)
                << (r.code.empty() ? "-" : r.code) << std::setw(13) << r.session << std::right << std::setw(8)
                << (r.rows < 0 ? std::string("-") : std::to_string(r.rows)) << std::setw(10)
                << r.document_bytes << std::fixed << std::setprecision(0) << std::setw(9) << r.read_ms
                << std::setw(9) << r.build_ms << std::setw(9) << r.post_ms << std::setw(9) << r.total_ms
                << "  " << std::left << std::setw(13) << post.str() << r.status;
      if (r.post == "failed" || r.post == "refused") std::cout << " | " << r.post_detail;
      std::cout << "\n";
    }
    return 0;
  } catch (const Error& e) {
    std::cerr << "entprcreq journal: " << e.description() << "\n";
    return 1;
  }
}

}  // namespace ent::cli
