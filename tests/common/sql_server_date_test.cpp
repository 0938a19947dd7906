#include "common/sql_server_date.h"

#include <gtest/gtest.h>

#include "support/error_text.h"

namespace ent {
namespace {

std::string Read(const std::string& text) {
  auto d = ReadSqlServerDate(text);
  return d ? d->StoredText() : "none";
}

TEST(SqlServerDate, ReadsTheFormsTheServerReadsWithUsSettings) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      // month/day/year, 4- or 2-digit years (up to 49 in the 2000s), other separators
      {"6/30/2024", "2024-06-30 00:00:00"},
      {"06/30/2024", "2024-06-30 00:00:00"},
      {"6/30/24", "2024-06-30 00:00:00"},
      {"1/1/49", "2049-01-01 00:00:00"},
      {"1/1/50", "1950-01-01 00:00:00"},
      {"12-31-1999", "1999-12-31 00:00:00"},
      {"6.30.2024", "2024-06-30 00:00:00"},
      // year first, unseparated, ISO 8601
      {"2024-06-30", "2024-06-30 00:00:00"},
      {"2024/6/30", "2024-06-30 00:00:00"},
      {"20240630", "2024-06-30 00:00:00"},
      {"240630", "2024-06-30 00:00:00"},
      {"2024-06-30T00:00:00", "2024-06-30 00:00:00"},
      {"2024-06-30T23:59:59.997", "2024-06-30 23:59:59"},
      {"2024", "2024-01-01 00:00:00"},
      // month names, either side of the day, with commas, any case
      {"Jun 30 2024", "2024-06-30 00:00:00"},
      {"june 30, 2024", "2024-06-30 00:00:00"},
      {"30 JUN 2024", "2024-06-30 00:00:00"},
      {"Jun 30 24", "2024-06-30 00:00:00"},
      {"Jun 2024", "2024-06-01 00:00:00"},
      {"2024 June 30", "2024-06-30 00:00:00"},
      // times, blanks around
      {"  6/30/2024 2:05 PM ", "2024-06-30 14:05:00"},
      {"6/30/2024 12:00:01 AM", "2024-06-30 00:00:01"},
      {"20240630 23:15", "2024-06-30 23:15:00"},
      {"Jun 30 2024 10AM", "2024-06-30 10:00:00"},
      {"14:30", "1900-01-01 14:30:00"},
      {"", "1900-01-01 00:00:00"},
      // the server's earliest day
      {"1/1/1753", "1753-01-01 00:00:00"},
  };
  for (const auto& [text, stored] : cases) EXPECT_EQ(Read(text), stored) << "'" << text << "'";
}

TEST(SqlServerDate, RefusesWhatTheServerCannotRead) {
  for (const char* text :
       {"junk", "not a date", "13/1/2024", "2/30/2024", "2/29/2023", "6/30", "6/30/202", "30/6/2024",
        "2024-30-06", "20241301", "12/31/1752", "6/30/2024 25:00", "6/30/2024 13:00 PM", "6/30/2024 garbage",
        "6/30/2024 10:00 x", "Jum 30 2024", "Jun Jul 2024", "2024x", "1234567890123"}) {
    EXPECT_EQ(Read(text), "none") << "'" << text << "'";
  }
  EXPECT_EQ(test::ErrorText([] { SqlServerDate("junk"); }),
            "Conversion failed when converting date and/or time from character string.");
  EXPECT_EQ(SqlServerDate("2/29/2024").ShortDate(), "2/29/2024");
}

}  // namespace
}  // namespace ent
