#include "support/data_queries.h"

#include "data/recordset.h"

namespace ent::test {

std::string FirstValue(Connection& connection, const std::string& sql) {
  return connection.Query(sql).rows.at(0).at(0).ToText();
}

std::string IdsWhere(const TestDb& db, const std::string& table, const std::string& where) {
  auto rs = Recordset::OpenQuery(db.Connect(), "select id from " + table + " where " + where + " order by id",
                                 false);
  std::string ids;
  for (; !rs->IsEof(); rs->MoveNext()) ids += rs->Get("id").ToText();
  return ids;
}

}  // namespace ent::test
