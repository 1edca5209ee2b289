// Connection strings: what the data access layer reads out of "Provider=...;Data Source=...;...".
#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qrel {

// Key and value pairs in order. Keys match without case; a value may stand in single or double quotes; a doubled quote
// inside stands for one. Of two equal keys the last one counts.
struct ConnectionString {
  std::vector<std::pair<std::string, std::string>> pairs;

  static ConnectionString parse(std::string_view text);
  // A value as it has to stand behind its "=" so that parse gives it back: plain values as they are, others in double
  // quotes with quotes inside doubled.
  static std::string quoted(const std::string& value);
  std::string get(std::string_view key) const;  // empty when absent
  bool has(std::string_view key) const;

  std::string provider() const;  // "SQLOLEDB.1", "SQLNCLI11"
  std::string server() const;    // "Data Source" or "Server"
  std::string database() const;  // "Initial Catalog" or "Database"; empty: the login's default database
};

}  // namespace qrel
