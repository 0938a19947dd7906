#include "books.h"

#include "common/thread_values.h"

namespace ent::test {

Books::Books() {
  db_.Exec(
      "CREATE TABLE chartofaccounts (chid int NOT NULL PRIMARY KEY, parentid int NOT NULL, accountnumber int "
      "NOT "
      "NULL, accountname varchar(60), type varchar(10), sublevel int NOT NULL, fivetypename char(1));"
      "CREATE TABLE ChartOfAccountsGLPOSTINGTABLE (glid int NOT NULL PRIMARY KEY, transid int NOT NULL, chid "
      "int "
      "NOT NULL, transdate datetime, amt money NOT NULL, srcmod varchar(20), srcid int NOT NULL, srcid2 int "
      "NOT "
      "NULL);"
      "CREATE TABLE ChartOfAccountsFiscalYearRange (fiscalyearid int NOT NULL PRIMARY KEY, "
      "fiscalyearstartdate "
      "datetime, fiscalyearenddate datetime);"
      "CREATE TABLE supplier (supid int NOT NULL PRIMARY KEY, company varchar(60), contact varchar(40));"
      "CREATE TABLE customer (cusid int NOT NULL PRIMARY KEY, company varchar(60), fname varchar(30), lname "
      "varchar(30), ahtel varchar(3), htel varchar(8), abtel varchar(3), btel varchar(8));"
      "CREATE TABLE wo (woid int NOT NULL PRIMARY KEY, cusid int NOT NULL, invoiceid int NOT NULL, credid "
      "int NOT "
      "NULL, archive bit NOT NULL, latestdate datetime, insurencecusid int NOT NULL, totalinsurenceinvamt "
      "money NOT "
      "NULL)");
  SetShopConnectionString(db_.connection_string());
}

void Books::Account(int chid, int parentid, int number, const std::string& name, char fivetypename,
                    int sublevel, const std::string& type) {
  const std::string code = type.empty() ? std::string(1, fivetypename) : type;
  db_.Exec("insert into chartofaccounts values (" + std::to_string(chid) + ", " + std::to_string(parentid) +
           ", " + std::to_string(number) + ", '" + name + "', '" + code + "', " + std::to_string(sublevel) +
           ", '" + std::string(1, fivetypename) + "')");
}

void Books::Post(int chid, const std::string& amount, const std::string& date, const std::string& srcmod,
                 int srcid, int srcid2) {
  const int glid = next_glid_++;
  db_.Exec("insert into ChartOfAccountsGLPOSTINGTABLE values (" + std::to_string(glid) + ", " +
           std::to_string(glid) + ", " + std::to_string(chid) + ", '" + date + "', " + amount + ", '" +
           srcmod + "', " + std::to_string(srcid) + ", " + std::to_string(srcid2) + ")");
}

void Books::FiscalYear(int year) {
  const std::string y = std::to_string(year);
  db_.Exec("insert into ChartOfAccountsFiscalYearRange values (" + y + ", '1/1/" + y + "', '12/31/" + y +
           "')");
}

}  // namespace ent::test
