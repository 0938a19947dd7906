#include "query_limit_options.h"

#include <string>

#include "data/query_limits.h"

namespace ent::cli {

const char kQueryLimitHelp[] =
    "  --query-timeout S     seconds one SQL statement may run before it is stopped and the request\n"
    "                        fails with a text saying so (default 300)\n"
    "  --max-result-mb N     megabytes of values one query may fetch before it is stopped (default 256)\n";

void ApplyQueryLimitOptions(const Options& options) {
  QueryLimits limits;
  limits.seconds = static_cast<int>(options.GetNumber(kQueryTimeoutOption, limits.seconds));
  const long megabytes = options.GetNumber(kMaxResultOption, static_cast<long>(limits.result_bytes >> 20));
  if (megabytes > (1l << 20)) throw std::invalid_argument(std::string(kMaxResultOption) + " is too large");
  limits.result_bytes = static_cast<int64_t>(megabytes) << 20;
  SetQueryLimits(limits);
}

}  // namespace ent::cli
