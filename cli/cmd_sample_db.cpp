#include <unistd.h>

#include <charconv>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>

#include "commands.h"
#include "common/error.h"
#include "sampledb/sample_db.h"

namespace ent::cli {
namespace {

const char kUsage[] =
    "usage: entprcreq sample-db --out FILE [--size small|medium|large] [--seed N] [--untidy]\n"
    "                          [--force]\n"
    "\n"
    "Creates a SQLite shop database with three years (2023-2025) of a sample repair shop:\n"
    "customers, vehicles, work orders and invoices, stock, suppliers, staff and balanced books.\n"
    "\n"
    "  --out FILE   the database file to create\n"
    "  --size S     small (a few hundred work orders), medium (about 9,000; the default) or\n"
    "               large (120,000, for benchmarks)\n"
    "  --seed N     the random seed (a whole number, default 1); the same size and seed give the\n"
    "               same file\n"
    "  --untidy     make the data as untidy as real shops': texts at full width, nulls in every\n"
    "               optional column, a pricing band without a class, a part credited in full,\n"
    "               invoices on the first and last day of months\n"
    "  --force      replace FILE if it exists\n";

int UsageError(const std::string& message) {
  std::cerr << "entprcreq sample-db: " << message << "\n\n" << kUsage;
  return 2;
}

// Draws a bar on stderr, redrawn when the whole percentage changes.
void ShowProgress(double fraction) {
  static int shown = -1;
  const int percent = static_cast<int>(fraction * 100.0);
  if (percent == shown) return;
  shown = percent;
  const int width = 40;
  const int filled = percent * width / 100;
  std::cerr << "\r[" << std::string(static_cast<size_t>(filled), '#')
            << std::string(static_cast<size_t>(width - filled), ' ') << "] " << percent << "%" << std::flush;
  if (percent >= 100) std::cerr << "\n";
}

}  // namespace

int RunSampleDb(const Args& args) {
  sampledb::Options options;
  std::string out;
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    const bool has_value = i + 1 < args.size();
    if (arg == "--help" || arg == "-h") {
      std::cout << kUsage;
      return 0;
    } else if (arg == "--force") {
      options.replace = true;
    } else if (arg == "--untidy") {
      options.untidy = true;
    } else if (arg == "--out" || arg == "--size" || arg == "--seed") {
      if (!has_value) return UsageError(arg + " needs a value");
      const std::string& value = args[++i];
      if (arg == "--out") {
        out = value;
      } else if (arg == "--size") {
        const auto size = sampledb::ParseSize(value);
        if (!size) return UsageError("unknown size '" + value + "' (small, medium or large)");
        options.size = *size;
      } else {
        const auto [end, ec] = std::from_chars(value.data(), value.data() + value.size(), options.seed);
        if (ec != std::errc() || end != value.data() + value.size() || value.empty()) {
          return UsageError("the seed must be a whole number, not '" + value + "'");
        }
      }
    } else {
      return UsageError("unknown option '" + arg + "'");
    }
  }
  if (out.empty()) return UsageError("--out FILE is required");
  std::error_code ec;
  if (!options.replace && std::filesystem::exists(out, ec)) {
    std::cerr << "entprcreq sample-db: " << out << " already exists; use --force to replace it\n";
    return 1;
  }
  if (options.size == sampledb::Size::kLarge && isatty(STDERR_FILENO)) options.progress = ShowProgress;
  try {
    const auto counts = sampledb::CreateSampleDb(out, options);
    std::cout << "Created " << out << ":";
    for (const auto& count : counts) {
      if (count.table.starts_with("suph")) continue;
      std::cout << " " << count.table << " " << count.rows << ",";
    }
    std::cout << " and one purchase table per supplier.\n";
    return 0;
  } catch (const Error& e) {
    std::cerr << "entprcreq sample-db: " << e.description() << "\n";
  } catch (const std::exception& e) {
    std::cerr << "entprcreq sample-db: " << e.what() << "\n";
  }
  return 1;
}

}  // namespace ent::cli
