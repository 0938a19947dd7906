// Splits a T-SQL text into tokens: blanks, comments, 'strings' (with '' inside), [bracketed] and
// "quoted" names, words, numbers, operators and punctuation. Concatenating the tokens' texts gives
// back the input byte for byte.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace ent::tsql {

enum class TokenKind {
  kBlank,
  kComment,
  kString,
  kQuotedName,
  kWord,
  kNumber,
  kOperator,
  kOpen,
  kClose,
  kComma,
  kSemicolon
};

struct Token {
  TokenKind kind;
  std::string text;
};

std::vector<Token> Tokenize(std::string_view sql);

// A word compared without case ("select" == "SELECT").
bool IsWord(const Token& token, std::string_view word);

}  // namespace ent::tsql
