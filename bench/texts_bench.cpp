// Texts of many tables, as a whole-database run asks for them: every column has a default, so each costs two more
// queries on connections of their own.
#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "app/Program.h"
#include "db/mdlQueryCode.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "platform/host/consoleHost.h"

namespace {

using namespace qrel;

constexpr int columns = 20;

std::string tablesScript(int tables) {
  std::string script;
  for (int t = 0; t < tables; ++t) {
    const std::string name = "T" + std::to_string(t);
    script += "CREATE TABLE dbo." + name + " (id int NOT NULL CONSTRAINT PK_" + name + " PRIMARY KEY";
    for (int c = 1; c < columns; ++c)
      script += ",\n  c" + std::to_string(c) + " varchar(40) NOT NULL CONSTRAINT DF_" + name + "_" + std::to_string(c) +
                " DEFAULT ('x')";
    script += ")\nGO\n";
  }
  return script;
}

void BM_TableTexts(benchmark::State& state) {
  const int tables = static_cast<int>(state.range(0));
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "qrel-texts-bench";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  std::ofstream(folder / "tables.sql") << tablesScript(tables);
  EmbeddedServers servers(folder / "servers");
  servers.create("bench");
  loadScripts(servers, "bench", "Db", {folder / "tables.sql"}, {});
  DataAccess data;
  data.add(std::make_unique<EmbeddedProvider>(servers, data.providerStop()));
  KeyStore store;
  ConsoleHost host(std::cerr);
  Program program(host, data, store);
  tServer server;
  server.Name = "bench";
  server.Version = defaultProductVersion;
  std::size_t bytes = 0;
  for (auto _ : state) {
    for (int t = 0; t < tables; ++t) {
      const std::string text = GetTableText(program, server, {"Db", "T" + std::to_string(t)});
      if (text.empty()) state.SkipWithError("a table without text");
      bytes += text.size();
    }
  }
  state.SetItemsProcessed(state.iterations() * tables);
  state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
  std::filesystem::remove_all(folder);
}
BENCHMARK(BM_TableTexts)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
