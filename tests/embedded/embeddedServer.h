// An embedded server of a test's own, and the rows of a query as text.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "platform/data/columnStore.h"
#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {

class EmbeddedServer {
 public:
  explicit EmbeddedServer(const std::string& version = defaultProductVersion) : servers(folder.path() / "servers") {
    servers.create("S", version);
    servers.createDatabase("S", "shop");
  }

  std::unique_ptr<ProviderConnection> connect(const std::string& database = "shop") {
    return provider.open(ConnectionString::parse("Provider=SQLNCLI11;Server=(localdb)\\S;Initial Catalog=" + database));
  }

  // Each row as its cells joined with "|"; Null shows as "-".
  std::vector<std::string> rows(const std::string& sql, const std::string& database = "shop") {
    std::vector<std::string> out;
    const auto connection = connect(database);
    const CommandResult result = connection->execute({sql, 30, {}});
    if (!result.rows) return out;
    ColumnStore store(result.rows->columns());
    while (result.rows->fetch(store, 7) > 0) {
    }
    for (std::size_t row = 0; row < store.rowCount(); ++row) {
      std::string& line = out.emplace_back();
      for (std::size_t column = 0; column < store.columnCount(); ++column) {
        const Cell cell = store.cell(column, row);
        line += (column ? "|" : "") + (cell.null ? std::string("-") : textOf(cell));
      }
    }
    return out;
  }
  // The rows in one line, separated by blanks.
  std::string line(const std::string& sql, const std::string& database = "shop") {
    std::string out;
    for (const std::string& row : rows(sql, database)) out += (out.empty() ? "" : " ") + row;
    return out;
  }
  // Changes a database in the one way there is: by a load. Every statement must be understood and succeed.
  void load(const std::string& sql, const std::string& database = "shop") {
    const LoadReport report = loadScripts(servers, "S", database, {folder.write("script.sql", sql)}, {});
    for (const auto* list : {&report.skipped, &report.failed})
      for (const SkippedStatement& each : *list) ADD_FAILURE() << each.firstWords << ": " << each.reason;
  }

  // Number and description of the error that a statement raises; 0 without one.
  ErrorInfo error(const std::string& sql, const std::string& database = "shop") {
    try {
      rows(sql, database);
    } catch (const RuntimeError& error) {
      return {error.number, error.description};
    }
    return {};
  }

  TemporaryFolder folder;
  EmbeddedServers servers;
  EmbeddedProvider provider{servers};
};

}  // namespace qrel
