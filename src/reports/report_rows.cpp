#include "reports/report_rows.h"

#include <utility>

#include "common/error.h"
#include "common/format.h"
#include "common/text.h"
#include "common/value_helpers.h"
#include "reports/cls_rs.h"
#include "reports/rowset_helpers.h"

namespace ent {

namespace {

std::vector<size_t> ColumnsOf(const std::vector<Field>& fields, const std::vector<std::string>& names) {
  std::vector<size_t> columns;
  for (const std::string& name : names) columns.push_back(FieldIndexOf(fields, name));
  return columns;
}

// A currency or whole number in an amount column stays a number until it is formatted: its text
// would read back as exactly that number, for the sums and for the amount pattern alike.
bool KeptAsNumber(const Variant& value) {
  switch (value.kind()) {
    case Variant::Kind::kByte:
    case Variant::Kind::kInteger:
    case Variant::Kind::kLong:
    case Variant::Kind::kLongLong:
    case Variant::Kind::kCurrency:
      return true;
    default:
      return false;
  }
}

class ReportRowCursor : public RowCursor {
 public:
  ReportRowCursor(std::unique_ptr<RowCursor> query, ReportRowSteps steps)
      : query_(std::move(query)), steps_(std::move(steps)) {
    if (steps_.columns.empty())
      for (const Field& f : query_->fields()) steps_.columns.push_back(f.name);
    for (const std::string& name : steps_.columns) fields_.push_back(ResultTextField(name));
    totals_ = ColumnsOf(fields_, steps_.totals);
    amounts_ = ColumnsOf(fields_, steps_.amounts);
    is_amount_.resize(fields_.size());
    for (size_t c : amounts_) is_amount_[c] = true;
    sums_.resize(totals_.size());
  }

  const std::vector<Field>& fields() const override { return fields_; }

  bool Next(std::vector<Variant>& row) override {
    row.assign(fields_.size(), Variant::Null());
    if (query_->Next(in_)) {
      if (steps_.make) {
        steps_.make(query_->fields(), in_, row);
      } else {
        for (size_t c = 0; c < row.size() && c < in_.size(); ++c) {
          if (in_[c].IsString() || (is_amount_[c] && KeptAsNumber(in_[c])))
            row[c] = std::move(in_[c]);
          else
            row[c] = Variant(SafeString(in_[c]));
        }
      }
      for (size_t i = 0; i < totals_.size(); ++i) sums_[i] += clsRS::toCurrency(row[totals_[i]]);
      FormatAmounts(row);
      any_ = true;
      return true;
    }
    if (!any_ || totals_.empty() || total_written_) return false;
    total_written_ = true;
    row[0] = Variant("[b]TOTAL");
    for (size_t i = 0; i < totals_.size(); ++i)
      row[totals_[i]] = Variant(Format(Variant(sums_[i]), kAmountPattern));
    if (steps_.complete_total) steps_.complete_total(fields_, row);
    FormatAmounts(row);
    return true;
  }

 private:
  void FormatAmounts(std::vector<Variant>& row) const {
    for (size_t c : amounts_) row[c] = Variant(Format(row[c], kAmountPattern));
  }

  std::unique_ptr<RowCursor> query_;
  ReportRowSteps steps_;
  std::vector<Field> fields_;
  std::vector<size_t> totals_, amounts_;
  std::vector<bool> is_amount_;  // by column
  std::vector<Currency> sums_;
  std::vector<Variant> in_;
  bool any_ = false;
  bool total_written_ = false;
};

}  // namespace

std::unique_ptr<Recordset> StreamReportRows(const std::shared_ptr<Connection>& connection,
                                            const std::string& sql, const ComputedTypes& computed,
                                            ReportRowSteps steps, std::string& status) {
  return Opened(status, [&] {
    if (!connection || !connection->IsOpen())
      throw Error(err::kObjectClosed, "Operation is not allowed when the object is closed.");
    auto cursor = std::make_unique<ReportRowCursor>(connection->OpenCursor(sql, computed), std::move(steps));
    return Recordset::OpenForwardOnly(connection, std::move(cursor));
  });
}

}  // namespace ent
