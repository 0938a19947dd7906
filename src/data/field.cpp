#include "data/field.h"

#include "common/error.h"
#include "common/text.h"

namespace ent {

size_t FieldIndexOf(const std::vector<Field>& fields, std::string_view name) {
  for (size_t i = 0; i < fields.size(); ++i)
    if (EqualsIgnoreCase(fields[i].name, name)) return i;
  throw Error(err::kItemNotFound,
              "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

bool IsTextType(DataType type) {
  switch (type) {
    case DataType::kChar:
    case DataType::kVarChar:
    case DataType::kWChar:
    case DataType::kVarWChar:
    case DataType::kLongVarChar:
    case DataType::kLongVarWChar:
      return true;
    default:
      return false;
  }
}

Field AppendedField(std::string name, DataType type, int64_t size) {
  Field f;
  f.name = std::move(name);
  f.type = type;
  f.defined_size = size;
  f.may_be_null = false;
  f.appended = true;
  return f;
}

Field ResultTextField(std::string name) {
  Field f = AppendedField(std::move(name));
  f.widens = true;
  return f;
}

Field FieldOfSqlServerType(std::string_view n, int64_t size_or_precision, int scale) {
  Field f;
  auto set = [&](DataType type, int64_t size, int precision = 0) {
    f.type = type;
    f.defined_size = size;
    f.precision = precision;
  };
  if (n == "int" || n == "integer")
    set(DataType::kInteger, 4, 10);
  else if (n == "bigint")
    set(DataType::kBigInt, 8, 19);
  else if (n == "smallint")
    set(DataType::kSmallInt, 2, 5);
  else if (n == "tinyint")
    set(DataType::kTinyInt, 1, 3);
  else if (n == "bit")
    set(DataType::kBoolean, 2);
  else if (n == "money")
    set(DataType::kCurrency, 8, 19);
  else if (n == "smallmoney")
    set(DataType::kCurrency, 8, 10);
  else if (n == "float" || n == "double")
    set(DataType::kDouble, 8, 15);
  else if (n == "real")
    set(DataType::kSingle, 4, 7);
  else if (n == "decimal" || n == "numeric") {
    set(DataType::kNumeric, 19, size_or_precision > 0 ? size_or_precision : 18);
    f.scale = scale;
  } else if (n == "datetime" || n == "smalldatetime" || n == "date" || n == "datetime2") {
    set(DataType::kDateTime, 16, 23);
    f.scale = 3;
  } else if (n == "char")
    set(DataType::kChar, size_or_precision > 0 ? size_or_precision : 1);
  else if (n == "nchar")
    set(DataType::kWChar, size_or_precision > 0 ? size_or_precision : 1);
  else if (n == "varchar")
    set(DataType::kVarChar, size_or_precision > 0 ? size_or_precision : 8000);
  else if (n == "nvarchar")
    set(DataType::kVarWChar, size_or_precision > 0 ? size_or_precision : 4000);
  else if (n == "text")
    set(DataType::kLongVarChar, 2147483647);
  else if (n == "ntext")
    set(DataType::kLongVarWChar, 1073741823);
  else if (n == "uniqueidentifier")
    set(DataType::kGuid, 16);
  else
    set(DataType::kVarWChar, 4000);
  return f;
}

}  // namespace ent
