#include "data/column_values.h"

#include <cmath>
#include <limits>

namespace ent {

namespace {

Field FieldFromRawValues(const std::vector<std::vector<Variant>>& rows, size_t column) {
  bool any_real = false, any_text = false, big = false, all_money_like = true;
  for (const auto& row : rows) {
    const Variant& v = row[column];
    switch (v.kind()) {
      case Variant::Kind::kLongLong:
        if (v.whole() > std::numeric_limits<int32_t>::max() ||
            v.whole() < std::numeric_limits<int32_t>::min())
          big = true;
        break;
      case Variant::Kind::kDouble: {
        any_real = true;
        double scaled = v.floating() * 10000;
        if (std::fabs(scaled) > 9e14 ||
            std::fabs(scaled - std::nearbyint(scaled)) > 1e-6 * std::max(1.0, std::fabs(scaled)))
          all_money_like = false;
        break;
      }
      case Variant::Kind::kString:
        any_text = true;
        break;
      default:
        break;
    }
  }
  if (any_text) return FieldOfSqlServerType("nvarchar");
  if (any_real) return FieldOfSqlServerType(all_money_like ? "money" : "float");
  return FieldOfSqlServerType(big ? "bigint" : "int");
}

}  // namespace

void TypeValue(const Field& f, Variant& value) {
  using K = Variant::Kind;
  if (value.IsNull()) return;
  const bool whole = value.kind() == K::kLongLong, real = value.kind() == K::kDouble;
  switch (f.type) {
    case DataType::kInteger:
      if (whole && value.whole() >= std::numeric_limits<int32_t>::min() &&
          value.whole() <= std::numeric_limits<int32_t>::max())
        value = Variant::Long(static_cast<int32_t>(value.whole()));
      else if (real && std::nearbyint(value.floating()) == value.floating() &&
               std::fabs(value.floating()) < 2147483648.0)
        value = Variant::Long(static_cast<int32_t>(value.floating()));
      return;
    case DataType::kSmallInt:
      if (whole) value = Variant::Integer(static_cast<int16_t>(value.whole()));
      return;
    case DataType::kTinyInt:
      if (whole) value = Variant::Byte(static_cast<uint8_t>(value.whole()));
      return;
    case DataType::kBigInt:
      return;
    case DataType::kBoolean:
      if (whole || real) value = Variant(value.ToDouble() != 0);
      return;
    case DataType::kCurrency:
      if (whole || real) value = Variant(value.ToCurrency());
      return;
    case DataType::kDouble:
      if (whole) value = Variant(static_cast<double>(value.whole()));
      return;
    case DataType::kSingle:
      if (whole || real) value = Variant::Single(static_cast<float>(value.ToDouble()));
      return;
    case DataType::kNumeric:
      if (whole || real || value.kind() == K::kCurrency) {
        Currency c = value.ToCurrency();  // the shop's decimals have at most four places
        std::string text = c.ToString();
        size_t point = text.find('.');
        int have = point == std::string::npos ? 0 : static_cast<int>(text.size() - point - 1);
        if (f.scale > 0 && point == std::string::npos) text += '.';
        for (int i = have; i < f.scale; ++i) text += '0';
        value = Variant::FromDecimal(Decimal{text, f.scale});
      }
      return;
    case DataType::kDateTime:
      if (value.IsString()) {
        if (auto d = DateTime::Parse(value.text())) value = Variant(*d);
      }
      return;
    default:  // text types
      if (!value.IsString()) value = Variant(value.ToText());
      return;
  }
}

void TypeColumns(QueryResult& result, const std::vector<bool>& declared) {
  for (size_t c = 0; c < result.fields.size(); ++c) {
    Field& f = result.fields[c];
    if (!declared[c]) {
      Field inferred = FieldFromRawValues(result.rows, c);
      inferred.name = std::move(f.name);
      f = std::move(inferred);
    }
  }
  for (auto& row : result.rows)
    for (size_t c = 0; c < row.size(); ++c) TypeValue(result.fields[c], row[c]);
}

}  // namespace ent
