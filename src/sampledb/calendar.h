// Calendar days for the sample shop, and the text form in which dates are stored.
#pragma once

#include <string>

namespace ent::sampledb {

// A day of the proleptic Gregorian calendar, counted from 1970-01-01.
struct Day {
  int number = 0;

  static Day FromYmd(int year, int month, int day);
  int Year() const;
  int Month() const;
  int DayOfMonth() const;
  int Weekday() const { return (number % 7 + 11) % 7; }  // 0 Sunday ... 6 Saturday
  bool IsLastOfMonth() const { return (*this + 1).Month() != Month(); }

  // The stored form of a date at midnight: "yyyy-MM-dd 00:00:00".
  std::string Text() const;

  Day operator+(int days) const { return Day{number + days}; }
  auto operator<=>(const Day&) const = default;
};

}  // namespace ent::sampledb
