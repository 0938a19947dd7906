#pragma once
#include <string>
#include <vector>
namespace ent {
struct SoapOptions { long connect_timeout_seconds = 10; long total_timeout_seconds = 60; };
class SoapClient { public: explicit SoapClient(const SoapOptions& o) : o_(o) {} void Init(const std::string&); std::string Call(const std::string&, const std::vector<std::string>&); private: SoapOptions o_; };
}
