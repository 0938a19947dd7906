#include "common/phase_clock.h"

#include <chrono>

namespace ent {

namespace {

thread_local PhaseClock* current = nullptr;

double NowMs() {
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void Add(PhaseTimes& times, Phase phase, double ms) {
  switch (phase) {
    case Phase::kRead:
      times.read_ms += ms;
      break;
    case Phase::kBuild:
      times.build_ms += ms;
      break;
    case Phase::kPost:
      times.post_ms += ms;
      break;
    case Phase::kOther:
      break;
  }
}

}  // namespace

PhaseClock::PhaseClock() : outer_(current), phase_start_ms_(NowMs()), start_ms_(phase_start_ms_) {
  current = this;
}

PhaseClock::~PhaseClock() {
  current = outer_;
}

PhaseTimes PhaseClock::times() const {
  PhaseTimes times = closed_;
  Add(times, phase_, NowMs() - phase_start_ms_);
  return times;
}

double PhaseClock::total_ms() const {
  return NowMs() - start_ms_;
}

void PhaseClock::Enter(Phase phase) {
  const double now = NowMs();
  Add(closed_, phase_, now - phase_start_ms_);
  phase_ = phase;
  phase_start_ms_ = now;
}

void EnterPhase(Phase phase) {
  if (current) current->Enter(phase);
}

}  // namespace ent
