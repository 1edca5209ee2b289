// A client of ODBC as plain as can be, by way of FreeTDS, and a TDS end for it to speak to.
#pragma once

#include <gtest/gtest.h>
#include <sql.h>
#include <sqlext.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "embedded/load/loader.h"
#include "tests/platform/temporaryFolder.h"
#include "tests/support/tds/bytes.h"
#include "tests/support/tds/server.h"

namespace qrel {

// An embedded server "S" with the database "shop", behind a TDS end.
class TdsFixture : public ::testing::Test {
 protected:
  TdsFixture() { servers_.create("S"); }

  // Every statement must be understood and succeed.
  void load(const std::string& script) {
    const LoadReport report = loadScripts(servers_, "S", "shop", {folder_.write("script.sql", script)}, {});
    for (const auto* list : {&report.skipped, &report.failed})
      for (const SkippedStatement& each : *list) ADD_FAILURE() << each.firstWords << ": " << each.reason;
  }
  void serve() { server_ = std::make_unique<tds::Server>(servers_, tds::ServerOptions{.instance = "S"}); }
  std::string connectionString(const std::string& more = "PWD=secret;Database=shop;") const {
    return "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(server_->port()) + ";TDS_Version=7.4;UID=sa;" +
           more;
  }

  TemporaryFolder folder_;
  EmbeddedServers servers_{folder_.path() / "servers"};
  std::unique_ptr<tds::Server> server_;
};

class OdbcClient {
 public:
  explicit OdbcClient(const std::string& connectionString, unsigned loginSeconds = 5) {
    SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &environment_);
    SQLSetEnvAttr(environment_, SQL_ATTR_ODBC_VERSION, reinterpret_cast<SQLPOINTER>(SQL_OV_ODBC3), 0);
    SQLAllocHandle(SQL_HANDLE_DBC, environment_, &connection_);
    SQLSetConnectAttr(connection_, SQL_ATTR_LOGIN_TIMEOUT, reinterpret_cast<SQLPOINTER>(std::uintptr_t{loginSeconds}),
                      0);
    std::vector<SQLWCHAR> text = wide(connectionString);
    connected =
        SQL_SUCCEEDED(SQLDriverConnectW(connection_, nullptr, text.data(), static_cast<SQLSMALLINT>(text.size()),
                                        nullptr, 0, nullptr, SQL_DRIVER_NOPROMPT));
    if (connected)
      SQLAllocHandle(SQL_HANDLE_STMT, connection_, &statement);
    else
      noteErrors(SQL_HANDLE_DBC, connection_);
  }
  ~OdbcClient() {
    if (statement) SQLFreeHandle(SQL_HANDLE_STMT, statement);
    SQLDisconnect(connection_);
    SQLFreeHandle(SQL_HANDLE_DBC, connection_);
    SQLFreeHandle(SQL_HANDLE_ENV, environment_);
  }
  OdbcClient(const OdbcClient&) = delete;
  OdbcClient& operator=(const OdbcClient&) = delete;

  SQLRETURN run(const std::string& sql) {
    SQLFreeStmt(statement, SQL_CLOSE);
    std::vector<SQLWCHAR> text = wide(sql);
    return noted(SQLExecDirectW(statement, text.data(), static_cast<SQLINTEGER>(text.size())));
  }
  SQLRETURN prepare(const std::string& sql) {
    SQLFreeStmt(statement, SQL_CLOSE);
    std::vector<SQLWCHAR> text = wide(sql);
    return noted(SQLPrepareW(statement, text.data(), static_cast<SQLINTEGER>(text.size())));
  }
  SQLRETURN execute() { return noted(SQLExecute(statement)); }
  // A parameter that is a text on this side; 1-based, kept until unbind.
  void bindText(int number, const std::string& value, SQLSMALLINT sqlType = SQL_WLONGVARCHAR, SQLULEN size = 0,
                SQLSMALLINT digits = 0) {
    Bound& bound = *bound_.emplace_back(std::make_unique<Bound>());
    bound.text = wide(value);
    bound.length = static_cast<SQLLEN>(2 * bound.text.size());
    EXPECT_TRUE(
        SQL_SUCCEEDED(SQLBindParameter(statement, static_cast<SQLUSMALLINT>(number), SQL_PARAM_INPUT, SQL_C_WCHAR,
                                       sqlType, size, digits, bound.text.data(), bound.length, &bound.length)));
  }
  void unbind() {
    SQLFreeStmt(statement, SQL_RESET_PARAMS);
    bound_.clear();
  }
  // Whether the driver knows that the line is gone.
  bool dead() const {
    SQLUINTEGER gone = SQL_CD_FALSE;
    SQLGetConnectAttr(connection_, SQL_ATTR_CONNECTION_DEAD, &gone, 0, nullptr);
    return gone == SQL_CD_TRUE;
  }
  SQLHDBC connection() const { return connection_; }
  SQLRETURN fetch() { return noted(SQLFetch(statement)); }
  SQLRETURN nextResult() { return noted(SQLMoreResults(statement)); }

  // A cell as text, read in pieces of `room` bytes; "NULL" for Null.
  std::string text(int column, std::size_t room = 4000) {
    std::string bytes;
    std::vector<char> piece(room);
    for (;;) {
      SQLLEN length = 0;
      const SQLRETURN result = SQLGetData(statement, static_cast<SQLUSMALLINT>(column), SQL_C_WCHAR, piece.data(),
                                          static_cast<SQLLEN>(room), &length);
      if (result == SQL_NO_DATA || !SQL_SUCCEEDED(result)) return tds::fromUtf16(bytes);
      if (length == SQL_NULL_DATA) return "NULL";
      const bool isLast = length >= 0 && length <= static_cast<SQLLEN>(room) - 2;
      bytes.append(piece.data(), isLast ? static_cast<std::size_t>(length) : (room - 2) / 2 * 2);
      if (isLast) return tds::fromUtf16(bytes);
    }
  }
  // The rest of the current result: cells joined with "|", rows with a blank.
  std::string rows() {
    SQLSMALLINT columns = 0;
    SQLNumResultCols(statement, &columns);
    std::string out;
    while (SQL_SUCCEEDED(fetch())) {
      for (int i = 1; i <= columns; ++i) out += (i > 1 ? "|" : out.empty() ? "" : " ") + text(i);
    }
    return out;
  }
  // SQL_DESC_CONCISE_TYPE, length and scale of a column, joined with a blank.
  std::string describe(int column) {
    SQLSMALLINT type = 0, scale = 0, nullable = 0, length = 0;
    SQLULEN size = 0;
    SQLWCHAR name[128];
    SQLDescribeColW(statement, static_cast<SQLUSMALLINT>(column), name, 128, &length, &type, &size, &scale, &nullable);
    return std::to_string(type) + " " + std::to_string(size) + " " + std::to_string(scale);
  }
  // Of the call that failed last: "42S02 208" and so on, joined with ", "; the texts of all its records.
  std::string errors, errorText;

  SQLHSTMT statement = nullptr;
  bool connected = false;

 private:
  struct Bound {
    std::vector<SQLWCHAR> text;
    SQLLEN length = 0;
  };
  static std::vector<SQLWCHAR> wide(const std::string& text) {
    const std::string bytes = tds::toUtf16(text);
    std::vector<SQLWCHAR> units(bytes.size() / 2);
    std::memcpy(units.data(), bytes.data(), bytes.size());
    return units;
  }
  SQLRETURN noted(SQLRETURN result) {
    errors.clear();
    errorText.clear();
    if (result == SQL_ERROR || result == SQL_SUCCESS_WITH_INFO) noteErrors(SQL_HANDLE_STMT, statement);
    return result;
  }
  void noteErrors(SQLSMALLINT kind, SQLHANDLE handle) {
    SQLCHAR state[6];
    SQLCHAR message[2000];
    SQLINTEGER number = 0;
    for (SQLSMALLINT i = 1; SQL_SUCCEEDED(SQLGetDiagRec(kind, handle, i, state, &number, message, 2000, nullptr));
         ++i) {
      errors += (i > 1 ? ", " : "") + std::string(reinterpret_cast<char*>(state)) + " " + std::to_string(number);
      errorText += reinterpret_cast<char*>(message) + std::string("\n");
    }
  }

  SQLHENV environment_ = nullptr;
  SQLHDBC connection_ = nullptr;
  std::vector<std::unique_ptr<Bound>> bound_;
};

}  // namespace qrel
