// Numeric text read the way Visual Basic's IsNumeric and CDbl read it in the en-US locale.
//
// Accepted: blanks around the number; one leading or trailing '+' or '-'; one '$' before or after
// the digits; parentheses around it for a negative value, "(5)"; ',' anywhere among the integer
// digits after the first one ("1,234", "1,2,34" and "12," all read); one '.'; an exponent E or D
// with an optional sign and at least one digit ("1E3", "2.5d-1"). At least one digit is needed, so
// "", ".", "-" and "$" are not numeric; nor are ",5", "1.2.3", "1.234,5", "12abc" and "&H10".
// A value beyond the double range is not numeric; one too small for a double reads as zero.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace ent {

// The value of numeric text (correctly rounded to a double), or nothing when it is not numeric.
std::optional<double> ParseNumericText(std::string_view text);
bool IsNumericText(std::string_view text);

// The same reading, as exact plain decimal text: digits as written, leading zeros dropped, no sign
// on zero ("1,234.50" -> "1234.50", "-.5" -> "-0.5", "1E3" -> "1000", "1.50E1" -> "15.0", "-0.00"
// -> "0.00"). A nonzero value below 1E-400 gives "0". Nothing when the text is not numeric.
std::optional<std::string> NumericTextToDecimal(std::string_view text);

}  // namespace ent
