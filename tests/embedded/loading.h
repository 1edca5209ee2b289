// A server with one database that scripts are loaded into, and queries on what they leave behind.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/functions/functions.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "embedded/sqlite/sqlite.h"
#include "embedded/types/collations.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {

class Loading {
 public:
  explicit Loading(std::string_view version = defaultProductVersion) { servers.create("S", version); }

  std::filesystem::path write(const std::string& name, std::string_view text) const {
    const auto path = folder.path() / name;
    std::ofstream(path, std::ios::binary) << text;
    return path;
  }
  LoadReport load(std::string_view text, const LoadOptions& options = {}) {
    return loadScripts(servers, "S", "Db", {write("script.sql", text)}, options);
  }
  std::filesystem::path file() const { return servers.databaseFile("S", "Db"); }

  // All rows of a query on the file, columns parted by "|", rows by line ends; Null is "-".
  std::string rows(const std::string& sql) const {
    sqlite::Database database(file(), sqlite::OpenMode::ReadOnly);
    tsql::registerCollations(database);
    sqlite::Statement query(database, sql);
    std::string text;
    while (query.step()) {
      for (int i = 0; i < sqlite3_column_count(query.get()); ++i) {
        if (i > 0) text += '|';
        const auto* value = reinterpret_cast<const char*>(sqlite3_column_text(query.get(), i));
        text += value ? value : "-";
      }
      text += '\n';
    }
    return text;
  }
  // Names and kinds of all objects, in the order of their ids.
  std::string objects() const { return rows("select name, xtype from cat_objects order by id"); }
  // The kept source of an object.
  std::string source(const std::string& name) const {
    return rows(
        "select group_concat(text, '') from (select c.text from cat_comments c join cat_objects o on o.id = "
        "c.object_id where o.name = '" +
        name + "' order by c.colid)");
  }

  TemporaryFolder folder;
  EmbeddedServers servers{folder.path() / "servers"};
};

inline std::string reasons(const std::vector<SkippedStatement>& list) {
  std::string text;
  for (const auto& each : list) text += std::to_string(each.line) + ": " + each.firstWords + " | " + each.reason + "\n";
  return text;
}

// Each statement that was skipped or refused is listed, as often as it was met.
inline void expectAddsUp(const LoadReport& report, const std::string& script) {
  const auto listed = [](const std::vector<SkippedStatement>& list) {
    std::int64_t times = 0;
    for (const SkippedStatement& each : list) times += each.times;
    return times;
  };
  EXPECT_EQ(report.statementsSkipped, listed(report.skipped)) << script;
  EXPECT_EQ(report.statementsFailed, listed(report.failed)) << script;
}

}  // namespace qrel
