#include "options.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

namespace ent::cli {

namespace {

// Letters that differ between two names, counting insertions and deletions (edit distance).
size_t Distance(const std::string& a, const std::string& b) {
  std::vector<size_t> row(b.size() + 1);
  for (size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (size_t i = 1; i <= a.size(); ++i) {
    size_t diagonal = row[0];
    row[0] = i;
    for (size_t j = 1; j <= b.size(); ++j) {
      const size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

}  // namespace

Options::Options(const std::vector<std::string>& args, const std::set<std::string>& with_value,
                 const std::set<std::string>& flags, std::string help)
    : with_value_(with_value), flag_names_(flags), help_(std::move(help)) {
  for (size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    if (a.rfind("--", 0) != 0 || a == "-" || a == "--") {
      positional_.push_back(a);
      continue;
    }
    std::string name = a, value;
    bool inline_value = false;
    if (size_t eq = a.find('='); eq != std::string::npos) {
      name = a.substr(0, eq);
      value = a.substr(eq + 1);
      inline_value = true;
    }
    if (flags.count(name)) {
      if (inline_value) throw std::invalid_argument("option " + name + " takes no value");
      flags_.insert(name);
    } else if (with_value.count(name)) {
      if (!inline_value) {
        if (i + 1 >= args.size()) {
          const std::string wants = Wants(name);
          throw std::invalid_argument("option " + name + " needs a value" +
                                      (wants.empty() ? "" : "; it wants " + wants));
        }
        value = args[++i];
      }
      values_[name] = value;
    } else {
      std::string nearest;
      size_t best = 3;  // further than two letters away is no suggestion
      for (const auto* names : {&with_value, &flags})
        for (const std::string& known : *names)
          if (size_t d = Distance(name, known); d < best) best = d, nearest = known;
      throw std::invalid_argument(
          "unknown option " + name +
          (nearest.empty() ? "; the options are " + Known() : "; did you mean " + nearest + "?"));
    }
  }
}

std::string Options::Get(const std::string& name, const std::string& fallback) const {
  auto it = values_.find(name);
  return it == values_.end() ? fallback : it->second;
}

long Options::GetNumber(const std::string& name, long fallback, long minimum) const {
  const std::string text = Get(name);
  if (text.empty()) return fallback;
  size_t used = 0;
  long value = 0;
  try {
    value = std::stol(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used != text.size() || value < minimum)
    throw std::invalid_argument(name + " takes a whole number of at least " + std::to_string(minimum) +
                                ", not '" + text + "'");
  return value;
}

void Options::Require(const std::string& name) const {
  if (Has(name)) return;
  const std::string wants = Wants(name);
  throw std::invalid_argument("option " + name + " is missing" +
                              (wants.empty() ? "" : "; it wants " + wants));
}

void Options::RejectPositional() const {
  if (!positional_.empty())
    throw std::invalid_argument("unexpected argument '" + positional_.front() + "' (options start with --)");
}

std::string Options::Wants(const std::string& name) const {
  std::istringstream lines(help_);
  std::string line, found;
  bool inside = false;
  while (std::getline(lines, line)) {
    const size_t start = line.find_first_not_of(' ');
    if (start == std::string::npos) {
      if (inside) break;
      continue;
    }
    if (inside) {
      // A continuation is indented further than the option and does not begin another option.
      if (start > 2 && line.compare(start, 2, "--") != 0) {
        found += " " + line.substr(start);
        continue;
      }
      break;
    }
    if (line.compare(start, name.size(), name) != 0) continue;
    const size_t after = start + name.size();
    if (after < line.size() && line[after] != ' ') continue;
    std::string rest = after < line.size() ? line.substr(after) : "";
    rest.erase(0, rest.find_first_not_of(' '));
    // "FILE|-      meaning": the value's form, then its meaning after a run of blanks.
    if (size_t gap = rest.find("  "); gap != std::string::npos) {
      const size_t meaning = rest.find_first_not_of(' ', gap);
      rest = rest.substr(0, gap) + ": " + (meaning == std::string::npos ? "" : rest.substr(meaning));
    }
    found = rest;
    inside = true;
  }
  if (!found.empty() && found.front() == ':') found.erase(0, 2);
  return found;
}

std::string Options::Known() const {
  std::string list;
  for (const auto* names : {&with_value_, &flag_names_})
    for (const std::string& known : *names) list += (list.empty() ? "" : ", ") + known;
  return list;
}

}  // namespace ent::cli
