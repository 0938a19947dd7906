#include "common/date_time.h"

#include <cctype>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <vector>

#include "common/error.h"

namespace ent {

namespace {

constexpr int64_t kSecondsPerDay = 86400;

// Days from 1970-01-01 to y-m-d in the proleptic Gregorian calendar (H. Hinnant's algorithm).
int64_t DaysFromCivil(int64_t y, unsigned m, unsigned d) {
  y -= m <= 2;
  const int64_t era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<int64_t>(doe) - 719468;
}

struct Civil {
  int year;
  int month;
  int day;
};

Civil CivilFromDays(int64_t z) {
  z += 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t y = static_cast<int64_t>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  const unsigned d = doy - (153 * mp + 2) / 5 + 1;
  const unsigned m = mp < 10 ? mp + 3 : mp - 9;
  return {static_cast<int>(y + (m <= 2)), static_cast<int>(m), static_cast<int>(d)};
}

const int64_t kDayZero = DaysFromCivil(1899, 12, 30);

bool IsLeap(int y) {
  return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0;
}

int DaysInMonth(int y, int m) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  return m == 2 && IsLeap(y) ? 29 : kDays[m - 1];
}

bool ValidDate(int y, int m, int d) {
  return y >= 100 && y <= 9999 && m >= 1 && m <= 12 && d >= 1 && d <= DaysInMonth(y, m);
}

bool ValidTime(int h, int mi, int s) {
  return h >= 0 && h < 24 && mi >= 0 && mi < 60 && s >= 0 && s < 60;
}

int64_t FloorDiv(int64_t a, int64_t b) {
  return a / b - ((a % b != 0) && ((a < 0) != (b < 0)));
}

// A small scanner over the date text.
class Scanner {
 public:
  explicit Scanner(std::string_view t) : t_(t) {}
  bool AtEnd() const { return i_ >= t_.size(); }
  void SkipBlanks() {
    while (i_ < t_.size() && t_[i_] == ' ') ++i_;
  }
  // Reads 1..max_digits digits; returns the count read (0 = none).
  int Number(int& out, int max_digits) {
    int n = 0;
    out = 0;
    while (i_ < t_.size() && n < max_digits && std::isdigit(static_cast<unsigned char>(t_[i_]))) {
      out = out * 10 + (t_[i_++] - '0');
      ++n;
    }
    return n;
  }
  bool Take(char c) {
    if (i_ < t_.size() && t_[i_] == c) {
      ++i_;
      return true;
    }
    return false;
  }
  bool TakeWord(std::string_view w) {
    if (t_.size() - i_ < w.size()) return false;
    for (size_t k = 0; k < w.size(); ++k)
      if (std::toupper(static_cast<unsigned char>(t_[i_ + k])) != w[k]) return false;
    i_ += w.size();
    return true;
  }
  size_t pos() const { return i_; }
  void set_pos(size_t p) { i_ = p; }

 private:
  std::string_view t_;
  size_t i_ = 0;
};

// Time part: "H:mm[:ss]" with an optional AM/PM.
bool ParseTime(Scanner& s, int& h, int& mi, int& sec) {
  sec = 0;
  if (s.Number(h, 2) == 0 || !s.Take(':') || s.Number(mi, 2) != 2) return false;
  if (s.Take(':') && s.Number(sec, 2) != 2) return false;
  s.SkipBlanks();
  bool pm = s.TakeWord("PM"), am = !pm && s.TakeWord("AM");
  if (am || pm) {
    if (h < 1 || h > 12) return false;
    if (h == 12) h = 0;
    if (pm) h += 12;
  }
  return true;
}

}  // namespace

DateTime DateTime::FromParts(int year, int month, int day, int hour, int minute, int second) {
  if (!ValidDate(year, month, day) || !ValidTime(hour, minute, second))
    throw Error(err::kInvalidProcedureCall, "Invalid procedure call or argument");
  int64_t days = DaysFromCivil(year, static_cast<unsigned>(month), static_cast<unsigned>(day)) - kDayZero;
  return FromSeconds(days * kSecondsPerDay + hour * 3600 + minute * 60 + second);
}

DateTime DateTime::FromSeconds(int64_t seconds_since_day_zero) {
  DateTime d;
  d.seconds_ = seconds_since_day_zero;
  return d;
}

DateTime DateTime::Now() {
  std::time_t now = std::time(nullptr);
  std::tm local{};
  localtime_r(&now, &local);
  return FromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                   local.tm_sec);
}

DateTime DateTime::Today() {
  return Now().DateOnly();
}

std::optional<DateTime> DateTime::Parse(std::string_view text) {
  Scanner s(text);
  s.SkipBlanks();
  int a = 0, b = 0, c = 0, h = 0, mi = 0, sec = 0;
  int y = 0, m = 0, d = 0;
  size_t start = s.pos();
  int na = s.Number(a, 4);
  if (na == 0) return std::nullopt;
  bool have_date = false;
  if (s.Take('/') || s.Take('-')) {
    char sep = text[s.pos() - 1];
    int nb = s.Number(b, 2);
    if (nb == 0 || !s.Take(sep)) return std::nullopt;
    int nc = s.Number(c, 4);
    if (nc == 0) return std::nullopt;
    if (na == 4) {  // yyyy-MM-dd or yyyy/M/d
      y = a, m = b, d = c;
    } else if (sep == '/' && na <= 2 && (nc == 4 || nc == 2)) {  // M/d/yyyy, M/d/yy
      m = a, d = b, y = nc == 2 ? (c < 30 ? 2000 + c : 1900 + c) : c;
    } else {
      return std::nullopt;
    }
    have_date = true;
    if (s.Take('T')) {
      if (!ParseTime(s, h, mi, sec)) return std::nullopt;
    } else {
      s.SkipBlanks();
      if (!s.AtEnd() && !ParseTime(s, h, mi, sec)) return std::nullopt;
    }
  } else {
    s.set_pos(start);  // a time alone
    if (!ParseTime(s, h, mi, sec)) return std::nullopt;
  }
  s.SkipBlanks();
  if (!s.AtEnd()) return std::nullopt;
  if (!have_date) {
    if (!ValidTime(h, mi, sec)) return std::nullopt;
    return FromSeconds(h * 3600 + mi * 60 + sec);
  }
  if (!ValidDate(y, m, d) || !ValidTime(h, mi, sec)) return std::nullopt;
  return FromParts(y, m, d, h, mi, sec);
}

int DateTime::year() const {
  return CivilFromDays(FloorDiv(seconds_, kSecondsPerDay) + kDayZero).year;
}
int DateTime::month() const {
  return CivilFromDays(FloorDiv(seconds_, kSecondsPerDay) + kDayZero).month;
}
int DateTime::day() const {
  return CivilFromDays(FloorDiv(seconds_, kSecondsPerDay) + kDayZero).day;
}
int DateTime::hour() const {
  return static_cast<int>((seconds_ - FloorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay) / 3600);
}
int DateTime::minute() const {
  return static_cast<int>((seconds_ - FloorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay) / 60 % 60);
}
int DateTime::second() const {
  return static_cast<int>((seconds_ - FloorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay) % 60);
}

DateTime DateTime::DateOnly() const {
  return FromSeconds(FloorDiv(seconds_, kSecondsPerDay) * kSecondsPerDay);
}

std::string DateTime::ShortDate() const {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%d/%d/%d", month(), day(), year());
  return buf;
}

std::string DateTime::GeneralDate() const {
  int64_t time_of_day = seconds_ - DateOnly().seconds_;
  if (time_of_day == 0) return ShortDate();
  int h = hour();
  char buf[32];
  std::snprintf(buf, sizeof buf, "%d:%02d:%02d %s", h % 12 == 0 ? 12 : h % 12, minute(), second(),
                h < 12 ? "AM" : "PM");
  // The date part is left out for a time on day zero, as the shop's general date format does.
  if (DateOnly().seconds_ == 0) return buf;
  return ShortDate() + " " + buf;
}

std::string DateTime::IsoText() const {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02dT%02d:%02d:%02d", year(), month(), day(), hour(), minute(),
                second());
  return buf;
}

std::string DateTime::StoredText() const {
  std::string text = IsoText();
  text[10] = ' ';
  return text;
}

}  // namespace ent
