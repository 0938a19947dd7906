// The identity that decides which statement runs wait for each other.
#include "reports/accounting/work_table_lock.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace ent::accounting {
namespace {

TEST(WorkTableLock, OneIdentityPerDatabase) {
  test::TempDir dir;
  const std::string file = dir.file("shop.db");
  const std::string same = DatabaseIdentity("Provider=SQLite;Data Source=" + file);
  EXPECT_EQ(DatabaseIdentity("provider=sqlite; data source = '" +
                             (dir.path() / "x" / ".." / "shop.db").string() + "'"),
            same);
  EXPECT_NE(DatabaseIdentity("Provider=SQLite;Data Source=" + dir.file("other.db")), same);
  EXPECT_EQ(DatabaseIdentity("Provider=sqloledb;Data Source=SHOP01;Initial Catalog=Bayfield;User ID=a"),
            DatabaseIdentity("Provider=SQLOLEDB;Data Source=shop01;Initial Catalog=BAYFIELD;User ID=b"));
  EXPECT_NE(DatabaseIdentity("Provider=sqloledb;Data Source=shop01;Initial Catalog=Bayfield"),
            DatabaseIdentity("Provider=sqloledb;Data Source=shop01;Initial Catalog=Other"));
}

}  // namespace
}  // namespace ent::accounting
