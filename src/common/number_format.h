#pragma once
#include <string>
#include <string_view>
namespace ent {
enum class FormatRules { kVisualBasic, kSqlServer };
std::string FormatDecimal(std::string_view decimal_text, std::string_view pattern, FormatRules rules);
std::string FormatDouble(double value, std::string_view pattern, FormatRules rules);
std::string DecimalText15(double value);
std::string FormatDateParts(int year, int month, int day, int hour, int minute, int second, std::string_view pattern, FormatRules rules);
}
