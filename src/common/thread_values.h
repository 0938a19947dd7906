// The values one request carries down to every layer, one copy per server thread: the debug switch,
// the log name and the shop connection string. Each request sets them on its own thread before use.
// The log directory is one setting for the whole process.
#pragma once

#include <string>

namespace ent {

bool DebugSwitch();
void SetDebugSwitch(bool on);

const std::string& LogName();
void SetLogName(std::string name);

const std::string& ShopConnectionString();
void SetShopConnectionString(std::string connection_string);

// The directory that holds the running program.
std::string ExecutableDirectory();

// "<directory of the executable>/log" unless overridden (the --log-dir option).
std::string LogDirectory();
void SetLogDirectory(std::string directory);

// The places where a long report would let other work of its thread run. Nothing is pending on our
// threads; the calls mark the places so that a future host integration has them.
inline void YieldToPendingWork() {}

}  // namespace ent
