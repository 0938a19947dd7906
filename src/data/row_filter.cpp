#include "data/row_filter.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <optional>
#include <string>
#include <unordered_set>
#include <utility>

#include "common/error.h"
#include "common/numeric_text.h"

namespace ent {

namespace {

// Parentheses nest at most this deep; the parser and the matcher recurse once per level.
constexpr int kMaxNesting = 200;
// An AND of at least this many "<>" tests on one column is matched with a hash set.
constexpr size_t kExclusionGroup = 4;

[[noreturn]] void BadArguments() {
  throw Error(
      err::kBadArguments,
      "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.",
      "Recordset");
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

std::string Folded(std::string_view s) {
  std::string f(s);
  for (char& c : f) c = Lower(c);
  return f;
}

bool SameFolded(std::string_view a, std::string_view folded) {
  if (a.size() != folded.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Lower(a[i]) != folded[i]) return false;
  return true;
}

// Three-way comparison of a text with an already folded text, without regard to case.
int CompareFolded(std::string_view a, std::string_view folded) {
  size_t n = std::min(a.size(), folded.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = static_cast<unsigned char>(Lower(a[i])), y = static_cast<unsigned char>(folded[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == folded.size() ? 0 : (a.size() < folded.size() ? -1 : 1);
}

size_t FindFolded(std::string_view hay, std::string_view folded) {
  if (folded.size() > hay.size()) return std::string_view::npos;
  for (size_t i = 0; i + folded.size() <= hay.size(); ++i)
    if (SameFolded(hay.substr(i, folded.size()), folded)) return i;
  return std::string_view::npos;
}

// ---- Tokens ----

enum class Tok {
  kEnd,
  kName,
  kNumber,
  kString,
  kDate,
  kLParen,
  kRParen,
  kCompare,
  kAnd,
  kOr,
  kLike,
  kNull,
  kTrue,
  kFalse
};
enum class Op { kEq, kNe, kLt, kGt, kLe, kGe, kLike };

struct Keyword {
  std::string_view word;  // lower case
  Tok kind;
};
constexpr Keyword kKeywords[] = {{"and", Tok::kAnd},   {"or", Tok::kOr},     {"like", Tok::kLike},
                                 {"null", Tok::kNull}, {"true", Tok::kTrue}, {"false", Tok::kFalse}};

struct Token {
  Tok kind = Tok::kEnd;
  std::string text;  // name, literal text (quotes removed), number as written without '$'
  Op op = Op::kEq;
};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool EndsWord(char c) {
  return IsBlank(c) || c == '(' || c == ')' || c == '[' || c == ']' || c == '\'' || c == '#' || c == '<' ||
         c == '>' || c == '=';
}

// Reads the criteria a token at a time; the parser looks one token ahead.
class Lexer {
 public:
  explicit Lexer(std::string_view s) : s_(s) {}

  // The next token; kEnd once the text is used up.
  Token Next() {
    while (i_ < s_.size() && IsBlank(s_[i_])) ++i_;
    Token t;
    if (i_ >= s_.size()) return t;
    const char c = s_[i_];
    if (c == '(' || c == ')') {
      t.kind = c == '(' ? Tok::kLParen : Tok::kRParen;
      ++i_;
    } else if (c == '[') {
      t.kind = Tok::kName;
      t.text = Delimited(']', false);
      if (t.text.empty()) BadArguments();
    } else if (c == '\'') {
      t.kind = Tok::kString;
      t.text = Delimited('\'', true);
    } else if (c == '#') {
      t.kind = Tok::kDate;
      t.text = Delimited('#', false);
    } else if (c == '<' || c == '>' || c == '=') {
      t.kind = Tok::kCompare;
      std::string_view two = s_.substr(i_, 2);
      if (two == "<>") {
        t.op = Op::kNe;
      } else if (two == "<=") {
        t.op = Op::kLe;
      } else if (two == ">=") {
        t.op = Op::kGe;
      } else {
        two = two.substr(0, 1);
        t.op = c == '<' ? Op::kLt : c == '>' ? Op::kGt : Op::kEq;
      }
      i_ += two.size();
    } else if (IsDigit(c) || c == '.' || c == '-' || c == '+' || c == '$') {
      t.kind = Tok::kNumber;
      t.text = Number();
    } else {
      const size_t start = i_;
      while (i_ < s_.size() && !EndsWord(s_[i_])) ++i_;
      t.text = std::string(s_.substr(start, i_ - start));
      t.kind = Tok::kName;
      for (const Keyword& k : kKeywords)
        if (t.text.size() == k.word.size() && SameFolded(t.text, k.word)) t.kind = k.kind;
      if (t.kind == Tok::kLike) t.op = Op::kLike;
    }
    return t;
  }

 private:
  // Reads up to `close`; a doubled `close` (only for quotes) stands for itself.
  std::string Delimited(char close, bool doubling) {
    std::string text;
    for (++i_;; ++i_) {
      if (i_ >= s_.size()) BadArguments();
      if (s_[i_] != close) {
        text += s_[i_];
      } else if (doubling && i_ + 1 < s_.size() && s_[i_ + 1] == close) {
        text += close;
        ++i_;
      } else {
        ++i_;
        return text;
      }
    }
  }

  // [sign][$]digits[.digits][E[sign]digits], as written without the '$'.
  std::string Number() {
    std::string text;
    const auto take_digits = [&] {
      size_t n = 0;
      for (; i_ < s_.size() && IsDigit(s_[i_]); ++i_, ++n) text += s_[i_];
      return n;
    };
    if (s_[i_] == '-' || s_[i_] == '+') text += s_[i_++];
    if (i_ < s_.size() && s_[i_] == '$') ++i_;
    size_t digits = take_digits();
    if (i_ < s_.size() && s_[i_] == '.') {
      text += s_[i_++];
      digits += take_digits();
    }
    if (digits == 0) BadArguments();
    if (i_ < s_.size() && (s_[i_] == 'e' || s_[i_] == 'E')) {
      text += s_[i_++];
      if (i_ < s_.size() && (s_[i_] == '-' || s_[i_] == '+')) text += s_[i_++];
      if (take_digits() == 0) BadArguments();
    }
    if (i_ < s_.size() && !EndsWord(s_[i_])) BadArguments();
    return text;
  }

  std::string_view s_;
  size_t i_ = 0;
};

// ---- Comparisons ----

// How a column's cells are compared: numbers in the column's own precision, dates by instant, text
// without regard to case.
enum class Class { kText, kWhole, kDouble, kSingle, kNumeric, kCurrency, kBoolean, kDate };

Class ClassOf(DataType type) {
  switch (type) {
    case DataType::kTinyInt:
    case DataType::kSmallInt:
    case DataType::kInteger:
    case DataType::kBigInt:
      return Class::kWhole;
    case DataType::kDouble:
      return Class::kDouble;
    case DataType::kSingle:
      return Class::kSingle;
    case DataType::kNumeric:
      return Class::kNumeric;
    case DataType::kCurrency:
      return Class::kCurrency;
    case DataType::kBoolean:
      return Class::kBoolean;
    case DataType::kDateTime:
      return Class::kDate;
    default:
      return Class::kText;
  }
}

// A cell or literal reduced to what its class compares: a number (dates as seconds, currency in
// ten-thousandths, booleans 1/0) or, where the value has no such reading, its text.
struct Key {
  enum Tag { kNull, kNumber, kText } tag = kNull;
  long double number = 0;

  std::string_view text() const { return owned_ ? std::string_view(storage_) : view_; }

  static Key Number(long double n) {
    Key k;
    k.tag = kNumber;
    k.number = n;
    return k;
  }
  static Key Text(std::string s) {
    Key k;
    k.tag = kText;
    k.storage_ = std::move(s);
    k.owned_ = true;
    return k;
  }
  static Key View(std::string_view s) {
    Key k;
    k.tag = kText;
    k.view_ = s;
    return k;
  }

 private:
  std::string_view view_;
  std::string storage_;  // the text, when it had to be made
  bool owned_ = false;
};

// A number in the precision of the class (the same rounding for cells and literals, so that equal
// values meet); currency in ten-thousandths. Nothing when it is out of the class's range.
std::optional<long double> InClass(Class cls, long double exact, std::string_view plain) {
  switch (cls) {
    case Class::kDouble:
    case Class::kNumeric:
      return static_cast<double>(exact);
    case Class::kSingle:
      return static_cast<float>(exact);
    case Class::kBoolean:
      return exact != 0 ? 1 : 0;
    case Class::kCurrency:
      try {
        if (!plain.empty() && plain.find_first_of("eE") == std::string_view::npos)
          return static_cast<long double>(Currency::FromDecimalText(plain).raw());
        return static_cast<long double>(Currency::FromDouble(static_cast<double>(exact)).raw());
      } catch (const Error&) {
        return std::nullopt;
      }
    default:
      return exact;
  }
}

// Plain decimal text of a numeric text in the locale's reading ("1,234.5" -> "1234.5").
std::optional<std::string> PlainNumber(std::string_view text) {
  return NumericTextToDecimal(text);
}

Key NumberKey(Class cls, const Variant& v) {
  using K = Variant::Kind;
  std::optional<long double> n;
  switch (v.kind()) {
    case K::kBoolean:
      n = cls == Class::kBoolean ? (v.boolean() ? 1 : 0) : (v.boolean() ? -1 : 0);
      break;
    case K::kByte:
    case K::kInteger:
    case K::kLong:
    case K::kLongLong:
      n = cls == Class::kCurrency ? static_cast<long double>(v.whole()) * Currency::kScale
                                  : InClass(cls, static_cast<long double>(v.whole()), {});
      break;
    case K::kSingle:
    case K::kDouble:
      n = InClass(cls, v.floating(), {});
      break;
    case K::kCurrency:
      n = cls == Class::kCurrency
              ? static_cast<long double>(v.currency().raw())
              : InClass(cls, static_cast<long double>(v.currency().raw()) / Currency::kScale,
                        v.currency().ToString());
      break;
    case K::kDecimal:
      n = InClass(cls, std::strtold(v.decimal().text.c_str(), nullptr), v.decimal().text);
      break;
    case K::kString:
      if (auto plain = PlainNumber(v.text())) {
        n = InClass(cls, std::strtold(plain->c_str(), nullptr), *plain);
      } else if (cls == Class::kBoolean) {
        if (SameFolded(v.text(), "true")) n = 1;
        if (SameFolded(v.text(), "false")) n = 0;
      }
      break;
    default:
      break;
  }
  if (n) return Key::Number(*n);
  if (v.IsString()) return Key::View(v.text());
  try {
    return Key::Text(v.ToText());
  } catch (const Error&) {
    return Key::Text({});
  }
}

Key DateKey(const Variant& v) {
  using K = Variant::Kind;
  if (v.kind() == K::kDate) return Key::Number(static_cast<long double>(v.date().seconds()));
  if (v.IsString()) {
    if (auto d = DateTime::Parse(v.text())) return Key::Number(static_cast<long double>(d->seconds()));
    return Key::View(v.text());
  }
  try {
    if (v.IsNumberKind()) return Key::Number(static_cast<long double>(v.ToDate().seconds()));
    return Key::Text(v.ToText());
  } catch (const Error&) {
    return Key::Text({});
  }
}

// Text of a cell as LIKE and text columns see it.
Key TextKey(const Variant& v) {
  if (v.IsString()) return Key::View(v.text());
  try {
    return Key::Text(v.ToText());
  } catch (const Error&) {
    return Key::Text({});
  }
}

// How a condition reads its column's cells: in the column's class, in that class but with numeric
// cells of a text column read as numbers (a bare number literal against text), or as text (LIKE).
// Each distinct reading is made once per row, however many conditions share it.
struct Reading {
  enum Mode { kClass, kNumbersOnText, kText };
  size_t field = 0;
  Class cls = Class::kText;
  Mode mode = kClass;

  bool operator==(const Reading&) const = default;

  Key Read(const Variant& v) const {
    if (v.IsNull() || v.IsEmpty()) return Key{};
    if (mode == kText) return TextKey(v);
    switch (cls) {
      case Class::kText:
        if (mode == kNumbersOnText && (v.IsNumberKind() || v.IsString())) {
          Key k = NumberKey(Class::kDouble, v);
          if (k.tag == Key::kNumber) return k;
        }
        return TextKey(v);
      case Class::kDate:
        return DateKey(v);
      default:
        return NumberKey(cls, v);
    }
  }
};

// One "Field op value" test.
struct Condition {
  size_t field = 0;
  Class cls = Class::kText;
  Op op = Op::kEq;
  size_t reading = 0;            // index of the filter's reading of the cell
  bool null_test = false;        // "= NULL" / "<> NULL"
  bool numbers_on_text = false;  // a bare number against a text column: numeric cells compare as numbers
  bool has_number = false;
  long double number = 0;                         // the literal in the class's terms
  std::string text;                               // the literal as text, folded
  bool like_prefix = false, like_suffix = false;  // LIKE: a wildcard at the start / end

  Reading::Mode mode() const {
    if (op == Op::kLike) return Reading::kText;
    return numbers_on_text ? Reading::kNumbersOnText : Reading::kClass;
  }

  bool Like(std::string_view cell) const {
    if (like_prefix && like_suffix) return FindFolded(cell, text) != std::string_view::npos;
    if (cell.size() < text.size()) return false;
    if (like_prefix) return SameFolded(cell.substr(cell.size() - text.size()), text);
    if (like_suffix) return SameFolded(cell.substr(0, text.size()), text);
    return SameFolded(cell, text);
  }

  bool Test(const Key& k) const {
    if (null_test) return (k.tag == Key::kNull) == (op == Op::kEq);
    if (k.tag == Key::kNull) return false;
    if (op == Op::kLike) return Like(k.text());
    int cmp;
    if (k.tag == Key::kNumber) {
      if (k.number < number)
        cmp = -1;
      else if (k.number > number)
        cmp = 1;
      else if (k.number == number)
        cmp = 0;
      else
        return op == Op::kNe;  // NaN: unordered
    } else {
      cmp = CompareFolded(k.text(), text);
    }
    switch (op) {
      case Op::kEq:
        return cmp == 0;
      case Op::kNe:
        return cmp != 0;
      case Op::kLt:
        return cmp < 0;
      case Op::kGt:
        return cmp > 0;
      case Op::kLe:
        return cmp <= 0;
      case Op::kGe:
        return cmp >= 0;
      case Op::kLike:
        break;
    }
    return false;
  }
};

// Many "column <> value" tests joined by AND (the exclusion lists reports build): the cell must be
// present and equal to none of the values.
struct Exclusion {
  size_t reading = 0;
  std::unordered_set<long double> numbers;
  std::unordered_set<std::string> texts;  // folded

  bool Test(const Key& k) const {
    if (k.tag == Key::kNull) return false;
    if (k.tag == Key::kNumber) return k.number == k.number ? !numbers.count(k.number) : true;
    return !texts.count(Folded(k.text()));
  }
};

struct Node {
  enum Kind { kAnd, kOr, kCondition, kExclusion } kind = kCondition;
  std::vector<Node> children;
  size_t index = 0;  // into the filter's conditions or exclusions
};

class CriteriaFilter : public RowFilter {
 public:
  CriteriaFilter(std::string_view criteria, const std::vector<Field>& fields) : fields_(&fields) {
    Lexer lexer(criteria);
    lexer_ = &lexer;
    ahead_ = lexer.Next();
    root_ = ParseOr(0);
    if (ahead_.kind != Tok::kEnd) BadArguments();
    lexer_ = nullptr;
    fields_ = nullptr;
  }

  bool Matches(const std::vector<Variant>& row) const override {
    std::vector<std::optional<Key>> keys(readings_.size());
    return Eval(root_, row, keys);
  }

 private:
  Token Next() {
    Token t = std::move(ahead_);
    ahead_ = lexer_->Next();
    return t;
  }
  Tok Peek() const { return ahead_.kind; }

  Node ParseOr(int depth) {
    Node node;
    node.kind = Node::kOr;
    node.children.push_back(ParseAnd(depth));
    while (Peek() == Tok::kOr) {
      Next();
      node.children.push_back(ParseAnd(depth));
    }
    return node.children.size() == 1 ? std::move(node.children[0]) : std::move(node);
  }

  Node ParseAnd(int depth) {
    Node node;
    node.kind = Node::kAnd;
    node.children.push_back(ParseFactor(depth));
    while (Peek() == Tok::kAnd) {
      Next();
      node.children.push_back(ParseFactor(depth));
    }
    GroupExclusions(node);
    return node.children.size() == 1 ? std::move(node.children[0]) : std::move(node);
  }

  Node ParseFactor(int depth) {
    if (Peek() == Tok::kLParen) {
      if (depth >= kMaxNesting) BadArguments();
      Next();
      Node inner = ParseOr(depth + 1);
      if (Next().kind != Tok::kRParen) BadArguments();
      return inner;
    }
    Node leaf;
    leaf.kind = Node::kCondition;
    leaf.index = conditions_.size();
    Condition c = ParseComparison();
    c.reading = ReadingIndex(Reading{c.field, c.cls, c.mode()});
    conditions_.push_back(std::move(c));
    return leaf;
  }

  size_t ReadingIndex(const Reading& r) {
    for (size_t i = 0; i < readings_.size(); ++i)
      if (readings_[i] == r) return i;
    readings_.push_back(r);
    return readings_.size() - 1;
  }

  size_t FieldIndex(std::string_view name) const {
    const std::vector<Field>& fields = *fields_;
    for (size_t i = 0; i < fields.size(); ++i)
      if (fields[i].name.size() == name.size() && SameFolded(name, Folded(fields[i].name))) return i;
    BadArguments();
  }

  Condition ParseComparison() {
    const Token name = Next();
    if (name.kind != Tok::kName) BadArguments();
    Condition c;
    c.field = FieldIndex(name.text);
    c.cls = ClassOf((*fields_)[c.field].type);
    const Token op = Next();
    if (op.kind != Tok::kCompare && op.kind != Tok::kLike) BadArguments();
    c.op = op.op;
    const Token value = Next();
    switch (value.kind) {
      case Tok::kNull:
        if (c.op != Op::kEq && c.op != Op::kNe) BadArguments();
        c.null_test = true;
        return c;
      case Tok::kNumber:
      case Tok::kString:
      case Tok::kDate:
      case Tok::kTrue:
      case Tok::kFalse:
        break;
      default:
        BadArguments();
    }
    c.text = Folded(value.text);
    if (c.op == Op::kLike) {
      if (value.kind != Tok::kString && value.kind != Tok::kNumber) BadArguments();
      const auto wildcard = [](char ch) { return ch == '*' || ch == '%'; };
      c.like_prefix = !c.text.empty() && wildcard(c.text.front());
      if (c.like_prefix) c.text.erase(0, 1);
      c.like_suffix = !c.text.empty() && wildcard(c.text.back());
      if (c.like_suffix) c.text.pop_back();
      for (char ch : c.text)
        if (wildcard(ch)) BadArguments();
      return c;
    }
    SetLiteralNumber(c, value);
    return c;
  }

  // The literal in the column's terms; a literal the column cannot hold is an error.
  static void SetLiteralNumber(Condition& c, const Token& value) {
    const bool boolean_word = value.kind == Tok::kTrue || value.kind == Tok::kFalse;
    std::optional<long double> n;
    switch (c.cls) {
      case Class::kText:
        if (value.kind == Tok::kNumber) {
          c.numbers_on_text = true;
          n = static_cast<double>(std::strtold(value.text.c_str(), nullptr));
        }
        break;
      case Class::kDate: {
        std::optional<DateTime> d;
        if (value.kind == Tok::kDate || value.kind == Tok::kString) {
          d = DateTime::Parse(value.text);
        } else if (value.kind == Tok::kNumber) {
          try {
            d = Variant(std::strtod(value.text.c_str(), nullptr)).ToDate();
          } catch (const Error&) {
          }
        }
        if (!d) BadArguments();
        n = static_cast<long double>(d->seconds());
        break;
      }
      default: {
        if (value.kind == Tok::kDate) BadArguments();
        if (boolean_word) {
          bool t = value.kind == Tok::kTrue;
          n = c.cls == Class::kBoolean ? (t ? 1 : 0) : (t ? -1 : 0);
          if (c.cls == Class::kCurrency) *n *= Currency::kScale;
          break;
        }
        Key k = NumberKey(c.cls, Variant(value.text));
        if (k.tag != Key::kNumber) BadArguments();
        n = k.number;
      }
    }
    c.has_number = n.has_value();
    c.number = n.value_or(0);
  }

  // Gathers the AND node's "<>" tests per column into hash-set exclusions.
  void GroupExclusions(Node& node) {
    std::map<size_t, std::vector<size_t>> groups;  // reading -> children
    for (size_t i = 0; i < node.children.size(); ++i) {
      const Node& child = node.children[i];
      if (child.kind != Node::kCondition) continue;
      const Condition& c = conditions_[child.index];
      if (c.op == Op::kNe && !c.null_test) groups[c.reading].push_back(i);
    }
    std::vector<bool> drop(node.children.size(), false);
    std::vector<Node> grouped;
    for (const auto& [reading, members] : groups) {
      if (members.size() < kExclusionGroup) continue;
      Exclusion e;
      e.reading = reading;
      e.numbers.reserve(members.size());
      e.texts.reserve(members.size());
      for (size_t i : members) {
        const Condition& c = conditions_[node.children[i].index];
        if (c.has_number) e.numbers.insert(c.number);
        e.texts.insert(c.text);
        drop[i] = true;
      }
      Node n;
      n.kind = Node::kExclusion;
      n.index = exclusions_.size();
      exclusions_.push_back(std::move(e));
      grouped.push_back(std::move(n));
    }
    if (grouped.empty()) return;
    for (size_t i = 0; i < node.children.size(); ++i)
      if (!drop[i]) grouped.push_back(std::move(node.children[i]));
    node.children = std::move(grouped);
  }

  using KeyCache = std::vector<std::optional<Key>>;

  bool Eval(const Node& node, const std::vector<Variant>& row, KeyCache& keys) const {
    switch (node.kind) {
      case Node::kAnd:
        for (const Node& child : node.children)
          if (!Eval(child, row, keys)) return false;
        return true;
      case Node::kOr:
        for (const Node& child : node.children)
          if (Eval(child, row, keys)) return true;
        return false;
      case Node::kCondition: {
        const Condition& c = conditions_[node.index];
        return c.Test(CellKey(c.reading, row, keys));
      }
      case Node::kExclusion: {
        const Exclusion& e = exclusions_[node.index];
        return e.Test(CellKey(e.reading, row, keys));
      }
    }
    return false;
  }

  const Key& CellKey(size_t reading, const std::vector<Variant>& row, KeyCache& keys) const {
    std::optional<Key>& key = keys[reading];
    if (!key) {
      const Reading& r = readings_[reading];
      key = r.field < row.size() ? r.Read(row[r.field]) : Key{};
    }
    return *key;
  }

  const std::vector<Field>* fields_;  // while parsing
  Lexer* lexer_ = nullptr;            // while parsing
  Token ahead_;                       // the next token, while parsing
  std::vector<Reading> readings_;
  std::vector<Condition> conditions_;
  std::vector<Exclusion> exclusions_;
  Node root_;
};

}  // namespace

std::unique_ptr<RowFilter> RowFilter::Parse(std::string_view criteria, const std::vector<Field>& fields) {
  return std::make_unique<CriteriaFilter>(criteria, fields);
}

}  // namespace ent
