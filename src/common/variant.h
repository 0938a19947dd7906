// A value of any type, as the shop database's tools hold them: empty (never assigned), null, true/false,
// whole numbers of 8/16/32/64 bits, single and double floats, decimal, currency, date, text, object.
// The To* conversions follow the standard conversions of the shop's tools (CStr, CDbl, CCur, CLng, CBool,
// CDate) in the en-US locale and raise Error 13 (type mismatch), 94 (invalid use of null) or 6
// (overflow) as it does.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>

#include "common/currency.h"
#include "common/date_time.h"

namespace ent {

// An exact decimal (SQL decimal/numeric) kept as its plain text and scale.
struct Decimal {
  std::string text;  // "-12.3400"
  int scale = 0;
};

class Variant {
 public:
  enum class Kind {
    kEmpty,
    kNull,
    kBoolean,
    kByte,
    kInteger,
    kLong,
    kLongLong,
    kSingle,
    kDouble,
    kDecimal,
    kCurrency,
    kDate,
    kString,
    kObject
  };

  Variant() = default;  // empty
  Variant(bool b) : value_(b) {}
  Variant(int32_t v) : value_(v) {}
  Variant(double v) : value_(v) {}
  Variant(Currency c) : value_(c) {}
  Variant(DateTime d) : value_(d) {}
  Variant(std::string s) : value_(std::move(s)) {}
  Variant(const char* s) : value_(std::string(s)) {}

  static Variant Null();
  static Variant Byte(uint8_t v);
  static Variant Integer(int16_t v);
  static Variant Long(int32_t v) { return Variant(v); }
  static Variant LongLong(int64_t v);
  static Variant Single(float v);
  static Variant FromDecimal(Decimal d);
  static Variant Object(std::shared_ptr<void> object);

  Kind kind() const;
  bool IsEmpty() const { return kind() == Kind::kEmpty; }
  bool IsNull() const { return kind() == Kind::kNull; }
  bool IsString() const { return kind() == Kind::kString; }
  // Whole numbers, floats, decimal and currency.
  bool IsNumberKind() const;

  // Direct access to the held value; the kind must match.
  bool boolean() const { return std::get<bool>(value_); }
  int64_t whole() const;    // byte, integer, long, long long
  double floating() const;  // single or double
  const Decimal& decimal() const { return std::get<Decimal>(value_); }
  Currency currency() const { return std::get<Currency>(value_); }
  DateTime date() const { return std::get<DateTime>(value_); }
  const std::string& text() const { return std::get<std::string>(value_); }
  const std::shared_ptr<void>& object() const { return std::get<ObjectRef>(value_).ptr; }

  std::string ToText() const;   // CStr
  double ToDouble() const;      // CDbl
  Currency ToCurrency() const;  // CCur
  int32_t ToLong() const;       // CLng: halves to even
  bool ToBool() const;          // CBool
  DateTime ToDate() const;      // CDate

 private:
  struct NullTag {
    bool operator==(const NullTag&) const = default;
  };
  struct ObjectRef {
    std::shared_ptr<void> ptr;
  };
  struct Small {
    Kind kind;
    int64_t value;
  };
  using Storage = std::variant<std::monostate, NullTag, bool, Small, int32_t, int64_t, float, double, Decimal,
                               Currency, DateTime, std::string, ObjectRef>;
  explicit Variant(Storage s) : value_(std::move(s)) {}

  Storage value_;
};

}  // namespace ent
