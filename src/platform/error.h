// Run-time errors: one class for the program's own, one for those of the data access layer.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace qrel {

// Error numbers that callers test. The 0x8004.... numbers are those of OLE DB, kept as signed 32-bit integers.
namespace errorNumber {
constexpr std::int32_t overflow = 6;
constexpr std::int32_t outOfMemory = 7;
constexpr std::int32_t subscript = 9;
constexpr std::int32_t typeMismatch = 13;
constexpr std::int32_t fileInput = 57;
constexpr std::int32_t diskFull = 61;
constexpr std::int32_t pathAccess = 75;
constexpr std::int32_t objectNotSet = 91;
constexpr std::int32_t invalidUseOfNull = 94;
constexpr std::int32_t noCurrentRecord = 3021;
constexpr std::int32_t itemNotFound = 3265;
constexpr std::int32_t argumentsOutOfRange = 3001;
constexpr std::int32_t operationNotAllowed = 3219;
constexpr std::int32_t objectClosed = 3704;
constexpr std::int32_t cannotConnect = static_cast<std::int32_t>(0x80004005);
constexpr std::int32_t permissionDenied = static_cast<std::int32_t>(0x80040E09);
constexpr std::int32_t badSql = static_cast<std::int32_t>(0x80040E14);
constexpr std::int32_t cancelled = static_cast<std::int32_t>(0x80040E4E);
constexpr std::int32_t timeout = static_cast<std::int32_t>(0x80040E31);
constexpr std::int32_t invalidObjectName = static_cast<std::int32_t>(0x80040E37);
}  // namespace errorNumber

// A trapped error: a number that callers may test and a sentence for the user.
class RuntimeError : public std::exception {
 public:
  RuntimeError(std::int32_t errorNumber, std::string errorDescription)
      : number(errorNumber), description(std::move(errorDescription)) {}
  const char* what() const noexcept override { return description.c_str(); }

  std::int32_t number;
  std::string description;
};

// An error of the data access layer: the provider's text, its SQLSTATE and the SQL that failed (may be empty).
class DataError : public RuntimeError {
 public:
  DataError(std::int32_t errorNumber, std::string errorDescription, std::string errorSqlState = {},
            std::string failedSql = {})
      : RuntimeError(errorNumber, std::move(errorDescription)),
        sqlState(std::move(errorSqlState)),
        sql(std::move(failedSql)) {}

  std::string sqlState;
  std::string sql;
};

// Narrows to 16 bits; a value that doesn't fit raises error 6, "Overflow".
std::int16_t toInt16(std::int64_t value);

// The number and description that an error report shows for any exception; 7 for out of memory, 51 for the unknown.
struct ErrorInfo {
  std::int32_t number = 0;
  std::string description;
};
ErrorInfo describeError(const std::exception& error);

}  // namespace qrel
