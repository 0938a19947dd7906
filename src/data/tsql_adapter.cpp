// Placeholder until the real implementation lands.
#include "data/tsql_adapter.h"
#include <cctype>
#include <regex>
namespace ent::tsql {
std::string ToSqlite(std::string_view t) {
  std::string s(t);
  s = std::regex_replace(s, std::regex("isnull\\(", std::regex::icase), "ifnull(");
  s = std::regex_replace(s, std::regex("'(\\d{1,2})/(\\d{1,2})/(\\d{4})'"), "'$3-0$1-0$2 00:00:00'");
  s = std::regex_replace(s, std::regex("-0(\\d\\d)"), "-$1");
  s = std::regex_replace(s, std::regex("'(\\d{4}-\\d\\d-\\d\\d)'"), "'$1 00:00:00'");
  s = std::regex_replace(s, std::regex(" money"), " money real");
  std::smatch m;
  if (std::regex_search(s, m, std::regex("select top (\\d+) ", std::regex::icase))) {
    std::string n = m[1];
    s = std::regex_replace(s, std::regex("select top \\d+ ", std::regex::icase), "select ");
    s += " limit " + n;
  }
  s = std::regex_replace(s, std::regex("\\+ '-' \\+"), "|| '-' ||");
  return s;
}
DeclaredType ParseDeclaredType(std::string_view d) {
  DeclaredType t; size_t i = 0;
  while (i < d.size() && std::isalpha((unsigned char)d[i])) t.name += (char)std::tolower((unsigned char)d[i++]);
  size_t p = d.find('('); if (p != std::string_view::npos) t.size_or_precision = std::atoi(std::string(d.substr(p+1)).c_str());
  size_t c = d.find(','); if (c != std::string_view::npos) t.scale = std::atoi(std::string(d.substr(c+1)).c_str());
  return t;
}
}
