#include "data/tsql_adapter.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstdio>
#include <map>
#include <optional>

#include "common/text.h"
#include "data/sql_tokenizer.h"
#include "data/tsql_dates.h"

namespace ent::tsql {

namespace {

using Tokens = std::vector<Token>;

bool Significant(const Token& t) {
  return t.kind != TokenKind::kBlank && t.kind != TokenKind::kComment;
}

size_t NextSignificant(const Tokens& t, size_t i) {
  while (i < t.size() && !Significant(t[i])) ++i;
  return i;
}

bool IsAnyWord(const Token& t, std::initializer_list<std::string_view> words) {
  for (std::string_view w : words)
    if (IsWord(t, w)) return true;
  return false;
}

// Edits collected while reading the tokens, applied when the text is written back.
struct Edits {
  std::map<size_t, std::string> insert_before;
  std::vector<bool> dropped;
  explicit Edits(size_t n) : dropped(n, false) {}
};

// --- TOP n -> LIMIT n ---------------------------------------------------------------------------

// The index where the select that starts at `start` ends: the closing parenthesis of its subquery,
// a set operator or ';' at its own depth, or the end.
size_t EndOfSelect(const Tokens& t, size_t start) {
  int depth = 0;
  for (size_t i = start; i < t.size(); ++i) {
    const Token& tok = t[i];
    if (tok.kind == TokenKind::kOpen) {
      ++depth;
    } else if (tok.kind == TokenKind::kClose) {
      if (depth == 0) return i;
      --depth;
    } else if (depth == 0 &&
               (tok.kind == TokenKind::kSemicolon || IsAnyWord(tok, {"UNION", "EXCEPT", "INTERSECT"}))) {
      return i;
    }
  }
  return t.size();
}

void RewriteTop(const Tokens& t, Edits& edits) {
  for (size_t i = 0; i < t.size(); ++i) {
    if (!IsWord(t[i], "SELECT")) continue;
    size_t k = NextSignificant(t, i + 1);
    if (k < t.size() && IsAnyWord(t[k], {"DISTINCT", "ALL"})) k = NextSignificant(t, k + 1);
    if (k >= t.size() || !IsWord(t[k], "TOP")) continue;
    const size_t top = k;
    size_t n = NextSignificant(t, top + 1);
    size_t last = n;  // the last token of the count
    std::string count;
    if (n < t.size() && t[n].kind == TokenKind::kNumber) {
      count = t[n].text;
    } else if (n < t.size() && t[n].kind == TokenKind::kOpen) {
      size_t inner = NextSignificant(t, n + 1);
      size_t close = NextSignificant(t, inner + 1);
      if (inner >= t.size() || t[inner].kind != TokenKind::kNumber || close >= t.size() ||
          t[close].kind != TokenKind::kClose)
        continue;
      count = t[inner].text;
      last = close;
    } else {
      continue;
    }
    size_t after = NextSignificant(t, last + 1);
    if (after < t.size() && IsWord(t[after], "PERCENT")) continue;  // no SQLite equivalent: left alone
    // Drop "TOP n" and the blank after it.
    for (size_t d = top; d <= last; ++d) edits.dropped[d] = true;
    if (last + 1 < t.size() && t[last + 1].kind == TokenKind::kBlank) edits.dropped[last + 1] = true;
    // LIMIT goes right after the select's last significant token.
    size_t end = EndOfSelect(t, i + 1);
    size_t at = end;
    while (at > i && !Significant(t[at - 1])) --at;
    edits.insert_before[at] += " LIMIT " + count;
  }
}

// --- result column names ---------------------------------------------------------------------------

// SQL Server names an unaliased column of the select list as the text spells it ("Company"); SQLite
// would take the table's spelling ("company"). Such items get an explicit alias with their spelling.
void AliasPlainColumns(const Tokens& t, Edits& edits) {
  for (size_t i = 0; i < t.size(); ++i) {
    if (!IsWord(t[i], "SELECT")) continue;
    size_t k = NextSignificant(t, i + 1);
    if (k < t.size() && IsAnyWord(t[k], {"DISTINCT", "ALL"})) k = NextSignificant(t, k + 1);
    if (k < t.size() && IsWord(t[k], "TOP")) {  // TOP n or TOP (n)
      k = NextSignificant(t, k + 1);
      if (k < t.size() && t[k].kind == TokenKind::kOpen)
        while (k < t.size() && t[k].kind != TokenKind::kClose) ++k;
      k = NextSignificant(t, k + 1);
    }
    std::vector<size_t> item;  // significant tokens of the current item
    int depth = 0;
    auto finish_item = [&]() {
      // name, or name.name[.name], all names: gets " AS [last name]".
      bool plain = !item.empty() && item.size() % 2 == 1;
      for (size_t n = 0; plain && n < item.size(); ++n) {
        const Token& tok = t[item[n]];
        if (n % 2 == 1)
          plain = tok.kind == TokenKind::kOperator && tok.text == ".";
        else
          plain = (tok.kind == TokenKind::kWord && !IsAnyWord(tok, {"NULL", "TRUE", "FALSE"})) ||
                  (tok.kind == TokenKind::kQuotedName && tok.text.front() == '[');
      }
      if (plain) {
        std::string name = t[item.back()].text;
        if (name.front() == '[') name = name.substr(1, name.size() - 2);
        if (name.find(']') == std::string::npos) edits.insert_before[item.back() + 1] += " AS [" + name + "]";
      }
      item.clear();
    };
    for (; k < t.size(); ++k) {
      const Token& tok = t[k];
      if (!Significant(tok)) continue;
      if (tok.kind == TokenKind::kOpen) ++depth;
      if (tok.kind == TokenKind::kClose && depth-- == 0) break;
      if (depth == 0 &&
          (tok.kind == TokenKind::kSemicolon ||
           IsAnyWord(tok, {"FROM", "INTO", "WHERE", "UNION", "EXCEPT", "INTERSECT", "ORDER", "GROUP"})))
        break;
      if (depth == 0 && tok.kind == TokenKind::kComma) {
        finish_item();
        continue;
      }
      item.push_back(k);
    }
    finish_item();
  }
}

// --- isnull -> ifnull ----------------------------------------------------------------------------

void RewriteIsNull(Tokens& t) {
  for (size_t i = 0; i < t.size(); ++i) {
    if (!IsWord(t[i], "ISNULL")) continue;
    size_t next = NextSignificant(t, i + 1);
    if (next < t.size() && t[next].kind == TokenKind::kOpen) t[i].text = "ifnull";
  }
}

// --- + with a string operand -> || ---------------------------------------------------------------

bool IsBoundaryWord(const Token& t) {
  return IsAnyWord(t,
                   {"SELECT",   "FROM",  "WHERE",  "AND",       "OR",     "NOT",    "AS",    "ON",    "JOIN",
                    "INNER",    "LEFT",  "RIGHT",  "OUTER",     "CROSS",  "FULL",   "GROUP", "ORDER", "BY",
                    "HAVING",   "UNION", "ALL",    "THEN",      "ELSE",   "WHEN",   "END",   "CASE",  "LIKE",
                    "BETWEEN",  "IN",    "IS",     "SET",       "VALUES", "INTO",   "DESC",  "ASC",   "TOP",
                    "DISTINCT", "LIMIT", "EXCEPT", "INTERSECT", "ESCAPE", "COLLATE"});
}

void RewriteConcatenation(Tokens& t) {
  struct Chain {
    std::vector<size_t> pluses;
    bool has_string = false;
    bool expect_operand = true;
  };
  std::vector<Chain> stack(1);
  auto finish = [&](Chain& c) {
    if (c.has_string)
      for (size_t p : c.pluses) t[p].text = "||";
    c = Chain{};
  };
  for (size_t i = 0; i < t.size(); ++i) {
    const Token& tok = t[i];
    if (!Significant(tok)) continue;
    Chain& chain = stack.back();
    switch (tok.kind) {
      case TokenKind::kOpen:
        // The group is an operand of the outer chain; its inside is judged on its own.
        chain.expect_operand = false;
        stack.emplace_back();
        break;
      case TokenKind::kClose:
        finish(stack.back());
        if (stack.size() > 1) stack.pop_back();
        break;
      case TokenKind::kComma:
      case TokenKind::kSemicolon:
        finish(chain);
        break;
      case TokenKind::kOperator:
        if (tok.text == "+") {
          chain.pluses.push_back(i);
          chain.expect_operand = true;
        } else if (tok.text == "-" || tok.text == "*" || tok.text == "/" || tok.text == "%") {
          chain.expect_operand = true;  // arithmetic inside an operand or beside it: the chain goes on
        } else {
          finish(chain);  // comparisons and the rest end an expression
        }
        break;
      case TokenKind::kWord:
        if (IsBoundaryWord(tok)) {
          finish(chain);
          break;
        }
        [[fallthrough]];
      default:                                     // strings, numbers, names
        if (!chain.expect_operand) finish(chain);  // an alias or a new expression
        if (tok.kind == TokenKind::kString) chain.has_string = true;
        chain.expect_operand = false;
        break;
    }
  }
  for (Chain& c : stack) finish(c);
}

// --- CREATE TABLE ----------------------------------------------------------------------------------

void RewriteColumnDefinition(Tokens& t, size_t begin, size_t end, Edits& edits) {
  size_t name = NextSignificant(t, begin);
  if (name >= end || IsAnyWord(t[name], {"PRIMARY", "CONSTRAINT", "UNIQUE", "FOREIGN", "CHECK", "INDEX"}))
    return;
  size_t type = NextSignificant(t, name + 1);
  if (type >= end || t[type].kind != TokenKind::kWord) return;
  // The end of the type: after its (n[,m]).
  size_t type_end = type;
  size_t after = NextSignificant(t, type + 1);
  if (after < end && t[after].kind == TokenKind::kOpen) {
    size_t close = after;
    while (close < end && t[close].kind != TokenKind::kClose) ++close;
    type_end = close;
  }
  if (IsAnyWord(t[type], {"char", "varchar", "nchar", "nvarchar", "text", "ntext"})) {
    bool collated = false;
    for (size_t k = type_end + 1; k < end; ++k) collated = collated || IsWord(t[k], "COLLATE");
    if (!collated) edits.insert_before[type_end + 1] += " COLLATE NOCASE";
  } else if (IsAnyWord(t[type], {"money", "smallmoney", "decimal", "numeric"})) {
    t[type].text += " real";
  }
  for (size_t k = type_end + 1; k < end; ++k) {
    if (!IsWord(t[k], "IDENTITY")) continue;
    size_t open = NextSignificant(t, k + 1);
    size_t last = k;
    if (open < end && t[open].kind == TokenKind::kOpen) {
      last = open;
      while (last < end && t[last].kind != TokenKind::kClose) ++last;
    }
    for (size_t d = k; d <= last && d < end; ++d) edits.dropped[d] = true;
  }
}

void RewriteCreateTable(Tokens& t, Edits& edits) {
  for (size_t i = 0; i < t.size(); ++i) {
    if (!IsWord(t[i], "CREATE")) continue;
    size_t table = NextSignificant(t, i + 1);
    if (table >= t.size() || !IsWord(t[table], "TABLE")) continue;
    size_t open = table + 1;
    while (open < t.size() && t[open].kind != TokenKind::kOpen && t[open].kind != TokenKind::kSemicolon)
      ++open;
    if (open >= t.size() || t[open].kind != TokenKind::kOpen) continue;
    // Column definitions are separated by commas at depth 1.
    int depth = 0;
    size_t begin = open + 1;
    for (size_t k = open; k < t.size(); ++k) {
      if (t[k].kind == TokenKind::kOpen) {
        ++depth;
      } else if (t[k].kind == TokenKind::kClose) {
        if (--depth == 0) {
          RewriteColumnDefinition(t, begin, k, edits);
          i = k;
          break;
        }
      } else if (t[k].kind == TokenKind::kComma && depth == 1) {
        RewriteColumnDefinition(t, begin, k, edits);
        begin = k + 1;
      }
    }
  }
}

}  // namespace

std::string ToSqlite(std::string_view tsql, const Schema& schema) {
  return ToSqlite(tsql, SchemaSource([&schema]() -> const Schema& { return schema; }));
}

std::string ToSqlite(std::string_view tsql, const SchemaSource& schema) {
  Tokens tokens = Tokenize(tsql);
  Edits edits(tokens.size());
  RewriteIsNull(tokens);
  RewriteConcatenation(tokens);
  RewriteDateLiterals(tokens, schema);
  RewriteCreateTable(tokens, edits);
  RewriteTop(tokens, edits);
  AliasPlainColumns(tokens, edits);
  std::string out;
  out.reserve(tsql.size() + 32);
  for (size_t i = 0; i <= tokens.size(); ++i) {
    if (auto it = edits.insert_before.find(i); it != edits.insert_before.end()) out += it->second;
    if (i < tokens.size() && !edits.dropped[i]) out += tokens[i].text;
  }
  return out;
}

DeclaredType ParseDeclaredType(std::string_view text) {
  DeclaredType type;
  size_t i = 0;
  while (i < text.size() && std::isspace(static_cast<unsigned char>(text[i]))) ++i;
  while (i < text.size() && (std::isalnum(static_cast<unsigned char>(text[i])) || text[i] == '_'))
    type.name += static_cast<char>(std::tolower(static_cast<unsigned char>(text[i++])));
  size_t open = text.find('(', i);
  if (open != std::string_view::npos) {
    // Sizes beyond the largest a column can have (2^31 - 1, SQL Server's "max") are read as that.
    constexpr int64_t kLargest = 2147483647;
    int64_t values[2] = {0, 0};
    int which = 0;
    for (size_t k = open + 1; k < text.size() && text[k] != ')'; ++k) {
      if (text[k] == ',')
        which = 1;
      else if (std::isdigit(static_cast<unsigned char>(text[k])))
        values[which] = std::min(kLargest, values[which] * 10 + (text[k] - '0'));
    }
    type.size_or_precision = static_cast<int>(values[0]);
    type.scale = static_cast<int>(values[1]);
  }
  return type;
}

void AddDeclaredColumn(Schema& schema, std::string_view table, std::string_view column,
                       std::string_view declared_type) {
  const std::string type = ParseDeclaredType(declared_type).name;
  const bool is_date = type == "datetime" || type == "smalldatetime" || type == "date" || type == "datetime2";
  schema[AsciiLower(table)].push_back({AsciiLower(column), is_date});
}

}  // namespace ent::tsql
