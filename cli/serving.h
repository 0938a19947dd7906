// What the commands that run a service share: reading HOST:PORT and waiting for a stop signal.
#pragma once

#include <string>

namespace ent::cli {

// Splits "HOST:PORT" (port 0 to 65535). Raises std::invalid_argument otherwise.
void ParseListen(const std::string& text, std::string& host, int& port);

// Blocks SIGINT and SIGTERM for this thread and the threads it starts afterwards; call before any
// service thread starts. WaitForStopSignal then returns when one of them arrives.
void BlockStopSignals();
void WaitForStopSignal();

}  // namespace ent::cli
