// The description of one rowset column, as drivers report it and the persisted-rowset XML writes it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace ent {

enum class DataType {
  kChar,          // char(n): fixed-length text
  kVarChar,       // varchar(n)
  kWChar,         // nchar(n)
  kVarWChar,      // nvarchar(n)
  kLongVarChar,   // text
  kLongVarWChar,  // ntext, nvarchar(max)
  kTinyInt,       // tinyint (unsigned byte)
  kSmallInt,
  kInteger,
  kBigInt,
  kBoolean,   // bit
  kCurrency,  // money, smallmoney
  kDouble,    // float
  kSingle,    // real
  kNumeric,   // decimal(p,s), numeric(p,s)
  kDateTime,  // datetime, smalldatetime
  kGuid,      // uniqueidentifier
};

struct Field {
  std::string name;
  DataType type = DataType::kChar;
  int64_t defined_size = 50;  // characters for text; bytes for fixed-size types
  int precision = 0;
  int scale = 0;
  bool may_be_null = true;  // the column can hold null
  bool appended = false;    // appended to a free-standing rowset (no source)
  // A report's result column: its declared size grows to its longest value instead of refusing it,
  // so the document declares every column wide enough for what it holds.
  bool widens = false;
  // Where a query column comes from; empty for computed columns and appended fields.
  std::string base_catalog;
  std::string base_table;
  std::string base_column;
  bool key_column = false;
  bool autoincrement = false;
};

// Whether the type holds text.
bool IsTextType(DataType type);

// The index of the field named `name` (without regard to case); Error 3265 when there is none.
size_t FieldIndexOf(const std::vector<Field>& fields, std::string_view name);

// A field appended to a free-standing rowset: fixed-length text of `size` characters by default.
Field AppendedField(std::string name, DataType type = DataType::kChar, int64_t size = 50);

// A text column of a report's result: fixed-length text declared 50 characters wide, widened to the
// longest value ever put in it.
Field ResultTextField(std::string name);

// The field of a column of a SQL Server type given by name ("money", "varchar", "decimal"), with the
// declared length or precision (0 when none was given) and scale. Unknown names give nvarchar(4000).
Field FieldOfSqlServerType(std::string_view name, int64_t size_or_precision = 0, int scale = 0);

}  // namespace ent
