#include "data/tsql_dates.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <optional>

#include "common/sql_server_date.h"
#include "common/text.h"

namespace ent::tsql {

namespace {

bool IsDateType(const Token& t) {
  return IsWord(t, "datetime") || IsWord(t, "smalldatetime") || IsWord(t, "date") || IsWord(t, "datetime2");
}

// A name token's name in lower case: word, [bracketed] or "quoted"; "" for any other token.
std::string NameOf(const Token& t) {
  if (t.kind == TokenKind::kWord) return AsciiLower(t.text);
  if (t.kind == TokenKind::kQuotedName && t.text.size() >= 2)
    return AsciiLower(t.text.substr(1, t.text.size() - 2));
  return "";
}

bool IsComparison(const Token& t) {
  if (t.kind != TokenKind::kOperator) return false;
  for (std::string_view op : {"=", "<>", "!=", "<", ">", "<=", ">=", "!<", "!>"})
    if (t.text == op) return true;
  return false;
}

bool IsDot(const Token& t) {
  return t.kind == TokenKind::kOperator && t.text == ".";
}

// Words that may stand before a parenthesised column without making it a function's argument.
bool MayPrecedeGroup(const Token& t) {
  for (std::string_view w : {"AND", "OR", "NOT", "WHERE", "ON", "WHEN", "THEN", "ELSE", "HAVING", "SELECT",
                             "SET", "BY", "CASE", "MAX", "MIN", "BETWEEN"})
    if (IsWord(t, w)) return true;
  return false;
}

class DateLiterals {
 public:
  DateLiterals(std::vector<Token>& tokens, const SchemaSource& schema) : tokens_(tokens), source_(schema) {
    for (size_t i = 0; i < tokens_.size(); ++i)
      if (tokens_[i].kind != TokenKind::kBlank && tokens_[i].kind != TokenKind::kComment) sig_.push_back(i);
    AddTablesCreatedHere();
  }

  void Rewrite() {
    for (size_t k = 0; k < sig_.size(); ++k) {
      if (At(k).kind != TokenKind::kString) continue;
      if (IsDateColumn(ColumnMetBy(k))) ToStoredDate(k);
    }
    RewriteInserts();
  }

 private:
  const Token& At(size_t k) const { return tokens_[sig_[k]]; }
  bool Has(size_t k) const { return k < sig_.size(); }
  const Schema& Tables() { return created_.empty() ? Database() : created_; }
  // The database's own tables, read the first time they are asked for.
  const Schema& Database() {
    if (!schema_) schema_ = &source_();
    return *schema_;
  }

  // Whether every column of that name, in whichever table, holds dates (and there is one). Looked up
  // in place: a text has a few literals, the shop hundreds of columns.
  bool IsDateColumn(const std::string& name) {
    if (name.empty()) return false;
    bool found = false;
    for (const auto& [table, columns] : Tables()) {
      for (const TableColumn& c : columns) {
        if (c.name != name) continue;
        if (!c.is_date) return false;
        found = true;
      }
    }
    return found;
  }

  void ToStoredDate(size_t k) {
    Token& t = tokens_[sig_[k]];
    std::string text;
    for (size_t i = 1; i + 1 < t.text.size(); ++i) {
      text += t.text[i];
      if (t.text[i] == '\'') ++i;  // '' stands for one quote
    }
    t.text = "'" + SqlServerDate(text).StoredText() + "'";
  }

  // The column a literal at k is compared with, or "" when it meets none.
  std::string ColumnMetBy(size_t k) const {
    if (k >= 1 && IsComparison(At(k - 1))) return k >= 2 ? ColumnEndingAt(k - 2) : "";
    if (Has(k + 2) && IsComparison(At(k + 1))) return ColumnStartingAt(k + 2);
    if (k >= 1 && IsWord(At(k - 1), "BETWEEN")) return ColumnBeforeKeyword(k - 1);
    if (k >= 3 && IsWord(At(k - 1), "AND") && IsWord(At(k - 3), "BETWEEN")) return ColumnBeforeKeyword(k - 3);
    // An IN list: back over "'x' ," to its "(".
    size_t j = k;
    while (j >= 2 && At(j - 1).kind == TokenKind::kComma && At(j - 2).kind == TokenKind::kString) j -= 2;
    if (j >= 2 && At(j - 1).kind == TokenKind::kOpen && IsWord(At(j - 2), "IN"))
      return ColumnBeforeKeyword(j - 2);
    return "";
  }

  // The column before BETWEEN or IN at k, skipping a NOT.
  std::string ColumnBeforeKeyword(size_t k) const {
    if (k >= 1 && IsWord(At(k - 1), "NOT")) --k;
    return k >= 1 ? ColumnEndingAt(k - 1) : "";
  }

  // A column reference that ends at k: name, t.name, (name), max(name), min(name).
  std::string ColumnEndingAt(size_t k) const {
    if (At(k).kind == TokenKind::kClose) {
      size_t open = k;
      int depth = 0;
      for (;; --open) {
        if (At(open).kind == TokenKind::kClose) ++depth;
        if (At(open).kind == TokenKind::kOpen && --depth == 0) break;
        if (open == 0) return "";
      }
      if (open >= 1 && At(open - 1).kind == TokenKind::kWord && !MayPrecedeGroup(At(open - 1))) return "";
      return SingleReference(open + 1, k);
    }
    return NameOf(At(k));
  }

  // A column reference that starts at k.
  std::string ColumnStartingAt(size_t k) const {
    size_t first = k;
    if (IsWord(At(k), "MAX") || IsWord(At(k), "MIN")) ++first;
    if (Has(first) && At(first).kind == TokenKind::kOpen) {
      size_t close = first + 1;
      while (Has(close) && At(close).kind != TokenKind::kClose && At(close).kind != TokenKind::kOpen) ++close;
      if (!Has(close) || At(close).kind != TokenKind::kClose) return "";
      return SingleReference(first + 1, close);
    }
    size_t last = k;
    while (Has(last + 2) && IsDot(At(last + 1))) last += 2;
    if (Has(last + 1) && At(last + 1).kind == TokenKind::kOpen) return "";  // a function's result
    return SingleReference(k, last + 1);
  }

  // The column when the tokens [begin, end) are exactly name(.name)*; "" otherwise.
  std::string SingleReference(size_t begin, size_t end) const {
    if (begin >= end || (end - begin) % 2 == 0) return "";
    for (size_t i = begin; i < end; ++i) {
      if ((i - begin) % 2 == 1 ? !IsDot(At(i)) : NameOf(At(i)).empty()) return "";
    }
    return NameOf(At(end - 1));
  }

  // The last name of a possibly qualified name starting at k; `k` moves past it.
  std::string QualifiedName(size_t& k) const {
    std::string name = Has(k) ? NameOf(At(k)) : "";
    while (Has(k + 2) && IsDot(At(k + 1))) {
      k += 2;
      name = NameOf(At(k));
    }
    ++k;
    return name;
  }

  void AddTablesCreatedHere() {
    for (size_t k = 0; Has(k + 2); ++k) {
      if (!IsWord(At(k), "CREATE") || !IsWord(At(k + 1), "TABLE")) continue;
      size_t i = k + 2;
      const std::string table = QualifiedName(i);
      if (table.empty() || !Has(i) || At(i).kind != TokenKind::kOpen) continue;
      if (created_.empty()) created_ = Database();
      std::vector<TableColumn>& columns = created_[table];
      columns.clear();
      int depth = 1;
      bool at_definition_start = true;
      for (++i; Has(i) && depth > 0; ++i) {
        const Token& t = At(i);
        if (t.kind == TokenKind::kOpen) ++depth;
        if (t.kind == TokenKind::kClose) --depth;
        if (depth == 1 && t.kind == TokenKind::kComma) {
          at_definition_start = true;
        } else if (depth == 1 && at_definition_start) {
          at_definition_start = false;
          const std::string name = NameOf(t);
          if (name.empty() || (t.kind == TokenKind::kWord &&
                               (IsWord(t, "PRIMARY") || IsWord(t, "CONSTRAINT") || IsWord(t, "UNIQUE") ||
                                IsWord(t, "FOREIGN") || IsWord(t, "CHECK") || IsWord(t, "INDEX"))))
            continue;
          columns.push_back({name, Has(i + 1) && IsDateType(At(i + 1))});
        }
      }
    }
  }

  void RewriteInserts() {
    for (size_t k = 0; Has(k + 1); ++k) {
      if (!IsWord(At(k), "INSERT")) continue;
      size_t i = k + 1;
      if (IsWord(At(i), "INTO")) ++i;
      const auto table = Tables().find(QualifiedName(i));
      if (table == Tables().end()) continue;
      // The date columns in the order the values come: the listed columns, or all of the table's.
      std::vector<bool> dates;
      if (Has(i) && At(i).kind == TokenKind::kOpen) {
        for (++i; Has(i) && At(i).kind != TokenKind::kClose; ++i) {
          if (At(i).kind == TokenKind::kComma) continue;
          const std::string name = NameOf(At(i));
          auto column = std::find_if(table->second.begin(), table->second.end(),
                                     [&](const TableColumn& c) { return c.name == name; });
          dates.push_back(column != table->second.end() && column->is_date);
        }
        ++i;
      } else {
        for (const TableColumn& c : table->second) dates.push_back(c.is_date);
      }
      if (!Has(i) || !IsWord(At(i), "VALUES")) continue;
      ++i;
      while (Has(i) && At(i).kind == TokenKind::kOpen) {
        size_t item = 0, item_start = i + 1;
        int depth = 0;
        for (; Has(i); ++i) {
          const Token& t = At(i);
          if (t.kind == TokenKind::kOpen) ++depth;
          const bool ends_item =
              (depth == 1 && t.kind == TokenKind::kComma) || (depth == 1 && t.kind == TokenKind::kClose);
          if (ends_item) {
            if (i == item_start + 1 && At(item_start).kind == TokenKind::kString && item < dates.size() &&
                dates[item])
              ToStoredDate(item_start);
            ++item;
            item_start = i + 1;
          }
          if (t.kind == TokenKind::kClose && --depth == 0) break;
        }
        ++i;
        if (Has(i) && At(i).kind == TokenKind::kComma) ++i;
      }
      k = i == 0 ? k : i - 1;
    }
  }

  std::vector<Token>& tokens_;
  const SchemaSource& source_;
  const Schema* schema_ = nullptr;  // the database's tables, once read
  Schema created_;                  // the schema with the tables this text creates, when it creates any
  std::vector<size_t> sig_;         // indexes of the tokens that are neither blanks nor comments
};

}  // namespace

void RewriteDateLiterals(std::vector<Token>& tokens, const SchemaSource& schema) {
  DateLiterals(tokens, schema).Rewrite();
}

}  // namespace ent::tsql
