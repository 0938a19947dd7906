// A small reader for "--name value" and "--flag" options of the sub-commands. Its messages name the
// option at fault and, from the command's help text, what the option wants.
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
  // `help` is the command's help text, whose "  --name VALUE  meaning" lines the messages quote.
  Options(const std::vector<std::string>& args, const std::set<std::string>& with_value,
          const std::set<std::string>& flags, std::string help = "");

  bool Has(const std::string& name) const { return values_.count(name) || flags_.count(name); }
  std::string Get(const std::string& name, const std::string& fallback = "") const;
  // A whole number of at least `minimum`; the fallback when absent. Raises std::invalid_argument.
  long GetNumber(const std::string& name, long fallback, long minimum = 1) const;
  const std::vector<std::string>& positional() const { return positional_; }

  // Raises std::invalid_argument naming the option, and what it wants, when it was not given.
  void Require(const std::string& name) const;
  // Raises std::invalid_argument naming the first positional argument, if there is one.
  void RejectPositional() const;

  // What the help text says an option wants: "FILE|-: the request document ..."; "" if it says nothing.
  std::string Wants(const std::string& name) const;

 private:
  std::string Known() const;

  std::map<std::string, std::string> values_;
  std::set<std::string> flags_;
  std::vector<std::string> positional_;
  std::set<std::string> with_value_, flag_names_;
  std::string help_;
};

}  // namespace ent::cli
