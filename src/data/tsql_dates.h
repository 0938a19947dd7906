// String literals that meet a date column, for the T-SQL adapter. The shop database's server converts
// such a literal to a date (it reads '6/30/24', '20240630' and 'Jun 30 2024' alike) and fails the
// statement when it cannot; SQLite would compare the text with the stored 'yyyy-MM-dd HH:mm:ss' text
// as text. So each such literal is read as the server reads it and replaced with the stored form.
//
// Which columns hold dates comes from the database's own declarations (the driver reads them from its
// schema, read only once a literal meets a column; tables created earlier in the same text count too), not
// from what a literal looks like: a literal that merely looks like a date elsewhere stays text, and an
// unreadable literal compared with a date column fails as it does on the server. A column name that is a date
// in one table and something else in another is left alone, since the text does not always say which table it
// means.
#pragma once

#include <string>
#include <vector>

#include "data/sql_tokenizer.h"
#include "data/tsql_adapter.h"

namespace ent::tsql {

// Literals met: `col <op> 'x'` and `'x' <op> col` (op = <> != < > <= >=), with `col` also written
// `t.col`, `(col)`, `max(col)` or `min(col)`; `col [NOT] BETWEEN 'x' AND 'y'`; `col [NOT] IN ('x', ...)`;
// and the values of `INSERT INTO t [(cols)] VALUES (...), ...` that go into date columns of `t`.
// Raises Error (the server's conversion failure) for a literal that does not read as a date.
void RewriteDateLiterals(std::vector<Token>& tokens, const SchemaSource& schema);

}  // namespace ent::tsql
