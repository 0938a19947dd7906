#pragma once
#include <string>
#include <string_view>
namespace ent::tsql {
std::string ToSqlite(std::string_view tsql);
struct DeclaredType { std::string name; int size_or_precision = 0; int scale = 0; };
DeclaredType ParseDeclaredType(std::string_view decltype_text);
}
