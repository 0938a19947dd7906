#include "common/sql_server_date.h"

#include <array>
#include <cctype>
#include <string>
#include <vector>

#include "common/error.h"

namespace ent {

namespace {

bool IsDigit(char c) {
  return std::isdigit(static_cast<unsigned char>(c)) != 0;
}
bool IsLetter(char c) {
  return std::isalpha(static_cast<unsigned char>(c)) != 0;
}

struct Parts {
  int year = 1900, month = 1, day = 1;
  int hour = 0, minute = 0, second = 0;
};

class Cursor {
 public:
  explicit Cursor(std::string_view t) : t_(t) {}
  bool AtEnd() const { return i_ >= t_.size(); }
  char Peek(size_t ahead = 0) const { return i_ + ahead < t_.size() ? t_[i_ + ahead] : '\0'; }
  void SkipBlanks() {
    while (!AtEnd() && t_[i_] == ' ') ++i_;
  }
  bool Take(char c) {
    if (Peek() != c) return false;
    ++i_;
    return true;
  }
  // A run of digits: its value and length (0 when there is none). Runs longer than 9 digits are
  // never part of a date, so they stop the reading.
  int Digits(int& value) {
    value = 0;
    int n = 0;
    while (!AtEnd() && IsDigit(t_[i_])) {
      if (++n > 9) return 0;
      value = value * 10 + (t_[i_++] - '0');
    }
    return n;
  }
  std::string Word() {
    std::string w;
    while (!AtEnd() && IsLetter(t_[i_]))
      w += static_cast<char>(std::tolower(static_cast<unsigned char>(t_[i_++])));
    return w;
  }
  size_t pos() const { return i_; }
  void set_pos(size_t p) { i_ = p; }

 private:
  std::string_view t_;
  size_t i_ = 0;
};

// January is 1; 0 for a word that names no month.
int MonthOfName(const std::string& word) {
  static const std::array<const char*, 12> kNames = {"january",   "february", "march",    "april",
                                                     "may",       "june",     "july",     "august",
                                                     "september", "october",  "november", "december"};
  for (size_t m = 0; m < kNames.size(); ++m) {
    const std::string full = kNames[m];
    if (word == full || word == full.substr(0, 3)) return static_cast<int>(m) + 1;
  }
  return 0;
}

int YearOf(int value, int digits) {
  if (digits == 4) return value;
  if (digits <= 2) return value < 50 ? 2000 + value : 1900 + value;
  return -1;  // three digits: not a year the server reads
}

// "h:mm[:ss[.fff]]" or "h" before AM/PM, then an optional AM/PM.
bool ReadTime(Cursor& c, Parts& p) {
  int h = 0;
  const int hd = c.Digits(h);
  if (hd == 0 || hd > 2) return false;
  bool colon = false;
  if (c.Take(':')) {
    colon = true;
    if (c.Digits(p.minute) == 0) return false;
    if (c.Take(':')) {
      if (c.Digits(p.second) == 0) return false;
      if (c.Take('.') || c.Take(':')) {
        int fraction = 0;
        if (c.Digits(fraction) == 0) return false;
      }
    }
  }
  c.SkipBlanks();
  const size_t before = c.pos();
  const std::string half = c.Word();
  if (half == "am" || half == "pm") {
    if (h < 1 || h > 12) return false;
    if (h == 12) h = 0;
    if (half == "pm") h += 12;
  } else {
    c.set_pos(before);
    if (!colon) return false;
  }
  p.hour = h;
  return true;
}

// Whether a time starts here: digits followed by ':' or by AM/PM.
bool TimeAhead(const Cursor& c) {
  Cursor probe = c;
  int v = 0;
  if (probe.Digits(v) == 0) return false;
  if (probe.Peek() == ':') return true;
  probe.SkipBlanks();
  const std::string w = probe.Word();
  return w == "am" || w == "pm";
}

// Month names with one or two numbers around them, commas allowed: "Jun 30 2024", "30 June, 2024",
// "Jun 2024". Of two numbers, a four-digit one is the year; otherwise the first is the day.
bool ReadAlphabeticDate(Cursor& c, Parts& p) {
  int month = 0;
  std::vector<std::pair<int, int>> numbers;  // value, digits
  for (;;) {
    c.SkipBlanks();
    if (c.Take(',')) continue;
    if (IsLetter(c.Peek())) {
      const size_t before = c.pos();
      const std::string w = c.Word();
      const int m = MonthOfName(w);
      if (m == 0 || month != 0) {
        c.set_pos(before);
        break;
      }
      month = m;
    } else if (IsDigit(c.Peek()) && !TimeAhead(c)) {
      int v = 0;
      const int n = c.Digits(v);
      if (n == 0 || numbers.size() == 2) return false;
      numbers.emplace_back(v, n);
    } else {
      break;
    }
  }
  if (month == 0 || numbers.empty()) return false;
  p.month = month;
  if (numbers.size() == 1) {  // "Jun 2024": the first of the month
    if (numbers[0].second != 4) return false;
    p.year = numbers[0].first;
    p.day = 1;
    return true;
  }
  size_t year_at = numbers[1].second == 4 || numbers[0].second != 4 ? 1 : 0;
  if (numbers[1 - year_at].second > 2) return false;
  p.day = numbers[1 - year_at].first;
  p.year = YearOf(numbers[year_at].first, numbers[year_at].second);
  return true;
}

// The numeric date forms; `iso` tells whether a 'T' may follow (yyyy-mm-dd).
bool ReadNumericDate(Cursor& c, Parts& p, bool& iso) {
  int a = 0;
  const int ad = c.Digits(a);
  if (ad == 0) return false;
  const char sep = c.Peek();
  if (sep == '/' || sep == '-' || sep == '.') {
    c.Take(sep);
    int b = 0, y = 0;
    const int bd = c.Digits(b);
    if (bd == 0 || bd > 2 || !c.Take(sep)) return false;
    const int yd = c.Digits(y);
    if (ad == 4) {  // y/m/d
      if (yd == 0 || yd > 2) return false;
      p.year = a;
      p.month = b;
      p.day = y;
      iso = sep == '-' && bd == 2 && yd == 2;
      return true;
    }
    if (ad > 2) return false;
    p.month = a;
    p.day = b;
    p.year = YearOf(y, yd);
    return yd > 0;
  }
  if (ad == 8) {
    p.year = a / 10000;
    p.month = a / 100 % 100;
    p.day = a % 100;
    return true;
  }
  if (ad == 4 && c.AtEnd()) {  // a year alone: its first day
    p.year = a;
    return true;
  }
  if (ad == 6) {
    p.year = YearOf(a / 10000, 2);
    p.month = a / 100 % 100;
    p.day = a % 100;
    return true;
  }
  return false;
}

bool IsLeap(int y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

bool Valid(const Parts& p) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (p.year < 1753 || p.year > 9999 || p.month < 1 || p.month > 12 || p.day < 1) return false;
  const int days = p.month == 2 && IsLeap(p.year) ? 29 : kDays[p.month - 1];
  return p.day <= days && p.hour >= 0 && p.hour < 24 && p.minute >= 0 && p.minute < 60 && p.second >= 0 &&
         p.second < 60;
}

}  // namespace

std::optional<DateTime> ReadSqlServerDate(std::string_view text) {
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  Cursor c(text);
  Parts p;
  c.SkipBlanks();
  if (!c.AtEnd()) {
    bool iso = false;
    bool date_read = false;
    if (IsLetter(c.Peek())) {
      if (!ReadAlphabeticDate(c, p)) return std::nullopt;
      date_read = true;
    } else if (!TimeAhead(c)) {
      const size_t start = c.pos();
      if (ReadNumericDate(c, p, iso)) {
        date_read = true;
      } else {  // "30 Jun 2024"
        c.set_pos(start);
        if (!ReadAlphabeticDate(c, p)) return std::nullopt;
        date_read = true;
      }
    }
    if (date_read && iso && c.Take('T')) {
      if (!ReadTime(c, p)) return std::nullopt;
    } else {
      c.SkipBlanks();
      if (!c.AtEnd() && !ReadTime(c, p)) return std::nullopt;
    }
    c.SkipBlanks();
    if (!c.AtEnd()) return std::nullopt;
  }
  if (!Valid(p)) return std::nullopt;
  return DateTime::FromParts(p.year, p.month, p.day, p.hour, p.minute, p.second);
}

DateTime SqlServerDate(std::string_view text) {
  if (auto d = ReadSqlServerDate(text)) return *d;
  throw Error(err::kConversionFailed, kDateConversionFailed);
}

}  // namespace ent
