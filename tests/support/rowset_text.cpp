#include "support/rowset_text.h"

namespace ent::test {

namespace {

std::string TextOf(const Variant& v, const char* null_text) {
  return v.IsNull() ? null_text : v.ToText();
}

}  // namespace

std::vector<std::vector<std::string>> Cells(Recordset* rs) {
  std::vector<std::vector<std::string>> rows;
  if (!rs || rs->RecordCount() == 0) return rows;
  for (rs->MoveFirst(); !rs->IsEof(); rs->MoveNext()) {
    std::vector<std::string> row;
    for (size_t c = 0; c < rs->fields().size(); ++c) row.push_back(TextOf(rs->Get(c), ""));
    rows.push_back(std::move(row));
  }
  return rows;
}

std::unique_ptr<Recordset> Held(std::unique_ptr<Recordset> rs) {
  if (!rs) return rs;
  auto held = std::make_unique<Recordset>();
  for (const Field& f : rs->fields()) held->AppendField(f);
  held->Open();
  for (; !rs->IsEof(); rs->MoveNext()) {
    held->AddNew();
    for (size_t c = 0; c < rs->fields().size(); ++c) held->Set(c, rs->Get(c));
    held->Update();
  }
  if (held->RecordCount() > 0) held->MoveFirst();
  return held;
}

std::vector<std::string> Column(Recordset& rs, const std::string& name) {
  std::vector<std::string> out;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext()) out.push_back(TextOf(rs.Get(name), "<null>"));
  return out;
}

std::map<std::string, std::string> RowOf(Recordset& rs, const std::string& label) {
  std::map<std::string, std::string> row;
  for (rs.MoveFirst(); !rs.IsEof(); rs.MoveNext()) {
    if (TextOf(rs.Get(size_t{0}), "<null>") != label) continue;
    for (size_t c = 0; c < rs.fields().size(); ++c) row[rs.fields()[c].name] = TextOf(rs.Get(c), "<null>");
    break;
  }
  return row;
}

}  // namespace ent::test
