#include "common/value_helpers.h"

namespace ent {

Variant ToNumeric(const Variant& value) {
  switch (value.kind()) {
    case Variant::Kind::kEmpty:
    case Variant::Kind::kNull:
      return Variant::Long(0);
    case Variant::Kind::kByte:
    case Variant::Kind::kInteger:
    case Variant::Kind::kLong:
      return Variant::Long(static_cast<int32_t>(value.whole()));
    case Variant::Kind::kSingle:
    case Variant::Kind::kDouble:
    case Variant::Kind::kDecimal:
      return Variant(value.ToCurrency());
    default:
      return value;
  }
}

std::string SafeString(const Variant& value) {
  if (value.IsNull()) return "";
  return value.ToText();
}

}  // namespace ent
