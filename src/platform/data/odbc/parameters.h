// The values of a command as ODBC takes them.
#pragma once

#include <list>
#include <string>
#include <vector>

#include "platform/data/odbc/odbcApi.h"
#include "platform/data/provider.h"

namespace qrel::odbc {

class Parameters {
 public:
  explicit Parameters(const CommandRequest& request);

  // The text to send: the command itself, or the call of the procedure.
  const std::string& text() const { return text_; }
  // To a statement; false when the driver refuses one. They must outlive its execution.
  bool bind(SQLHSTMT statement);

  std::int32_t returnValue() const { return returnValue_; }
  // As they are now, parallel to the request's.
  std::vector<Value> outputs() const;

 private:
  struct One {
    Value value;
    bool comesBack = false;
    SQLSMALLINT cType = SQL_C_WCHAR;
    SQLSMALLINT sqlType = SQL_WVARCHAR;
    SQLULEN size = 1;
    SQLSMALLINT digits = 0;
    SQLLEN length = 0;
    std::vector<SQLWCHAR> text;
    SQLBIGINT integer = 0;
    SQLDOUBLE real = 0;
    unsigned char bit = 0;
    SQL_TIMESTAMP_STRUCT moment{};

    SQLPOINTER data();
  };

  static One made(const Value& value, bool comesBack);

  std::string text_;
  bool isProcedure_ = false;
  std::list<One> values_;  // never moved once they are bound
  SQLINTEGER returnValue_ = 0;
  SQLLEN returnLength_ = 0;
};

}  // namespace qrel::odbc
