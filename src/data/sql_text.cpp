#include "data/sql_text.h"

#include <cctype>
#include <vector>

#include "common/text.h"

namespace ent {

namespace {

bool IsNameChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_';
}

// One column name: parts separated by '.', each a plain name or a [bracketed] name without ']'.
bool IsColumnName(std::string_view s) {
  if (s.empty()) return false;
  size_t i = 0;
  for (;;) {
    if (i < s.size() && s[i] == '[') {
      size_t close = s.find(']', i + 1);
      if (close == std::string_view::npos || close == i + 1) return false;
      i = close + 1;
    } else {
      size_t start = i;
      while (i < s.size() && IsNameChar(s[i])) ++i;
      if (i == start || std::isdigit(static_cast<unsigned char>(s[start]))) return false;
    }
    if (i == s.size()) return true;
    if (s[i] != '.') return false;
    ++i;
  }
}

}  // namespace

std::string SqlQuote(std::string_view value) {
  std::string out;
  out.reserve(value.size());
  for (char c : value) {
    out += c;
    if (c == '\'') out += '\'';
  }
  return out;
}

std::string LikeFilter(std::string_view column, std::string_view pattern) {
  if (pattern.find_first_not_of('%') == std::string_view::npos) return "";
  return " and " + std::string(column) + " like '" + SqlQuote(pattern) + "'";
}

std::optional<std::string> CheckSortOrder(std::string_view order_by) {
  const std::string failure = "The sort order \"" + std::string(order_by) +
                              "\" is not accepted: give column names separated by commas, each optionally "
                              "followed by ASC or DESC.";
  std::string_view rest = order_by;
  for (;;) {
    size_t comma = rest.find(',');
    std::string_view item = TrimSpace(rest.substr(0, comma));
    // The last word may be a direction.
    size_t blank = item.find_last_of(" \t");
    size_t bracket = item.find_last_of(']');
    if (blank != std::string_view::npos && (bracket == std::string_view::npos || blank > bracket)) {
      std::string_view direction = item.substr(blank + 1);
      if (!EqualsIgnoreCase(direction, "ASC") && !EqualsIgnoreCase(direction, "DESC")) return failure;
      item = TrimSpace(item.substr(0, blank));
    }
    if (!IsColumnName(item)) return failure;
    if (comma == std::string_view::npos) return std::nullopt;
    rest = rest.substr(comma + 1);
  }
}

std::string InsertStatement(const std::string& table, const std::vector<std::string>& columns) {
  if (columns.empty()) return "INSERT INTO [" + table + "] DEFAULT VALUES";
  std::string sql = "INSERT INTO [" + table + "] (";
  std::string marks;
  for (size_t i = 0; i < columns.size(); ++i) {
    sql += (i ? ", [" : "[") + columns[i] + "]";
    marks += i ? ", ?" : "?";
  }
  return sql + ") VALUES (" + marks + ")";
}

}  // namespace ent
