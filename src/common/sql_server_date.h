// Reads a text as the shop database's server reads a character string it converts to datetime, with
// its default US settings (language us_english, date order month/day/year, two-digit years up to 49
// in the 2000s). Used wherever a text meets a date: request parameters and SQL literals compared
// with date columns on the embedded database, so both databases read the same text the same way.
#pragma once

#include <optional>
#include <string_view>

#include "common/date_time.h"

namespace ent {

// The message the server gives for a text it cannot read as a date.
inline constexpr char kDateConversionFailed[] =
    "Conversion failed when converting date and/or time from character string.";

// Forms read (blanks around and between parts allowed; an empty text is 1/1/1900):
//  - m/d/y with '/', '-' or '.' and a 2- or 4-digit year; y/m/d when the year comes first in 4 digits;
//  - yyyymmdd and yymmdd;
//  - ISO 8601 "yyyy-mm-ddThh:mm[:ss[.fff]]";
//  - month names, in full or in three letters: "Jun 30 2024", "June 30, 2024", "30 Jun 2024", "Jun 2024";
//  - each optionally followed by a time "h:mm[:ss[.fff]]" with an optional AM/PM, or "h AM";
//  - a time alone (on 1/1/1900).
// Dates before 1/1/1753 are out of the server's range and not read. Fractions of seconds are dropped.
std::optional<DateTime> ReadSqlServerDate(std::string_view text);

// ReadSqlServerDate, or Error (the server's conversion failure) for a text it cannot read.
DateTime SqlServerDate(std::string_view text);

}  // namespace ent
