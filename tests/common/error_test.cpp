#include "common/error.h"

#include <gtest/gtest.h>

TEST(Error, CarriesNumberDescriptionAndSource) {
  ent::Error e(ent::err::kTableNotFound, "no such table: wo", "sqlite");
  EXPECT_EQ(e.number(), -2147217865);
  EXPECT_EQ(e.description(), "no such table: wo");
  EXPECT_STREQ(e.what(), "no such table: wo");
  EXPECT_EQ(e.source(), "sqlite");
}
