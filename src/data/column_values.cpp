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

Variant TypedValue(const Field& f, Variant raw) {
  using K = Variant::Kind;
  if (raw.IsNull()) return raw;
  const bool whole = raw.kind() == K::kLongLong, real = raw.kind() == K::kDouble;
  switch (f.type) {
    case DataType::kInteger:
      if (whole && raw.whole() >= std::numeric_limits<int32_t>::min() &&
          raw.whole() <= std::numeric_limits<int32_t>::max())
        return Variant::Long(static_cast<int32_t>(raw.whole()));
      if (real && std::nearbyint(raw.floating()) == raw.floating() &&
          std::fabs(raw.floating()) < 2147483648.0)
        return Variant::Long(static_cast<int32_t>(raw.floating()));
      return raw;
    case DataType::kSmallInt:
      if (whole) return Variant::Integer(static_cast<int16_t>(raw.whole()));
      return raw;
    case DataType::kTinyInt:
      if (whole) return Variant::Byte(static_cast<uint8_t>(raw.whole()));
      return raw;
    case DataType::kBigInt:
      return raw;
    case DataType::kBoolean:
      if (whole || real) return Variant(raw.ToDouble() != 0);
      return raw;
    case DataType::kCurrency:
      if (whole || real) return Variant(raw.ToCurrency());
      return raw;
    case DataType::kDouble:
      if (whole) return Variant(static_cast<double>(raw.whole()));
      return raw;
    case DataType::kSingle:
      if (whole || real) return Variant::Single(static_cast<float>(raw.ToDouble()));
      return raw;
    case DataType::kNumeric:
      if (whole || real || raw.kind() == K::kCurrency) {
        Currency c = raw.ToCurrency();  // the shop's decimals have at most four places
        std::string text = c.ToString();
        size_t point = text.find('.');
        int have = point == std::string::npos ? 0 : static_cast<int>(text.size() - point - 1);
        if (f.scale > 0 && point == std::string::npos) text += '.';
        for (int i = have; i < f.scale; ++i) text += '0';
        return Variant::FromDecimal(Decimal{text, f.scale});
      }
      return raw;
    case DataType::kDateTime:
      if (raw.IsString()) {
        if (auto d = DateTime::Parse(raw.text())) return Variant(*d);
      }
      return raw;
    default:  // text types
      if (raw.IsString()) return raw;
      return Variant(raw.ToText());
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
    for (auto& row : result.rows) row[c] = TypedValue(f, std::move(row[c]));
  }
}

}  // namespace ent
