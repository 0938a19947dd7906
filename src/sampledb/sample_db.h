// The sample shop: a SQLite database with the shop schema, filled with three years (2023 to 2025)
// of a believable repair shop whose books balance. For demos, tests and benchmarks.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace ent::sampledb {

// small: a few hundred work orders (tests); medium: about ten thousand (demos); large: over
// 100,000 work orders, 500,000 lines and 1,000,000 postings (benchmarks).
enum class Size { kSmall, kMedium, kLarge };

// "small", "medium" or "large"; nullopt for anything else.
std::optional<Size> ParseSize(std::string_view text);

struct Options {
  Size size = Size::kMedium;
  uint64_t seed = 1;
  bool replace = false;                  // replace an existing file
  bool untidy = false;                   // roughen the data as real shops have it (untidy.h)
  std::function<void(double)> progress;  // fraction done (0 to 1), called once per generated day
};

struct TableRows {
  std::string table;
  int64_t rows;
};

// Creates the shop database at path and returns the row count of each table, by table name. The
// same size and seed give the same file, byte for byte. The file appears only once it is complete.
// Throws ent::Error when path exists and options.replace is false, and on any failure, leaving
// nothing behind.
std::vector<TableRows> CreateSampleDb(const std::string& path, const Options& options);

}  // namespace ent::sampledb
