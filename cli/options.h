// A small reader for "--name value" and "--flag" options of the sub-commands.
#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

namespace ent::cli {

class Options {
 public:
  // `with_value` names the options that take a value, `flags` those that do not. Positional
  // arguments are kept in order. Raises std::invalid_argument with a message for anything unknown.
  Options(const std::vector<std::string>& args, const std::set<std::string>& with_value,
          const std::set<std::string>& flags);

  bool Has(const std::string& name) const { return values_.count(name) || flags_.count(name); }
  std::string Get(const std::string& name, const std::string& fallback = "") const;
  // A whole number of at least `minimum`; the fallback when absent. Raises std::invalid_argument.
  long GetNumber(const std::string& name, long fallback, long minimum = 1) const;
  const std::vector<std::string>& positional() const { return positional_; }

 private:
  std::map<std::string, std::string> values_;
  std::set<std::string> flags_;
  std::vector<std::string> positional_;
};

}  // namespace ent::cli
