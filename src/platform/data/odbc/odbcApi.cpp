#include "platform/data/odbc/odbcApi.h"

#include "platform/error.h"
#include "platform/text.h"

namespace qrel::odbc {

namespace {

constexpr bool isHighSurrogate(char32_t c) { return c >= 0xD800 && c < 0xDC00; }
constexpr bool isLowSurrogate(char32_t c) { return c >= 0xDC00 && c < 0xE000; }

// "[FreeTDS][SQL Server]Invalid object name 'x'." is the server's sentence with its road in front.
std::string withoutRoad(std::string text) {
  std::size_t start = 0;
  while (start < text.size() && text[start] == '[') {
    const std::size_t end = text.find(']', start);
    if (end == std::string::npos) break;
    start = end + 1;
  }
  return text.substr(start);
}

}  // namespace

std::vector<SQLWCHAR> wide(std::string_view utf8) {
  std::vector<SQLWCHAR> out;
  out.reserve(utf8.size());
  for (std::size_t offset = 0; offset < utf8.size();) {
    const char32_t c = nextCodePoint(utf8, offset);
    if (c < 0x10000) {
      out.push_back(static_cast<SQLWCHAR>(c));
    } else {
      out.push_back(static_cast<SQLWCHAR>(0xD800 + ((c - 0x10000) >> 10)));
      out.push_back(static_cast<SQLWCHAR>(0xDC00 + ((c - 0x10000) & 0x3FF)));
    }
  }
  return out;
}

void appendNarrow(std::string& out, const SQLWCHAR* text, std::size_t units) {
  for (std::size_t i = 0; i < units; ++i) {
    char32_t c = text[i];
    if (c < 0x80) {
      out += static_cast<char>(c);
      continue;
    }
    if (isHighSurrogate(c) && i + 1 < units && isLowSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[i + 1] - 0xDC00U);
      ++i;
    }
    appendUtf8(out, c);
  }
}

std::string narrow(const SQLWCHAR* text, std::size_t units) {
  std::string out;
  appendNarrow(out, text, units);
  return out;
}

Records recordsOf(SQLSMALLINT handleType, SQLHANDLE handle) {
  constexpr SQLSMALLINT most = 100;  // a driver that never ends its list
  Records records;
  std::vector<SQLWCHAR> text(2048);
  for (SQLSMALLINT i = 1; i <= most; ++i) {
    SQLWCHAR state[6] = {};
    SQLINTEGER native = 0;
    SQLSMALLINT length = 0;
    const auto read = [&] {
      return SQLGetDiagRecW(handleType, handle, i, state, &native, text.data(), static_cast<SQLSMALLINT>(text.size()),
                            &length);
    };
    if (!SQL_SUCCEEDED(read())) break;
    if (length >= static_cast<SQLSMALLINT>(text.size())) {
      text.resize(static_cast<std::size_t>(length) + 1);
      if (!SQL_SUCCEEDED(read())) break;
    }
    records.push_back({narrow(state, 5), native,
                       withoutRoad(narrow(text.data(), static_cast<std::size_t>(std::max<int>(length, 0))))});
  }
  return records;
}

Environment::Environment() {
  if (!SQL_SUCCEEDED(SQLAllocHandle(SQL_HANDLE_ENV, SQL_NULL_HANDLE, &handle_)))
    throw DataError(errorNumber::cannotConnect, "The ODBC driver manager can't be started: install unixODBC.", "HY000");
  SQLSetEnvAttr(handle_, SQL_ATTR_ODBC_VERSION, asPointer(SQL_OV_ODBC3_80), 0);
}

Environment::~Environment() { SQLFreeHandle(SQL_HANDLE_ENV, handle_); }

std::vector<std::string> Environment::drivers() const {
  std::vector<std::string> names;
  SQLWCHAR name[256];
  SQLWCHAR attributes[2];
  SQLSMALLINT length = 0;
  SQLSMALLINT ignored = 0;
  SQLUSMALLINT direction = SQL_FETCH_FIRST;
  while (SQL_SUCCEEDED(SQLDriversW(handle_, direction, name, 256, &length, attributes, 2, &ignored))) {
    names.push_back(narrow(name, static_cast<std::size_t>(std::min<int>(length, 255))));
    direction = SQL_FETCH_NEXT;
  }
  return names;
}

}  // namespace qrel::odbc
