// Date and time values as the server handles them, with the fixed en-US texts the shop's machine
// uses: short date "M/d/yyyy", general date "M/d/yyyy h:mm:ss AM" (the time is dropped at midnight).
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ent {

class DateTime {
 public:
  // Day zero of the shop's date serials (OLE Automation dates): 1899-12-30 00:00:00.
  constexpr DateTime() = default;
  // Raises Error 5 for a date or time that does not exist (month 13, February 30, hour 24, ...).
  static DateTime FromParts(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);
  static DateTime FromSeconds(int64_t seconds_since_day_zero);
  // Local time of this machine.
  static DateTime Now();
  static DateTime Today();

  // Reads a date text the way the en-US CDate does for the forms the server meets: "M/d/yyyy",
  // "M/d/yy", "yyyy-MM-dd", "yyyy/M/d", each optionally followed by a time "H:mm[:ss]" or
  // "h:mm[:ss] AM|PM" (or "yyyy-MM-ddTHH:mm:ss"), and a time alone. Nothing when it is no date.
  static std::optional<DateTime> Parse(std::string_view text);

  int year() const;
  int month() const;
  int day() const;
  int hour() const;
  int minute() const;
  int second() const;
  int64_t seconds() const { return seconds_; }
  DateTime DateOnly() const;

  std::string ShortDate() const;    // "1/5/2024"
  std::string GeneralDate() const;  // "1/5/2024 3:04:05 PM"; "1/5/2024" at midnight
  std::string IsoText() const;      // "2024-01-05T15:04:05" (persisted-rowset form)
  std::string StoredText() const;   // "2024-01-05 15:04:05" (how SQLite holds datetime columns)

  auto operator<=>(const DateTime&) const = default;

 private:
  int64_t seconds_ = 0;
};

}  // namespace ent
