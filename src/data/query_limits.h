// Limits on every query the drivers run, so that a runaway SQL text (a free SQL request that never
// ends or grows without bound) cannot hold a worker, the database-in-use token or all the memory:
// a time limit per statement, a size limit on the rows one query fetches, and a way to interrupt
// every query that is running (the server stopping). The limits are one setting for the process.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

namespace ent {

struct QueryLimits {
  int seconds = 300;                   // one statement's running time
  int64_t result_bytes = 256ll << 20;  // the values one query fetches (text bytes, 16 per other value)
};

QueryLimits CurrentQueryLimits();
void SetQueryLimits(QueryLimits limits);

// Interrupts the queries running now (later ones run as usual): each fails with a text saying so.
void InterruptRunningQueries();
// For a program that is stopping: interrupts the queries running now and every later one at once.
void StopAllQueries();

// One statement's watch over its limits, kept by a driver from start to its last row. `cancel`, when
// given, is called (from another thread) if the running queries are interrupted while the watch
// lives: it must make the database stop the statement (sqlite3_interrupt, SQLCancel). When its time
// runs out, a driver that asks MustStop() as it goes (`kDriverAsks`) stops by itself; for one that
// runs a whole query in one call, a watchdog thread calls `cancel`. That thread is started by the
// first such watch, so a process that only asks starts none.
class QueryWatch {
 public:
  enum class Timing { kWatchdog, kDriverAsks };
  explicit QueryWatch(std::function<void()> cancel = {}, Timing timing = Timing::kWatchdog);
  ~QueryWatch();
  QueryWatch(const QueryWatch&) = delete;
  QueryWatch& operator=(const QueryWatch&) = delete;

  // Whether the statement must stop now (time is up or it was interrupted).
  bool MustStop() const;
  // Counts fetched bytes. Raises Error once the result is larger than the limit.
  void AddBytes(int64_t bytes);
  // Raises Error with the reason the statement was stopped, if MustStop(); otherwise returns.
  void RaiseIfStopped() const;
  // Seconds left of the time limit (at least 1), for drivers that take a timeout of their own.
  int SecondsLeft() const;

 private:
  std::chrono::steady_clock::time_point end_;
  uint64_t epoch_;
  int seconds_;
  int64_t bytes_ = 0;
  int64_t byte_limit_;
  bool registered_ = false;
};

}  // namespace ent
