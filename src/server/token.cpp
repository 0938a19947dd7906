// Placeholder until the real implementation lands.
#include "server/token.h"
namespace ent {
std::unique_ptr<DbInUseToken> DbInUseToken::Create(const std::string&) { return std::make_unique<DbInUseToken>(); }
int DbInUseToken::GetdbInUse() { return v_; }
void DbInUseToken::SetdbInUse(int v) { v_ = v; }
}
