#include "data/rowset_xml.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_set>

#include "common/error.h"

namespace ent {

namespace {

constexpr std::string_view kHeader =
    "<xml xmlns:s='uuid:BDC6E3F0-6DA3-11d1-A2A3-00AA00C14882'\r\n"
    "\txmlns:dt='uuid:C2F41010-65B3-11d1-A29F-00AA00C14882'\r\n"
    "\txmlns:rs='urn:schemas-microsoft-com:rowset'\r\n"
    "\txmlns:z='#RowsetSchema'>\r\n"
    "<s:Schema id='RowsetSchema'>\r\n";
constexpr std::string_view kSchemaEnd =
    "\t\t<s:extends type='rs:rowbase'/>\r\n"
    "\t</s:ElementType>\r\n"
    "</s:Schema>\r\n"
    "<rs:data>\r\n";
constexpr std::string_view kFooter = "</rs:data>\r\n</xml>";

// A start tag wraps before an attribute once its line holds this many bytes.
constexpr int kWrapLimit = 109;
constexpr size_t kFlushSize = 64 * 1024;

// Windows-1252 for the bytes 0x80..0x9F; the five unassigned bytes keep their C1 code points.
constexpr char32_t kCp1252High[32] = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                      0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                      0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                      0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out += static_cast<char>(cp);
  } else if (cp < 0x800) {
    out += static_cast<char>(0xC0 | (cp >> 6));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  } else {
    out += static_cast<char>(0xE0 | (cp >> 12));
    out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (cp & 0x3F));
  }
}

// Length of the well-formed UTF-8 sequence at s[i] (no overlong forms, no surrogates, at most
// U+10FFFF), or 0. `cp` receives the code point.
size_t Utf8Sequence(std::string_view s, size_t i, char32_t& cp) {
  const auto byte = [&](size_t k) { return static_cast<unsigned char>(s[k]); };
  unsigned char b0 = byte(i);
  // Lead byte: sequence length, payload bits, smallest code point of that length.
  size_t len = b0 >= 0xC2 && b0 <= 0xDF ? 2 : b0 >= 0xE0 && b0 <= 0xEF ? 3 : b0 >= 0xF0 && b0 <= 0xF4 ? 4 : 0;
  if (len == 0) return 0;
  static constexpr char32_t kMin[] = {0, 0, 0x80, 0x800, 0x10000};
  cp = b0 & (0x7F >> len);
  const char32_t min = kMin[len];
  if (i + len > s.size()) return 0;
  for (size_t k = 1; k < len; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return len;
}

bool IsPlainByte(unsigned char c) {
  return c >= 0x20 && c < 0x80 && c != '&' && c != '<' && c != '>' && c != '\'' && c != '"';
}

// Text for a single-quoted attribute, escaped as the format does: & < > ' " as hexadecimal
// character references, everything else as it stands, TAB/CR/LF included. Characters XML cannot
// carry at all are handled so that the document stays readable: other control characters below
// 0x20 and U+FFFE/U+FFFF are dropped; a byte that is not part of well-formed UTF-8 is taken as
// Windows-1252, the shop machines' code page, and written as UTF-8.
void AppendEscaped(std::string& out, std::string_view s) {
  for (size_t i = 0; i < s.size();) {
    size_t run = i;
    while (run < s.size() && IsPlainByte(static_cast<unsigned char>(s[run]))) ++run;
    if (run > i) {
      out.append(s.data() + i, run - i);
      i = run;
      continue;
    }
    unsigned char c = static_cast<unsigned char>(s[i]);
    if (c < 0x80) {
      switch (c) {
        case '&':
          out += "&#x26;";
          break;
        case '<':
          out += "&#x3c;";
          break;
        case '>':
          out += "&#x3e;";
          break;
        case '\'':
          out += "&#x27;";
          break;
        case '"':
          out += "&#x22;";
          break;
        default:  // control characters
          if (c == '\t' || c == '\r' || c == '\n') out += static_cast<char>(c);
      }
      ++i;
      continue;
    }
    char32_t cp;
    if (size_t len = Utf8Sequence(s, i, cp)) {
      if (cp != 0xFFFE && cp != 0xFFFF) out.append(s.substr(i, len));
      i += len;
    } else {
      AppendUtf8(out, c < 0xA0 ? kCp1252High[c - 0x80] : static_cast<char32_t>(c));
      ++i;
    }
  }
}

template <typename T>
void AppendNumber(std::string& out, T value) {
  char buf[24];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  out.append(buf, r.ptr);
}

// C's "%.<digits>G": at most `digits` significant digits, trailing zeros dropped, exponent form
// (upper-case, sign, at least two digits) below 1E-4 and from 1E<digits> on.
void AppendGeneral(std::string& out, double value, int digits) {
  char buf[64];
  auto r = std::to_chars(buf, buf + sizeof buf, value, std::chars_format::general, digits);
  for (char* p = buf; p != r.ptr; ++p)
    if (*p >= 'a' && *p <= 'z') *p = static_cast<char>(*p - 'a' + 'A');
  out.append(buf, r.ptr);
}

// [-+]digits[.digits] with at least one digit.
bool IsPlainDecimal(std::string_view text) {
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  bool point = false, digit = false;
  for (char c : text) {
    if (c == '.' && !point) {
      point = true;
    } else if (c >= '0' && c <= '9') {
      digit = true;
    } else {
      return false;
    }
  }
  return digit;
}

// A plain decimal text ("-12.3", "5", ".5") with exactly `scale` fraction digits (rounding the
// dropped digits half away from zero) and no zero before the point: ".0100", "-1.50", "0" at scale 0.
void AppendScaled(std::string& out, std::string_view text, int scale) {
  scale = std::max(scale, 0);
  if (!IsPlainDecimal(text)) return AppendEscaped(out, text);
  bool negative = !text.empty() && text[0] == '-';
  if (!text.empty() && (text[0] == '-' || text[0] == '+')) text.remove_prefix(1);
  size_t point = text.find('.');
  std::string_view whole = text.substr(0, point);
  std::string_view fraction = point == std::string_view::npos ? std::string_view() : text.substr(point + 1);
  std::string digits(whole);
  for (int k = 0; k < scale; ++k) digits += static_cast<size_t>(k) < fraction.size() ? fraction[k] : '0';
  if (fraction.size() > static_cast<size_t>(scale) && fraction[scale] >= '5') {
    size_t k = digits.size();
    while (k > 0 && digits[k - 1] == '9') digits[--k] = '0';
    if (k == 0)
      digits.insert(digits.begin(), '1');
    else
      ++digits[k - 1];
  }
  size_t whole_len = digits.size() - static_cast<size_t>(scale);
  size_t lead = 0;
  while (lead < whole_len && digits[lead] == '0') ++lead;
  if (negative && digits.find_first_not_of('0') != std::string::npos) out += '-';
  if (lead == whole_len && scale == 0) {
    out += '0';
    return;
  }
  out.append(digits, lead, whole_len - lead);
  if (scale > 0) {
    out += '.';
    out.append(digits, whole_len, std::string::npos);
  }
}

void AppendTwoDigits(std::string& out, int v) {
  out += static_cast<char>('0' + v / 10);
  out += static_cast<char>('0' + v % 10);
}

// yyyy-mm-ddThh:mm:ss
void AppendIsoDate(std::string& out, DateTime d) {
  int year = d.year();
  if (year < 0) {
    out += '-';
    year = -year;
  }
  if (year < 1000) out.append(year < 10 ? 3 : year < 100 ? 2 : 1, '0');
  AppendNumber(out, year);
  out += '-';
  AppendTwoDigits(out, d.month());
  out += '-';
  AppendTwoDigits(out, d.day());
  out += 'T';
  AppendTwoDigits(out, d.hour());
  out += ':';
  AppendTwoDigits(out, d.minute());
  out += ':';
  AppendTwoDigits(out, d.second());
}

// A value of a numeric column: exactly the column's scale.
void AppendNumericColumnValue(std::string& out, const Variant& v, int scale) {
  char buf[400];
  switch (v.kind()) {
    case Variant::Kind::kDecimal:
      AppendScaled(out, v.decimal().text, scale);
      return;
    case Variant::Kind::kCurrency:
      AppendScaled(out, v.currency().ToString(), scale);
      return;
    case Variant::Kind::kSingle:
    case Variant::Kind::kDouble: {
      auto r = std::to_chars(buf, buf + sizeof buf, v.floating(), std::chars_format::fixed, scale);
      if (r.ec == std::errc()) {
        AppendScaled(out, std::string_view(buf, static_cast<size_t>(r.ptr - buf)), scale);
      } else {
        AppendGeneral(out, v.floating(), 17);
      }
      return;
    }
    default: {  // whole numbers
      auto r = std::to_chars(buf, buf + sizeof buf, v.whole());
      AppendScaled(out, std::string_view(buf, static_cast<size_t>(r.ptr - buf)), scale);
    }
  }
}

// The attribute text of a non-null value. The column's type decides only for numeric columns,
// whose values carry the column's scale; every other value is written by its own kind.
void AppendValue(std::string& out, const Field& field, const Variant& v) {
  switch (v.kind()) {
    case Variant::Kind::kBoolean:
      out += v.boolean() ? "True" : "False";
      return;
    case Variant::Kind::kString:
      AppendEscaped(out, v.text());
      return;
    case Variant::Kind::kDate:
      AppendIsoDate(out, v.date());
      return;
    case Variant::Kind::kObject:
      throw Error(err::kTypeMismatch, "Type mismatch");
    case Variant::Kind::kEmpty:
    case Variant::Kind::kNull:
      return;
    default:
      break;
  }
  if (field.type == DataType::kNumeric) return AppendNumericColumnValue(out, v, field.scale);
  switch (v.kind()) {
    case Variant::Kind::kSingle:
      AppendGeneral(out, v.floating(), 8);
      return;
    case Variant::Kind::kDouble:
      AppendGeneral(out, v.floating(), 17);
      return;
    case Variant::Kind::kDecimal:
      AppendEscaped(out, v.decimal().text);
      return;
    case Variant::Kind::kCurrency: {
      // Plain, at most four decimals, no trailing zeros.
      int64_t raw = v.currency().raw();
      uint64_t magnitude = raw < 0 ? 0 - static_cast<uint64_t>(raw) : static_cast<uint64_t>(raw);
      if (raw < 0) out += '-';
      AppendNumber(out, magnitude / Currency::kScale);
      if (int fraction = static_cast<int>(magnitude % Currency::kScale)) {
        char digits[5] = {
            '.', static_cast<char>('0' + fraction / 1000), static_cast<char>('0' + fraction / 100 % 10),
            static_cast<char>('0' + fraction / 10 % 10), static_cast<char>('0' + fraction % 10)};
        size_t len = 5;
        while (digits[len - 1] == '0') --len;
        out.append(digits, len);
      }
      return;
    }
    default:
      AppendNumber(out, v.whole());
      return;
  }
}

bool IsPlainName(std::string_view name) {
  if (name.empty()) return false;
  const auto letter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; };
  if (!letter(name[0])) return false;
  for (char c : name)
    if (!letter(c) && !(c >= '0' && c <= '9')) return false;
  return true;
}

std::string Folded(std::string_view name) {
  std::string f(name);
  for (char& c : f)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return f;
}

// The attribute name each field is written under: its own name when that is a plain name not used
// before (without regard to case), otherwise c<index>.
std::vector<std::string> XmlNames(const std::vector<Field>& fields) {
  std::vector<std::string> names;
  std::unordered_set<std::string> used;
  for (size_t i = 0; i < fields.size(); ++i) {
    const std::string& name = fields[i].name;
    if (IsPlainName(name) && used.insert(Folded(name)).second) {
      names.push_back(name);
      continue;
    }
    std::string alias = "c" + std::to_string(i);
    // A field really named like the alias came first: add a suffix until the name is free.
    for (int k = 1; !used.insert(Folded(alias)).second; ++k)
      alias = "c" + std::to_string(i) + "_" + std::to_string(k);
    names.push_back(std::move(alias));
  }
  return names;
}

// The s:datatype attributes of one field, in the format's order.
struct TypeInfo {
  std::string_view dt_type;
  std::string_view db_type;  // empty: none
  int64_t max_length = 0;
  std::optional<int> scale;
  std::optional<int> precision;
  bool fixed_length = false;
  bool is_long = false;
};

// Appended fields describe themselves as the rowset library describes fabricated fields (precision 0
// except for numeric); query columns as SQL Server reports its column types.
TypeInfo DescribeType(const Field& f) {
  const bool app = f.appended;
  const auto prec = [app](int query_precision) { return std::optional<int>(app ? 0 : query_precision); };
  const std::optional<int> text_prec = app ? std::optional<int>(0) : std::nullopt;
  switch (f.type) {
    case DataType::kChar:
      return {"string", "str", f.defined_size, {}, text_prec, true, false};
    case DataType::kVarChar:
      return {"string", "str", f.defined_size, {}, text_prec, false, false};
    case DataType::kWChar:
      return {"string", {}, f.defined_size, {}, text_prec, true, false};
    case DataType::kVarWChar:
      return {"string", {}, f.defined_size, {}, text_prec, false, false};
    case DataType::kLongVarChar:
      return {"string", "str", app ? f.defined_size : 2147483647, {}, text_prec, false, true};
    case DataType::kLongVarWChar:
      return {"string", {}, app ? f.defined_size : 1073741823, {}, text_prec, false, true};
    case DataType::kTinyInt:
      return {"ui1", {}, 1, {}, prec(3), true, false};
    case DataType::kSmallInt:
      return {"i2", {}, 2, {}, prec(5), true, false};
    case DataType::kInteger:
      return {"int", {}, 4, {}, prec(10), true, false};
    case DataType::kBigInt:
      return {"i8", {}, 8, {}, prec(19), true, false};
    case DataType::kBoolean:
      return {"boolean", {}, 2, {}, text_prec, true, false};
    // smallmoney is reported with precision 10, money with 19.
    case DataType::kCurrency:
      return {"number", "currency", 8, {}, prec(f.precision == 10 ? 10 : 19), true, false};
    case DataType::kDouble:
      return {"float", {}, 8, {}, prec(15), true, false};
    case DataType::kSingle:
      return {"r4", {}, 4, {}, prec(7), true, false};
    case DataType::kNumeric:
      return {"number", "numeric", 19, f.scale, f.precision, true, false};
    case DataType::kDateTime:
      if (app) return {"dateTime", "variantdate", 16, {}, 0, true, false};
      // smalldatetime is reported with precision 16 (whole minutes), datetime with 23.
      if (f.precision == 16) return {"dateTime", "timestamp", 16, 0, 16, true, false};
      return {"dateTime", "timestamp", 16, 3, 23, true, false};
    case DataType::kGuid:
      return {"uuid", {}, 16, {}, text_prec, true, false};
  }
  return {"string", {}, f.defined_size, {}, text_prec, false, false};
}

class Writer {
 public:
  explicit Writer(std::ostream& out) : out_(out) { buf_.reserve(kFlushSize * 2); }

  void Raw(std::string_view text) { buf_ += text; }

  // depth tabs, "<tag"; continuation lines get `cont` tabs.
  void StartTag(int depth, int cont, std::string_view tag) {
    buf_.append(static_cast<size_t>(depth), '\t');
    buf_ += '<';
    buf_ += tag;
    col_ = depth + 1 + static_cast<int>(tag.size()) + 1;
    cont_ = cont;
  }

  // An attribute whose value needs no escaping.
  void Attr(std::string_view name, std::string_view value) {
    size_t mark = BeginAttr(name);
    buf_ += value;
    EndAttr(mark);
  }
  void TextAttr(std::string_view name, std::string_view text) {
    size_t mark = BeginAttr(name);
    AppendEscaped(buf_, text);
    EndAttr(mark);
  }
  void NumberAttr(std::string_view name, int64_t value) {
    size_t mark = BeginAttr(name);
    AppendNumber(buf_, value);
    EndAttr(mark);
  }
  void ValueAttr(std::string_view name, const Field& field, const Variant& value) {
    size_t mark = BeginAttr(name);
    AppendValue(buf_, field, value);
    EndAttr(mark);
  }

  void EndEmptyTag() { buf_ += "/>\r\n"; }
  void EndTag() { buf_ += ">\r\n"; }

  void MaybeFlush() {
    if (buf_.size() >= kFlushSize) Flush();
  }
  void Flush() {
    out_.write(buf_.data(), static_cast<std::streamsize>(buf_.size()));
    buf_.clear();
    if (!out_) throw Error(err::kWriteFailed, "Write to file failed.");
  }

 private:
  size_t BeginAttr(std::string_view name) {
    if (col_ + 1 > kWrapLimit) {
      buf_ += "\r\n";
      buf_.append(static_cast<size_t>(cont_), '\t');
      col_ = 0;
    }
    size_t mark = buf_.size();
    buf_ += ' ';
    buf_ += name;
    buf_ += "='";
    return mark;
  }
  void EndAttr(size_t mark) {
    buf_ += '\'';
    col_ += static_cast<int>(buf_.size() - mark);
  }

  std::ostream& out_;
  std::string buf_;
  int col_ = 0;
  int cont_ = 0;
};

void WriteSchema(Writer& w, const std::vector<Field>& fields, const std::vector<std::string>& names) {
  w.Raw(kHeader);
  w.StartTag(1, 1, "s:ElementType");
  w.Attr("name", "row");
  w.Attr("content", "eltOnly");
  w.Attr("rs:updatable", "true");
  w.EndTag();
  for (size_t i = 0; i < fields.size(); ++i) {
    const Field& f = fields[i];
    w.StartTag(2, 3, "s:AttributeType");
    w.Attr("name", names[i]);
    if (names[i] != f.name) w.TextAttr("rs:name", f.name);
    w.NumberAttr("rs:number", static_cast<int64_t>(i + 1));
    if (f.may_be_null) w.Attr("rs:nullable", "true");
    if (f.appended) {
      w.Attr("rs:write", "true");
    } else {
      if (!f.base_column.empty()) w.Attr("rs:writeunknown", "true");
      if (!f.base_catalog.empty()) w.TextAttr("rs:basecatalog", f.base_catalog);
      if (!f.base_table.empty()) w.TextAttr("rs:basetable", f.base_table);
      if (!f.base_column.empty()) w.TextAttr("rs:basecolumn", f.base_column);
      if (f.key_column) w.Attr("rs:keycolumn", "true");
      if (f.autoincrement) w.Attr("rs:autoincrement", "true");
    }
    w.EndTag();

    TypeInfo t = DescribeType(f);
    w.StartTag(3, 3, "s:datatype");
    w.Attr("dt:type", t.dt_type);
    if (!t.db_type.empty()) w.Attr("rs:dbtype", t.db_type);
    w.NumberAttr("dt:maxLength", t.max_length);
    if (t.scale) w.NumberAttr("rs:scale", *t.scale);
    if (t.precision) w.NumberAttr("rs:precision", *t.precision);
    if (t.fixed_length) w.Attr("rs:fixedlength", "true");
    if (t.is_long) w.Attr("rs:long", "true");
    // Fabricated fields always say they hold no null; nullable ones carry rs:nullable instead.
    if (f.appended || !f.may_be_null) w.Attr("rs:maybenull", "false");
    w.EndEmptyTag();
    w.Raw("\t\t</s:AttributeType>\r\n");
  }
  w.Raw(kSchemaEnd);
}

void WriteRow(Writer& w, int depth, const std::vector<Field>& fields, const std::vector<std::string>& names,
              const std::vector<Variant>& values) {
  w.StartTag(depth, depth + 1, "z:row");
  size_t n = std::min(fields.size(), values.size());
  for (size_t i = 0; i < n; ++i) {
    const Variant& v = values[i];
    if (v.IsNull() || v.IsEmpty()) continue;
    w.ValueAttr(names[i], fields[i], v);
  }
  w.EndEmptyTag();
}

}  // namespace

struct RowsetXmlWriter::Impl {
  Impl(std::ostream& out, const std::vector<Field>& f) : fields(f), names(XmlNames(f)), w(out) {}
  const std::vector<Field>& fields;
  const std::vector<std::string> names;
  Writer w;
  bool in_insert = false;
};

RowsetXmlWriter::RowsetXmlWriter(std::ostream& out, const std::vector<Field>& fields, bool write_head)
    : impl_(std::make_unique<Impl>(out, fields)) {
  if (write_head) WriteSchema(impl_->w, fields, impl_->names);
}

void WriteRowsetHead(std::ostream& out, const std::vector<Field>& fields) {
  Writer w(out);
  WriteSchema(w, fields, XmlNames(fields));
  w.Flush();
}

RowsetXmlWriter::~RowsetXmlWriter() = default;

void RowsetXmlWriter::Row(const std::vector<Variant>& values, bool pending_insert) {
  Impl& s = *impl_;
  if (pending_insert != s.in_insert) {
    s.w.Raw(pending_insert ? "\t<rs:insert>\r\n" : "\t</rs:insert>\r\n");
    s.in_insert = pending_insert;
  }
  WriteRow(s.w, s.in_insert ? 2 : 1, s.fields, s.names, values);
  s.w.MaybeFlush();
  ++rows_;
}

void RowsetXmlWriter::Finish() {
  Impl& s = *impl_;
  if (s.in_insert) s.w.Raw("\t</rs:insert>\r\n");
  s.in_insert = false;
  s.w.Raw(kFooter);
  s.w.Flush();
}

void WriteRowsetXml(std::ostream& out, const std::vector<Field>& fields, const std::vector<XmlRow>& rows) {
  RowsetXmlWriter writer(out, fields);
  for (const XmlRow& row : rows) writer.Row(*row.values, row.pending_insert);
  writer.Finish();
}

}  // namespace ent
