// Provider-style connection strings: "key=value;key='quoted; value'". Keys are compared without case,
// blanks around keys and unquoted values are dropped, a value may be quoted with ' or " (the quote
// doubled inside), "==" in a key stands for "=", and a repeated key keeps its last value.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace ent {

class ConnectionString {
 public:
  // Raises Error for a string that does not follow the format, naming where it goes wrong.
  static ConnectionString Parse(std::string_view text);

  std::optional<std::string> Get(std::string_view key) const;
  // The first of several alternative keys that is present.
  std::optional<std::string> GetAny(std::initializer_list<std::string_view> keys) const;
  const std::vector<std::pair<std::string, std::string>>& entries() const { return entries_; }

 private:
  std::vector<std::pair<std::string, std::string>> entries_;
};

// The connection string as it may be shown in a log: every password (a key that is "pwd" or contains
// "password", in any case) reads "***". A string that does not parse is not shown at all, since where
// its password is cannot be known.
std::string MaskedConnectionString(std::string_view text);

}  // namespace ent
