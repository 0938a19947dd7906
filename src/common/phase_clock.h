// Where the time of the request running on this thread goes: reading the shop database, building
// the document, posting it. The server starts a clock per request; the steps below it mark their
// phase on the same thread without knowing who keeps the times.
#pragma once

namespace ent {

enum class Phase { kOther, kRead, kBuild, kPost };

struct PhaseTimes {
  double read_ms = 0, build_ms = 0, post_ms = 0;
};

class PhaseClock {
 public:
  // Becomes this thread's clock, in the phase kOther; the clock it replaces comes back when this one
  // is destroyed.
  PhaseClock();
  ~PhaseClock();
  PhaseClock(const PhaseClock&) = delete;
  PhaseClock& operator=(const PhaseClock&) = delete;

  // The times so far, the running phase included.
  PhaseTimes times() const;
  // Milliseconds since the clock started.
  double total_ms() const;

 private:
  friend void EnterPhase(Phase phase);
  void Enter(Phase phase);

  PhaseClock* outer_;
  Phase phase_ = Phase::kOther;
  double phase_start_ms_;
  double start_ms_;
  PhaseTimes closed_;
};

// Ends the phase running on this thread's clock and starts `phase`. Without a clock it does nothing.
void EnterPhase(Phase phase);

}  // namespace ent
