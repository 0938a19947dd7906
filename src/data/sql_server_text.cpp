#include "data/sql_server_text.h"

#include <sqlite3.h>

#include <string>
#include <vector>

#include "common/error.h"

namespace ent {

namespace {

char32_t Fold(char32_t c) {
  return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

unsigned char FoldByte(char c) {
  return static_cast<unsigned char>(Fold(static_cast<unsigned char>(c)));
}

std::string_view WithoutTrailingBlanks(std::string_view s) {
  while (!s.empty() && s.back() == ' ') s.remove_suffix(1);
  return s;
}

// The text's characters (UTF-8 decoded; a byte that starts no valid sequence stands for itself).
std::u32string Characters(std::string_view s) {
  std::u32string out;
  out.reserve(s.size());
  for (size_t i = 0; i < s.size();) {
    const auto b = static_cast<unsigned char>(s[i]);
    size_t n = b < 0x80 ? 1 : (b >> 5) == 0x6 ? 2 : (b >> 4) == 0xE ? 3 : (b >> 3) == 0x1E ? 4 : 0;
    bool valid = n > 0 && i + n <= s.size();
    char32_t c = n == 1 ? b : n == 2 ? (b & 0x1F) : n == 3 ? (b & 0x0F) : (b & 0x07);
    for (size_t k = 1; valid && k < n; ++k) {
      const auto cont = static_cast<unsigned char>(s[i + k]);
      valid = (cont & 0xC0) == 0x80;
      c = (c << 6) | (cont & 0x3F);
    }
    if (!valid) {
      out.push_back(b);
      ++i;
      continue;
    }
    out.push_back(c);
    i += n;
  }
  return out;
}

// One element of a pattern: a run of any characters, or one character of some kind.
struct Element {
  enum Kind { kAnyRun, kAnyOne, kLiteral, kSet };
  explicit Element(Kind k, char32_t c = 0) : kind(k), literal(c) {}

  Kind kind;
  char32_t literal;
  std::vector<std::pair<char32_t, char32_t>> ranges;  // kSet: inclusive, folded
  bool negated = false;

  bool Matches(char32_t c) const {
    switch (kind) {
      case kAnyOne:
        return true;
      case kLiteral:
        return c == literal;
      case kSet: {
        bool in = false;
        for (const auto& [lo, hi] : ranges) in = in || (c >= lo && c <= hi);
        return in != negated;
      }
      case kAnyRun:
        break;
    }
    return false;
  }
};

std::vector<Element> ParsePattern(const std::u32string& p, std::optional<char32_t> escape) {
  std::vector<Element> out;
  for (size_t i = 0; i < p.size(); ++i) {
    const char32_t c = p[i];
    if (escape && c == *escape && i + 1 < p.size()) {
      out.emplace_back(Element::kLiteral, Fold(p[++i]));
    } else if (c == '%') {
      if (out.empty() || out.back().kind != Element::kAnyRun) out.emplace_back(Element::kAnyRun);
    } else if (c == '_') {
      out.emplace_back(Element::kAnyOne);
    } else if (c == '[' && p.find(']', i + 2) != std::u32string::npos) {
      // "[]...]" keeps its first ']' as a member; otherwise the set ends at the first ']'.
      const size_t close = p.find(']', i + 2);
      Element set(Element::kSet);
      size_t k = i + 1;
      if (p[k] == '^' && k + 1 < close) {
        set.negated = true;
        ++k;
      }
      for (; k < close; ++k) {
        if (k + 2 < close && p[k + 1] == '-') {
          set.ranges.emplace_back(Fold(p[k]), Fold(p[k + 2]));
          k += 2;
        } else {
          set.ranges.emplace_back(Fold(p[k]), Fold(p[k]));
        }
      }
      out.push_back(std::move(set));
      i = close;
    } else {
      out.emplace_back(Element::kLiteral, Fold(c));
    }
  }
  return out;
}

}  // namespace

int CompareSqlServerText(std::string_view a, std::string_view b) {
  a = WithoutTrailingBlanks(a);
  b = WithoutTrailingBlanks(b);
  const size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    const unsigned char x = FoldByte(a[i]), y = FoldByte(b[i]);
    if (x != y) return x < y ? -1 : 1;
  }
  return a.size() == b.size() ? 0 : a.size() < b.size() ? -1 : 1;
}

bool SqlServerLike(std::string_view value, std::string_view pattern, std::optional<char32_t> escape) {
  std::u32string text = Characters(WithoutTrailingBlanks(value));
  for (char32_t& c : text) c = Fold(c);
  const std::vector<Element> elements = ParsePattern(Characters(pattern), escape);
  // Every element but a run matches exactly one character, so the last run seen is the only place
  // to go back to: let it take one more character and try again.
  size_t t = 0, e = 0;
  size_t run_e = std::string::npos, run_t = 0;
  while (t < text.size()) {
    if (e < elements.size() && elements[e].kind == Element::kAnyRun) {
      run_e = e++;
      run_t = t;
    } else if (e < elements.size() && elements[e].Matches(text[t])) {
      ++e;
      ++t;
    } else if (run_e != std::string::npos) {
      e = run_e + 1;
      t = ++run_t;
    } else {
      return false;
    }
  }
  while (e < elements.size() && elements[e].kind == Element::kAnyRun) ++e;
  return e == elements.size();
}

namespace {

int CollateText(void*, int a_size, const void* a, int b_size, const void* b) {
  return CompareSqlServerText(std::string_view(static_cast<const char*>(a), static_cast<size_t>(a_size)),
                              std::string_view(static_cast<const char*>(b), static_cast<size_t>(b_size)));
}

std::string_view TextArgument(sqlite3_value* v) {
  const unsigned char* text = sqlite3_value_text(v);
  return {reinterpret_cast<const char*>(text), static_cast<size_t>(sqlite3_value_bytes(v))};
}

// like(pattern, value [, escape]), the order SQLite calls it in for "value LIKE pattern".
void Like(sqlite3_context* context, int argc, sqlite3_value** argv) {
  for (int i = 0; i < argc; ++i) {
    if (sqlite3_value_type(argv[i]) == SQLITE_NULL) return sqlite3_result_null(context);
  }
  std::optional<char32_t> escape;
  if (argc == 3) {
    const std::u32string e = Characters(TextArgument(argv[2]));
    if (e.size() != 1)
      return sqlite3_result_error(context, "ESCAPE expression must be a single character", -1);
    escape = e[0];
  }
  const std::string_view pattern = TextArgument(argv[0]);
  const std::string_view value = TextArgument(argv[1]);
  sqlite3_result_int(context, SqlServerLike(value, pattern, escape) ? 1 : 0);
}

}  // namespace

void RegisterSqlServerText(sqlite3* db) {
  int rc = sqlite3_create_collation_v2(db, "NOCASE", SQLITE_UTF8, nullptr, CollateText, nullptr);
  for (int args : {2, 3}) {
    if (rc == SQLITE_OK)
      rc = sqlite3_create_function_v2(db, "like", args, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr, Like,
                                      nullptr, nullptr, nullptr);
  }
  if (rc != SQLITE_OK) throw Error(err::kDatabaseError, sqlite3_errmsg(db), "sqlite");
}

}  // namespace ent
