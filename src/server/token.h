#pragma once
#include <memory>
#include <string>
namespace ent {
class DbInUseToken { public: static std::unique_ptr<DbInUseToken> Create(const std::string& dir); int GetdbInUse(); void SetdbInUse(int); private: int v_ = 0; };
}
