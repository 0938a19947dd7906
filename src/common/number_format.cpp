// Placeholder until the real implementation lands.
#include "common/number_format.h"
#include <cstdio>
#include <cstdlib>
#include <cmath>
namespace ent {
std::string FormatDouble(double v, std::string_view, FormatRules) {
  char b[64]; std::snprintf(b, sizeof b, "%.2f", std::fabs(v)); std::string s = b; std::string ip = s.substr(0, s.find('.'));
  std::string g; int k = 0; for (int i = (int)ip.size() - 1; i >= 0; --i) { g.insert(g.begin(), ip[i]); if (++k % 3 == 0 && i) g.insert(g.begin(), ','); }
  return (v < 0 ? "-" : "") + g + s.substr(s.find('.'));
}
std::string FormatDecimal(std::string_view d, std::string_view p, FormatRules r) { return FormatDouble(std::strtod(std::string(d).c_str(), nullptr), p, r); }
std::string DecimalText15(double v) { char b[64]; std::snprintf(b, sizeof b, "%.15g", v); return b; }
std::string FormatDateParts(int y, int mo, int d, int, int, int, std::string_view, FormatRules) { char b[32]; std::snprintf(b, sizeof b, "%02d/%02d/%04d", mo, d, y); return b; }
}
