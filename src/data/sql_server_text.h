// How the shop database's server compares text, for SQLite: without regard to case and ignoring
// trailing blanks ('BRAKE LABOR ' = 'brake labor'), and LIKE with its patterns: % (any run), _ (one
// character), [abc], [a-c] and [^a] (one character of a set, or not of it) and an ESCAPE character.
// Case is folded for the letters A-Z only, as SQLite's own NOCASE does.
#pragma once

#include <optional>
#include <string_view>

struct sqlite3;

namespace ent {

// < 0, 0 or > 0 as `a` sorts before, with or after `b`.
int CompareSqlServerText(std::string_view a, std::string_view b);

// Whether `value` matches `pattern`. Trailing blanks of the value are ignored; those of the pattern
// count. `escape` makes the character after it literal.
bool SqlServerLike(std::string_view value, std::string_view pattern, std::optional<char32_t> escape = {});

// Makes the connection compare text this way: replaces the NOCASE collation (which the text columns
// of the shop's tables carry) and the LIKE operator (like() with two and three arguments). Raises
// Error on failure.
void RegisterSqlServerText(sqlite3* db);

}  // namespace ent
