// Picture formatting of numbers and dates, as the program's own Format (Visual Basic rules) and the
// shop database's format() function (.NET custom format strings) do it, with en-US symbols: '.' for
// the decimal point, ',' between groups of three digits, '-' for negative values.
//
// Number patterns: '0' prints a digit or a zero, '#' a digit or nothing, the first '.' is the decimal
// point, '%' multiplies by 100 and prints itself, '\x' and "text" (and 'text' under .NET rules) are
// literals, ';' separates sections (positive;negative;zero), anything else is printed where it stands.
// - The value is rounded half away from zero to as many decimals as there are placeholders after
//   the point; integer digits beyond the placeholders are all printed.
// - At least the digits from the first '0' before the point and up to the last '0' after it are
//   printed; a '#'-only integer part prints nothing for a value below one ("##,###.00": 0.5 ->
//   ".50", 0 -> ".00").
// - Grouping: Visual Basic groups when a ',' stands anywhere in the integer part; .NET when a ','
//   follows a digit placeholder there. Commas right before the point (or after the last integer
//   placeholder) divide by 1000 each instead.
// - The point: Visual Basic always prints it ("#.##": 5 -> "5."); .NET only when decimals follow.
// - The sign goes first. A negative value that rounds to zero keeps its '-' under Visual Basic
//   rules ("0.00": -0.001 -> "-0.00") and loses it under .NET rules ("0.00"). A section of its own
//   for negative values prints no automatic sign.
// Scientific patterns (E+0) are not supported and fail with ent::Error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace ent {

// Which formatting rules apply: the program's own Format (Visual Basic) or the SQL Server format()
// function of the shop database (.NET custom format strings).
enum class FormatRules { kVisualBasic, kSqlServer };

// Formats a number given as exact plain decimal text: optional '-', digits, optional '.' and digits
// (at least one digit; no exponent, no separators). All its digits count, however many. Fails with
// ent::Error (type mismatch) on other text and on unsupported patterns.
std::string FormatDecimal(std::string_view decimal_text, std::string_view pattern, FormatRules rules);

// Formats the number value x 10^-scale (a currency's ten-thousandths with scale 4, a whole number
// with scale 0) exactly as FormatDecimal formats its plain decimal text; scale is 0 to 18.
std::string FormatScaled(int64_t value, int scale, std::string_view pattern, FormatRules rules);

// Formats a double: first takes its 15-significant-digit decimal form (DecimalText15), then
// FormatDecimal. NaN and infinities give "NaN", "Infinity" and "-Infinity" whatever the pattern.
std::string FormatDouble(double value, std::string_view pattern, FormatRules rules);

// The shortest plain decimal text of a double with at most 15 significant digits, correctly rounded:
// 0.075 -> "0.075", 1234.5 -> "1234.5", -3 -> "-3", -0.0 -> "0", 1e20 -> "100000000000000000000".
// Never exponent form. NaN and infinities give "NaN", "INF" and "-INF" (the XML Schema forms).
std::string DecimalText15(double value);

// Formats a date and time with a date pattern (en-US names; '/' and ':' print as themselves).
// Visual Basic (letters in either case): d dd ddd dddd, m mm mmm mmmm (month; "m"/"mm" right after an
// hour token means minutes), n nn (minutes), y (day of year) yy yyyy, h hh (24-hour unless an AM/PM
// token is present), s ss, q, w, AM/PM am/pm A/P a/p AMPM, and tt as AM/PM.
// .NET: d dd ddd dddd, M MM MMM MMMM, y yy yyy yyyy, H HH (24-hour), h hh (12-hour), m mm, s ss, t tt,
// f F (fractions, always zero here), g (era), '%' before a single specifier.
// Both: "text", '\x', and any other character are literals. Fails with ent::Error on an impossible
// date or time and on specifiers that need a time zone or the system's own date formats.
std::string FormatDateParts(int year, int month, int day, int hour, int minute, int second,
                            std::string_view pattern, FormatRules rules);

}  // namespace ent
