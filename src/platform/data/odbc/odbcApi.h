// ODBC's handles as objects, its texts, and the records that it leaves behind a call.
#pragma once

#include <sql.h>
#include <sqlext.h>
#include <sqlucode.h>

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace qrel::odbc {

// UTF-16 as ODBC has it. A lone surrogate keeps its number in UTF-8, so that two texts that differ go on differing.
std::vector<SQLWCHAR> wide(std::string_view utf8);
void appendNarrow(std::string& out, const SQLWCHAR* text, std::size_t units);
std::string narrow(const SQLWCHAR* text, std::size_t units);

// What a call says beside its return code.
struct Record {
  std::string state;  // SQLSTATE
  std::int32_t native = 0;
  std::string text;  // without the names of drivers in front
};
using Records = std::vector<Record>;

// All records of the last call on a handle, in the driver's order.
Records recordsOf(SQLSMALLINT handleType, SQLHANDLE handle);

// ODBC takes numbers in the place of pointers.
inline SQLPOINTER asPointer(std::uintptr_t number) {
  return reinterpret_cast<SQLPOINTER>(number);  // NOLINT(performance-no-int-to-ptr)
}

// The driver manager. Raises DataError when it can't be had.
class Environment {
 public:
  Environment();
  ~Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;
  SQLHENV get() const { return handle_; }
  // The names of the drivers that are entered with it.
  std::vector<std::string> drivers() const;

 private:
  SQLHENV handle_ = nullptr;
};

}  // namespace qrel::odbc
