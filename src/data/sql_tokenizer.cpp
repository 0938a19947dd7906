#include "data/sql_tokenizer.h"

#include <cctype>

#include "common/text.h"

namespace ent::tsql {

namespace {

bool IsWordChar(char c) {
  return std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '@' || c == '#' || c == '$' ||
         (static_cast<unsigned char>(c) & 0x80);
}

}  // namespace

std::vector<Token> Tokenize(std::string_view s) {
  std::vector<Token> tokens;
  size_t i = 0;
  auto push = [&](TokenKind kind, size_t end) {
    tokens.push_back(Token{kind, std::string(s.substr(i, end - i))});
    i = end;
  };
  while (i < s.size()) {
    const char c = s[i];
    size_t j = i + 1;
    if (std::isspace(static_cast<unsigned char>(c))) {
      while (j < s.size() && std::isspace(static_cast<unsigned char>(s[j]))) ++j;
      push(TokenKind::kBlank, j);
    } else if (c == '-' && j < s.size() && s[j] == '-') {
      while (j < s.size() && s[j] != '\n') ++j;
      push(TokenKind::kComment, j);
    } else if (c == '/' && j < s.size() && s[j] == '*') {
      size_t end = s.find("*/", j + 1);
      push(TokenKind::kComment, end == std::string_view::npos ? s.size() : end + 2);
    } else if (c == '\'' || c == '"') {
      // A doubled quote stays inside; an unterminated literal runs to the end.
      while (j < s.size()) {
        if (s[j] == c) {
          if (j + 1 < s.size() && s[j + 1] == c) {
            j += 2;
            continue;
          }
          ++j;
          break;
        }
        ++j;
      }
      push(c == '\'' ? TokenKind::kString : TokenKind::kQuotedName, j);
    } else if (c == '[') {
      size_t end = s.find(']', j);
      push(TokenKind::kQuotedName, end == std::string_view::npos ? s.size() : end + 1);
    } else if (std::isdigit(static_cast<unsigned char>(c)) ||
               (c == '.' && j < s.size() && std::isdigit(static_cast<unsigned char>(s[j])))) {
      while (j < s.size() && (std::isdigit(static_cast<unsigned char>(s[j])) || s[j] == '.')) ++j;
      if (j < s.size() && (s[j] == 'e' || s[j] == 'E')) {
        size_t k = j + 1;
        if (k < s.size() && (s[k] == '+' || s[k] == '-')) ++k;
        if (k < s.size() && std::isdigit(static_cast<unsigned char>(s[k]))) {
          j = k;
          while (j < s.size() && std::isdigit(static_cast<unsigned char>(s[j]))) ++j;
        }
      }
      push(TokenKind::kNumber, j);
    } else if (IsWordChar(c)) {
      while (j < s.size() && IsWordChar(s[j])) ++j;
      push(TokenKind::kWord, j);
    } else if (c == '(') {
      push(TokenKind::kOpen, j);
    } else if (c == ')') {
      push(TokenKind::kClose, j);
    } else if (c == ',') {
      push(TokenKind::kComma, j);
    } else if (c == ';') {
      push(TokenKind::kSemicolon, j);
    } else {
      // Two-character comparison operators stay together.
      if (j < s.size() &&
          ((c == '<' && (s[j] == '>' || s[j] == '=')) || (c == '>' && s[j] == '=') ||
           (c == '!' && (s[j] == '=' || s[j] == '<' || s[j] == '>')) || (c == '|' && s[j] == '|')))
        ++j;
      push(TokenKind::kOperator, j);
    }
  }
  return tokens;
}

bool IsWord(const Token& token, std::string_view word) {
  return token.kind == TokenKind::kWord && EqualsIgnoreCase(token.text, word);
}

}  // namespace ent::tsql
