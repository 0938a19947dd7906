#include "data/connection_string.h"

#include <algorithm>
#include <cctype>

#include "common/error.h"
#include "common/text.h"

namespace ent {

namespace {

[[noreturn]] void BadFormat(size_t index) {
  throw Error(err::kDatabaseError,
              "The connection string is malformed at index " + std::to_string(index) + ".");
}

}  // namespace

ConnectionString ConnectionString::Parse(std::string_view text) {
  ConnectionString cs;
  size_t i = 0;
  while (i < text.size()) {
    // Skip separators and blanks before a key.
    while (i < text.size() && (text[i] == ';' || std::isspace(static_cast<unsigned char>(text[i])))) ++i;
    if (i >= text.size()) break;
    size_t entry_start = i;
    std::string key;
    for (;;) {
      if (i >= text.size() || text[i] == ';') BadFormat(entry_start);
      if (text[i] == '=') {
        if (i + 1 < text.size() && text[i + 1] == '=') {  // "==" is a literal '=' in a key
          key += '=';
          i += 2;
          continue;
        }
        break;
      }
      key += text[i++];
    }
    ++i;  // '='
    key = std::string(TrimSpace(key));
    if (key.empty()) BadFormat(entry_start);
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    std::string value;
    if (i < text.size() && (text[i] == '\'' || text[i] == '"')) {
      const char quote = text[i++];
      for (;;) {
        if (i >= text.size()) BadFormat(entry_start);
        if (text[i] == quote) {
          if (i + 1 < text.size() && text[i + 1] == quote) {
            value += quote;
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        value += text[i++];
      }
      while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
      if (i < text.size() && text[i] != ';') BadFormat(entry_start);
    } else {
      size_t end = text.find(';', i);
      if (end == std::string_view::npos) end = text.size();
      value = std::string(TrimSpace(text.substr(i, end - i)));
      i = end;
    }
    auto existing = std::find_if(cs.entries_.begin(), cs.entries_.end(),
                                 [&](const auto& e) { return EqualsIgnoreCase(e.first, key); });
    if (existing != cs.entries_.end())
      existing->second = value;
    else
      cs.entries_.emplace_back(key, value);
  }
  return cs;
}

std::optional<std::string> ConnectionString::Get(std::string_view key) const {
  for (const auto& [k, v] : entries_)
    if (EqualsIgnoreCase(k, key)) return v;
  return std::nullopt;
}

std::optional<std::string> ConnectionString::GetAny(std::initializer_list<std::string_view> keys) const {
  for (std::string_view key : keys)
    if (auto v = Get(key)) return v;
  return std::nullopt;
}

std::string MaskedConnectionString(std::string_view text) {
  ConnectionString parsed;
  try {
    parsed = ConnectionString::Parse(text);
  } catch (const Error&) {
    return "(a malformed connection string, not shown)";
  }
  std::string shown;
  for (const auto& [key, value] : parsed.entries()) {
    const std::string lower = AsciiLower(key);
    const bool secret = lower == "pwd" || lower.find("password") != std::string::npos;
    std::string k;
    for (char c : key) k += c == '=' ? "==" : std::string(1, c);
    std::string v = secret ? "***" : value;
    if (v.find_first_of(";'\"") != std::string::npos ||
        (!v.empty() && (v.front() == ' ' || v.back() == ' '))) {
      std::string quoted = "\"";
      for (char c : v) quoted += c == '"' ? "\"\"" : std::string(1, c);
      v = quoted + "\"";
    }
    shown += (shown.empty() ? "" : ";") + k + "=" + v;
  }
  return shown;
}

}  // namespace ent
