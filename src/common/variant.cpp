#include "common/variant.h"

#include <cmath>
#include <cstdio>
#include <limits>

#include "common/error.h"
#include "common/numeric_text.h"

namespace ent {

namespace {

[[noreturn]] void TypeMismatch() {
  throw Error(err::kTypeMismatch, "Type mismatch");
}
[[noreturn]] void InvalidUseOfNull() {
  throw Error(err::kInvalidUseOfNull, "Invalid use of Null");
}
[[noreturn]] void Overflow() {
  throw Error(err::kOverflow, "Overflow");
}

// The shop's text of a float: up to `digits` significant digits, exponent form only for very
// large or small magnitudes ("1E+15", "1E-05").
std::string FloatText(double v, int digits) {
  if (v == 0) return "0";
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*G", digits, v);
  return buf;
}

int32_t RoundToLong(double v) {
  if (!std::isfinite(v)) Overflow();
  double r = std::nearbyint(v);  // halves to even
  if (r > std::numeric_limits<int32_t>::max() || r < std::numeric_limits<int32_t>::min()) Overflow();
  return static_cast<int32_t>(r);
}

constexpr double kSecondsPerDay = 86400.0;

}  // namespace

Variant Variant::Null() {
  return Variant(Storage(NullTag{}));
}
Variant Variant::Byte(uint8_t v) {
  return Variant(Storage(Small{Kind::kByte, v}));
}
Variant Variant::Integer(int16_t v) {
  return Variant(Storage(Small{Kind::kInteger, v}));
}
Variant Variant::LongLong(int64_t v) {
  return Variant(Storage(v));
}
Variant Variant::Single(float v) {
  return Variant(Storage(v));
}
Variant Variant::FromDecimal(Decimal d) {
  return Variant(Storage(std::move(d)));
}
Variant Variant::Object(std::shared_ptr<void> object) {
  return Variant(Storage(ObjectRef{std::move(object)}));
}

Variant::Kind Variant::kind() const {
  switch (value_.index()) {
    case 0:
      return Kind::kEmpty;
    case 1:
      return Kind::kNull;
    case 2:
      return Kind::kBoolean;
    case 3:
      return std::get<Small>(value_).kind;
    case 4:
      return Kind::kLong;
    case 5:
      return Kind::kLongLong;
    case 6:
      return Kind::kSingle;
    case 7:
      return Kind::kDouble;
    case 8:
      return Kind::kDecimal;
    case 9:
      return Kind::kCurrency;
    case 10:
      return Kind::kDate;
    case 11:
      return Kind::kString;
    default:
      return Kind::kObject;
  }
}

bool Variant::IsNumberKind() const {
  switch (kind()) {
    case Kind::kByte:
    case Kind::kInteger:
    case Kind::kLong:
    case Kind::kLongLong:
    case Kind::kSingle:
    case Kind::kDouble:
    case Kind::kDecimal:
    case Kind::kCurrency:
      return true;
    default:
      return false;
  }
}

int64_t Variant::whole() const {
  if (auto* s = std::get_if<Small>(&value_)) return s->value;
  if (auto* l = std::get_if<int32_t>(&value_)) return *l;
  return std::get<int64_t>(value_);
}

double Variant::floating() const {
  if (auto* f = std::get_if<float>(&value_)) return *f;
  return std::get<double>(value_);
}

std::string Variant::ToText() const {
  switch (kind()) {
    case Kind::kEmpty:
      return "";
    case Kind::kNull:
      InvalidUseOfNull();
    case Kind::kBoolean:
      return boolean() ? "True" : "False";
    case Kind::kByte:
    case Kind::kInteger:
    case Kind::kLong:
    case Kind::kLongLong:
      return std::to_string(whole());
    case Kind::kSingle:
      return FloatText(floating(), 7);
    case Kind::kDouble:
      return FloatText(floating(), 15);
    case Kind::kDecimal:
      return decimal().text;
    case Kind::kCurrency:
      return currency().ToString();
    case Kind::kDate:
      return date().GeneralDate();
    case Kind::kString:
      return text();
    case Kind::kObject:
      TypeMismatch();
  }
  TypeMismatch();
}

double Variant::ToDouble() const {
  switch (kind()) {
    case Kind::kEmpty:
      return 0;
    case Kind::kNull:
      InvalidUseOfNull();
    case Kind::kBoolean:
      return boolean() ? -1 : 0;
    case Kind::kByte:
    case Kind::kInteger:
    case Kind::kLong:
    case Kind::kLongLong:
      return static_cast<double>(whole());
    case Kind::kSingle:
    case Kind::kDouble:
      return floating();
    case Kind::kDecimal:
      return std::strtod(decimal().text.c_str(), nullptr);
    case Kind::kCurrency:
      return currency().ToDouble();
    case Kind::kDate:
      return static_cast<double>(date().seconds()) / kSecondsPerDay;
    case Kind::kString: {
      auto v = ParseNumericText(text());
      if (!v) TypeMismatch();
      return *v;
    }
    case Kind::kObject:
      TypeMismatch();
  }
  TypeMismatch();
}

Currency Variant::ToCurrency() const {
  switch (kind()) {
    case Kind::kEmpty:
      return Currency();
    case Kind::kNull:
      InvalidUseOfNull();
    case Kind::kBoolean:
      return Currency::FromInt(boolean() ? -1 : 0);
    case Kind::kByte:
    case Kind::kInteger:
    case Kind::kLong:
    case Kind::kLongLong:
      return Currency::FromInt(whole());
    case Kind::kDecimal:
      return Currency::FromDecimalText(decimal().text);
    case Kind::kCurrency:
      return currency();
    case Kind::kString: {
      auto d = NumericTextToDecimal(text());
      if (!d) TypeMismatch();
      return Currency::FromDecimalText(*d);
    }
    default:
      return Currency::FromDouble(ToDouble());
  }
}

int32_t Variant::ToLong() const {
  switch (kind()) {
    case Kind::kByte:
    case Kind::kInteger:
    case Kind::kLong:
    case Kind::kLongLong: {
      int64_t v = whole();
      if (v > std::numeric_limits<int32_t>::max() || v < std::numeric_limits<int32_t>::min()) Overflow();
      return static_cast<int32_t>(v);
    }
    case Kind::kCurrency: {
      // Halves to even on the exact value.
      int64_t raw = currency().raw(), q = raw / Currency::kScale, r = raw % Currency::kScale;
      int64_t twice = (r < 0 ? -r : r) * 2;
      if (twice > Currency::kScale || (twice == Currency::kScale && q % 2 != 0)) q += raw < 0 ? -1 : 1;
      if (q > std::numeric_limits<int32_t>::max() || q < std::numeric_limits<int32_t>::min()) Overflow();
      return static_cast<int32_t>(q);
    }
    default:
      return RoundToLong(ToDouble());
  }
}

bool Variant::ToBool() const {
  switch (kind()) {
    case Kind::kEmpty:
      return false;
    case Kind::kNull:
      InvalidUseOfNull();
    case Kind::kBoolean:
      return boolean();
    case Kind::kString: {
      const std::string& t = text();
      std::string trimmed;
      size_t b = t.find_first_not_of(' '), e = t.find_last_not_of(' ');
      if (b != std::string::npos) trimmed = t.substr(b, e - b + 1);
      std::string upper;
      for (char c : trimmed) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
      if (upper == "TRUE") return true;
      if (upper == "FALSE") return false;
      auto v = ParseNumericText(t);
      if (!v) TypeMismatch();
      return *v != 0;
    }
    case Kind::kObject:
      TypeMismatch();
    default:
      return ToDouble() != 0;
  }
}

DateTime Variant::ToDate() const {
  switch (kind()) {
    case Kind::kNull:
      InvalidUseOfNull();
    case Kind::kDate:
      return date();
    case Kind::kString: {
      if (auto d = DateTime::Parse(text())) return *d;
      TypeMismatch();
    }
    case Kind::kObject:
      TypeMismatch();
    default: {
      double days = ToDouble();
      if (!std::isfinite(days) || std::fabs(days) > 3e6) Overflow();
      return DateTime::FromSeconds(static_cast<int64_t>(std::llround(days * kSecondsPerDay)));
    }
  }
}

}  // namespace ent
