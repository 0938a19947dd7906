#include "data/connection_string.h"

#include <gtest/gtest.h>

#include "support/error_text.h"

using ent::ConnectionString;

TEST(ConnectionString, ReadsKeysWithoutCaseQuotesAndBlanks) {
  auto cs = ConnectionString::Parse(
      " Provider = sqloledb ; Data Source=SHOP\\SQLEXPRESS,1433;Initial Catalog='My;Shop';"
      "Password=\"p\"\"w'd\";User ID=sa;;  ");
  EXPECT_EQ(cs.Get("provider"), "sqloledb");
  EXPECT_EQ(cs.Get("DATA SOURCE"), "SHOP\\SQLEXPRESS,1433");
  EXPECT_EQ(cs.Get("initial catalog"), "My;Shop");
  EXPECT_EQ(cs.Get("Password"), "p\"w'd");
  EXPECT_EQ(cs.GetAny({"UID", "User ID"}), "sa");
  EXPECT_FALSE(cs.Get("Missing"));
  EXPECT_EQ(cs.entries().size(), 5u);
}

TEST(ConnectionString, LastValueWinsAndDoubledEqualsIsPartOfTheKey) {
  auto cs = ConnectionString::Parse("a=1;A=2;x==y=3;empty=;");
  EXPECT_EQ(cs.Get("a"), "2");
  EXPECT_EQ(cs.Get("x=y"), "3");
  EXPECT_EQ(cs.Get("empty"), "");
}

TEST(ConnectionString, MalformedStringsAreRejectedWithThePosition) {
  for (const char* bad : {"Provider", "=x", "a='unterminated", "a='q' junk;b=1", "a=1;b"}) {
    EXPECT_NE(ent::test::ErrorText([&] { ConnectionString::Parse(bad); }).find("malformed at index"),
              std::string::npos)
        << bad;
  }
}

TEST(ConnectionString, PasswordsNeverReachALog) {
  const std::string masked = ent::MaskedConnectionString(
      "Provider=sqloledb;Data Source=SHOP;Initial Catalog='My;Shop';User ID=sa;Password=\"s3;cr\"\"et\";"
      "PWD=other;Jet OLEDB:Database Password=third");
  EXPECT_EQ(masked,
            "Provider=sqloledb;Data Source=SHOP;Initial Catalog=\"My;Shop\";User ID=sa;Password=***;PWD=***;"
            "Jet OLEDB:Database Password=***");
  // What is shown still reads back as the same settings.
  auto shown = ConnectionString::Parse(masked);
  EXPECT_EQ(shown.Get("initial catalog"), "My;Shop");
  EXPECT_EQ(ent::MaskedConnectionString("a=\" padded \";b=it's"), "a=\" padded \";b=\"it's\"");
  // A string that does not parse may hide a password anywhere: none of it is shown.
  EXPECT_EQ(ent::MaskedConnectionString("Server=x;Password='unterminated;secret"),
            "(a malformed connection string, not shown)");
}
