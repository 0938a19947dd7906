#include <gtest/gtest.h>

#include "common/thread_values.h"
#include "data/sql_text.h"
#include "reports/cls_rs.h"
#include "support/rowset_text.h"

namespace ent {
namespace {

TEST(SqlText, QuotesAndSortOrders) {
  EXPECT_EQ(SqlQuote("O'Brien's"), "O''Brien''s");
  for (const char* ok : {"lname", "lname DESC, fname asc", " Company , [Last Name] ", "customer.cusid"})
    EXPECT_FALSE(CheckSortOrder(ok)) << ok;
  for (const char* bad :
       {"", "lname;drop table wo", "lname desc desc", "1", "lname,", "(select 1)", "lname -- x"})
    EXPECT_TRUE(CheckSortOrder(bad)) << bad;
}

}  // namespace
}  // namespace ent
