// The rowset helpers the report operations share.
#include "reports/rowset_helpers.h"

#include "common/error.h"
#include "common/format.h"
#include "common/log.h"
#include "common/numeric_text.h"
#include "common/thread_values.h"
#include "common/value_helpers.h"
#include "reports/cls_rs.h"

namespace ent {

namespace {

// Entries 0 .. size - 2: the last entry is the spare.
size_t ListedCount(const std::vector<std::string>& names) {
  return names.empty() ? 0 : names.size() - 1;
}

bool IsNumericValue(const Variant& v) {
  if (v.IsNumberKind()) return true;
  return v.IsString() && IsNumericText(v.text());
}

}  // namespace

std::unique_ptr<Recordset> NewTextTable(const std::vector<std::string>& columns) {
  auto rs = std::make_unique<Recordset>();
  for (const std::string& name : columns) rs->AppendField(ResultTextField(name));
  rs->Open();
  return rs;
}

Recordset& Required(const std::unique_ptr<Recordset>& rs, const std::string& failure, std::string* status) {
  if (!rs) {
    if (status) *status = failure;
    throw Error(err::kObjectRequired, failure);
  }
  return *rs;
}

Recordset& Required(const std::unique_ptr<Recordset>& rs) {
  if (!rs) throw Error(err::kObjectNotSet, "Object variable or With block variable not set");
  return *rs;
}

std::unique_ptr<Recordset> clsRS::runQuery(const std::string& sql, std::string& status, bool editable) {
  return RunQuery(conn_, sql, status, editable);
}

std::unique_ptr<Recordset> RunQuery(const std::shared_ptr<Connection>& connection, const std::string& sql,
                                    std::string& status, bool editable) {
  return Opened(status, [&] { return Recordset::OpenQuery(connection, sql, editable); });
}

std::unique_ptr<Recordset> RunForwardOnly(const std::shared_ptr<Connection>& connection,
                                          const std::string& sql, std::string& status) {
  return Opened(status, [&] { return Recordset::OpenForwardOnly(connection, sql); });
}

std::unique_ptr<Recordset> clsRS::copyRS(Recordset* source) {
  if (!source) return nullptr;
  try {
    auto copy = std::make_unique<Recordset>();
    for (const Field& f : source->fields()) copy->AppendField(ResultTextField(f.name));
    copy->Open();
    const size_t columns = source->fields().size();
    while (!source->IsEof()) {
      copy->AddNew();
      for (size_t c = 0; c < columns; ++c) copy->Set(c, Variant(SafeString(source->Get(c))));
      copy->Update();
      source->MoveNext();
    }
    return copy;
  } catch (const Error&) {
    return nullptr;
  }
}

void clsRS::appendTotalRow(Recordset& rs, const std::vector<std::string>& names) {
  try {
    if (rs.IsBof() || rs.IsEof()) return;
    const size_t count = ListedCount(names);
    std::vector<Currency> sums(count);
    rs.MoveFirst();
    // A name the rowset lacks raises before anything is summed, as reading it on the first row would.
    std::vector<size_t> columns(count);
    for (size_t i = 0; i < count; ++i) columns[i] = rs.FieldIndex(names[i]);
    while (!rs.IsEof()) {
      YieldToPendingWork();
      for (size_t i = 0; i < count; ++i) {
        const Variant& cell = rs.Get(columns[i]);
        if (IsNumericValue(cell)) sums[i] += cell.ToCurrency();
      }
      rs.MoveNext();
    }
    rs.AddNew();
    rs.Set(size_t{0}, Variant("[b]TOTAL"));
    for (size_t i = 0; i < count; ++i) rs.Set(columns[i], Variant(Format(Variant(sums[i]), kAmountPattern)));
    rs.Update();
    rs.MoveFirst();
  } catch (const Error&) {
  }
}

void clsRS::formatColumns(Recordset& rs, const std::vector<std::string>& names, std::string_view pattern) {
  try {
    if (rs.IsBof() || rs.IsEof()) return;
    const size_t count = ListedCount(names);
    rs.MoveFirst();
    // Columns are looked up once; with a name the rowset lacks, the cells named before it on the
    // first row are still formatted before the lookup fails, so that case keeps the lookup per cell.
    std::vector<size_t> columns;
    try {
      for (size_t i = 0; i < count; ++i) columns.push_back(rs.FieldIndex(names[i]));
    } catch (const Error&) {
      columns.clear();
    }
    while (!rs.IsEof()) {
      YieldToPendingWork();
      if (columns.size() == count) {
        for (size_t c : columns) rs.Set(c, Variant(Format(rs.Get(c), pattern)));
      } else {
        for (size_t i = 0; i < count; ++i) rs.Set(names[i], Variant(Format(rs.Get(names[i]), pattern)));
      }
      rs.MoveNext();
    }
    rs.MoveFirst();
  } catch (const Error&) {
  }
}

Currency clsRS::toCurrency(const Variant& value) {
  // Text is read once: its numeric reading is the decimal the currency is made from.
  if (value.IsString()) {
    const std::optional<std::string> decimal = NumericTextToDecimal(value.text());
    return decimal ? Currency::FromDecimalText(*decimal) : Currency();
  }
  if (value.IsNull() || !IsNumericValue(value)) return Currency();
  return value.ToCurrency();
}

}  // namespace ent
