// Placeholder until the real implementation lands.
#include "server/soap_client.h"
#include "common/error.h"
namespace ent {
void SoapClient::Init(const std::string& url) { throw Error(1, "stub " + url + std::to_string(o_.connect_timeout_seconds)); }
std::string SoapClient::Call(const std::string&, const std::vector<std::string>&) { return ""; }
}
