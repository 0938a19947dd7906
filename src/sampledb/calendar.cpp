#include "sampledb/calendar.h"

namespace ent::sampledb {
namespace {

// Howard Hinnant's civil-date algorithms.
struct Ymd {
  int year, month, day;
};

Ymd ToYmd(int z) {
  z += 719468;
  const int era = (z >= 0 ? z : z - 146096) / 146097;
  const int doe = z - era * 146097;
  const int yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int mp = (5 * doy + 2) / 153;
  const int d = doy - (153 * mp + 2) / 5 + 1;
  const int m = mp < 10 ? mp + 3 : mp - 9;
  return {yoe + era * 400 + (m <= 2 ? 1 : 0), m, d};
}

}  // namespace

Day Day::FromYmd(int year, int month, int day) {
  year -= month <= 2 ? 1 : 0;
  const int era = (year >= 0 ? year : year - 399) / 400;
  const int yoe = year - era * 400;
  const int doy = (153 * (month > 2 ? month - 3 : month + 9) + 2) / 5 + day - 1;
  const int doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return Day{era * 146097 + doe - 719468};
}

int Day::Year() const {
  return ToYmd(number).year;
}
int Day::Month() const {
  return ToYmd(number).month;
}
int Day::DayOfMonth() const {
  return ToYmd(number).day;
}

std::string Day::Text() const {
  const Ymd ymd = ToYmd(number);
  std::string text = "0000-00-00 00:00:00";
  auto put = [&text](size_t end, int value) {
    for (size_t i = end; value > 0; value /= 10) text[--i] = static_cast<char>('0' + value % 10);
  };
  put(4, ymd.year);
  put(7, ymd.month);
  put(10, ymd.day);
  return text;
}

}  // namespace ent::sampledb
