// The sample shop's random source: splitmix64 with a few draws built on integer arithmetic only,
// so that one seed gives the same shop on every platform and with every standard library.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ent::sampledb {

class Prng {
 public:
  explicit Prng(uint64_t seed) : state_(seed) {}

  uint64_t Next() {
    uint64_t z = (state_ += 0x9E3779B97F4A7C15ULL);
    z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ULL;
    z = (z ^ (z >> 27)) * 0x94D049BB133111EBULL;
    return z ^ (z >> 31);
  }

  // A whole number in [0, n); n > 0.
  int64_t Below(int64_t n) { return static_cast<int64_t>(Next() % static_cast<uint64_t>(n)); }

  // A whole number in [lo, hi].
  int64_t Range(int64_t lo, int64_t hi) { return lo + Below(hi - lo + 1); }

  // True with a probability of per_mille / 1000.
  bool PerMille(int per_mille) { return Below(1000) < per_mille; }
  bool Percent(int percent) { return Below(100) < percent; }

  // An index into weights, each chosen in proportion to its weight.
  size_t Weighted(std::span<const int> weights) {
    int64_t total = 0;
    for (int w : weights) total += w;
    int64_t r = Below(total);
    for (size_t i = 0; i < weights.size(); ++i) {
      if (r < weights[i]) return i;
      r -= weights[i];
    }
    return weights.size() - 1;
  }

  template <class T>
  const T& Pick(std::span<const T> items) {
    return items[static_cast<size_t>(Below(static_cast<int64_t>(items.size())))];
  }

 private:
  uint64_t state_;
};

}  // namespace ent::sampledb
