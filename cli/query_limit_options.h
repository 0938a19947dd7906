// The options that limit every query (process, query, serve): --query-timeout and --max-result-mb.
#pragma once

#include "options.h"

namespace ent::cli {

inline constexpr const char* kQueryTimeoutOption = "--query-timeout";
inline constexpr const char* kMaxResultOption = "--max-result-mb";

// The help lines of both options.
extern const char kQueryLimitHelp[];

// Sets the process's query limits from the options (defaults where absent). Raises
// std::invalid_argument for a value that is not a whole number of at least 1.
void ApplyQueryLimitOptions(const Options& options);

}  // namespace ent::cli
