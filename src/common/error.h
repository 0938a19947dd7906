// The one failure type of the server: a number, a description and the name of the component that
// raised it. The numbers are those a shop's tools already know from the database access layer. Operations
// that "trap" failures catch it and turn it into a status text; everything else lets it travel.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ent {

class Error : public std::runtime_error {
 public:
  Error(int32_t number, std::string description, std::string source = {});

  int32_t number() const { return number_; }
  const std::string& description() const { return description_; }
  const std::string& source() const { return source_; }

 private:
  int32_t number_;
  std::string description_;
  std::string source_;
};

// Error numbers the program raises or recognises.
namespace err {
inline constexpr int32_t kOverflow = 6;
inline constexpr int32_t kTypeMismatch = 13;
inline constexpr int32_t kInvalidUseOfNull = 94;
inline constexpr int32_t kInvalidProcedureCall = 5;
inline constexpr int32_t kObjectNotSet = 91;  // a rowset or document that is not there
inline constexpr int32_t kObjectRequired = 424;
inline constexpr int32_t kDuplicateKey = 457;   // a parameter given twice
inline constexpr int32_t kItemNotFound = 3265;  // no column / no such key
inline constexpr int32_t kBofOrEof = 3021;      // no current record
inline constexpr int32_t kOperationNotAllowed = 3219;
inline constexpr int32_t kBadArguments = 3001;      // arguments of the wrong type or out of range
inline constexpr int32_t kWriteFailed = 3004;       // a file could not be written
inline constexpr int32_t kNotUpdatable = 3251;      // the rowset cannot do this
inline constexpr int32_t kObjectClosed = 3704;      // a closed connection or rowset
inline constexpr int32_t kProviderNotFound = 3706;  // no driver for the connection string
inline constexpr int32_t kDatabaseError = static_cast<int32_t>(0x80004005);
inline constexpr int32_t kTableNotFound = static_cast<int32_t>(0x80040E37);
inline constexpr int32_t kSyntaxError = static_cast<int32_t>(0x80040E14);
inline constexpr int32_t kMultipleStep = static_cast<int32_t>(0x80040E21);  // a value did not fit its column
inline constexpr int32_t kConversionFailed = static_cast<int32_t>(0x80040E07);  // a value did not convert
inline constexpr int32_t kServiceFailure = static_cast<int32_t>(0x80020009);    // the SOAP call failed
inline constexpr int32_t kCannotCreateObject = 429;
inline constexpr int32_t kTokenInUse = 50002;
inline constexpr int32_t kReportStatus = 11001;
}  // namespace err

}  // namespace ent
