#include "serving.h"

#include <signal.h>

#include <stdexcept>

namespace ent::cli {

namespace {

sigset_t StopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGINT);
  sigaddset(&signals, SIGTERM);
  return signals;
}

}  // namespace

void ParseListen(const std::string& text, std::string& host, int& port) {
  const size_t colon = text.rfind(':');
  const std::string digits = colon == std::string::npos ? "" : text.substr(colon + 1);
  if (colon == 0 || digits.empty() || digits.size() > 5 ||
      digits.find_first_not_of("0123456789") != std::string::npos || std::stoi(digits) > 65535)
    throw std::invalid_argument("--listen takes HOST:PORT with a port from 0 to 65535, not '" + text + "'");
  host = text.substr(0, colon);
  port = std::stoi(digits);
}

void BlockStopSignals() {
  sigset_t signals = StopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
}

void WaitForStopSignal() {
  sigset_t signals = StopSignals();
  int signal_number = 0;
  sigwait(&signals, &signal_number);
}

}  // namespace ent::cli
