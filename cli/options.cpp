#include "options.h"

#include <stdexcept>

namespace ent::cli {

Options::Options(const std::vector<std::string>& args, const std::set<std::string>& with_value,
                 const std::set<std::string>& flags) {
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
        if (i + 1 >= args.size()) throw std::invalid_argument("option " + name + " needs a value");
        value = args[++i];
      }
      values_[name] = value;
    } else {
      throw std::invalid_argument("unknown option " + name);
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
    throw std::invalid_argument(name + " takes a whole number of at least " + std::to_string(minimum));
  return value;
}

}  // namespace ent::cli
