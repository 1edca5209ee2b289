// How many queries a whole-database run sends for each kind of object, and how long it takes when each of them waits
// five milliseconds: one after the other, and read ahead on eight connections.
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "app/Program.h"
#include "bench/slowProvider.h"
#include "compare/all/modCompareAll.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "platform/host/consoleHost.h"

namespace {

using namespace qrel;
using Clock = std::chrono::steady_clock;

struct Kind {
  const char* name;
  long type;
  std::string (*statement)(const std::string& number);
};

const Kind kinds[] = {
    {"table", objTables, [](const std::string& n) { return "CREATE TABLE t" + n + " (a int NOT NULL, b int NULL)"; }},
    {"table with 3 defaults", objTables,
     [](const std::string& n) {
       return "CREATE TABLE t" + n + " (a int NULL DEFAULT 1, b int NULL DEFAULT 2, c int NULL DEFAULT 3)";
     }},
    {"table with a key", objTables,
     [](const std::string& n) { return "CREATE TABLE t" + n + " (a int NOT NULL PRIMARY KEY, b int NULL)"; }},
    {"procedure", objProcedures, [](const std::string& n) { return "CREATE PROCEDURE p" + n + " AS SELECT 1"; }},
    {"view", objViews, [](const std::string& n) { return "CREATE VIEW v" + n + " AS SELECT 1 AS a"; }},
    {"foreign key", objRelationships,
     [](const std::string& n) {
       return "CREATE TABLE t" + n + " (a int NOT NULL PRIMARY KEY, b int CONSTRAINT fk" + n + " REFERENCES t" + n +
              " (a))";
     }},
};

struct Run {
  std::size_t queries = 0, connections = 0;
  double seconds = 0;
};

// A run over two databases that hold `count` objects of the kind, the same on both sides.
Run compare(const Kind& kind, int count, std::chrono::microseconds latency, std::size_t ahead = 0) {
  const std::filesystem::path folder = std::filesystem::temp_directory_path() / "qrel-latency-bench";
  std::filesystem::remove_all(folder);
  std::filesystem::create_directories(folder);
  {
    std::ofstream script(folder / "objects.sql");
    for (int i = 0; i < count; ++i) script << kind.statement(std::to_string(i)) << "\nGO\n";
  }
  EmbeddedServers servers(folder / "servers");
  servers.create("bench");
  for (const char* database : {"a", "b"}) loadScripts(servers, "bench", database, {folder / "objects.sql"}, {});
  SlowProviderState state;
  DataAccess data;
  data.prefetcher().setMost(ahead);
  data.add(std::make_unique<EmbeddedProvider>(servers, data.providerStop()));
  data.wrapProviders([&](auto inner) { return std::make_unique<SlowProvider>(std::move(inner), state); });
  KeyStore store;
  ConsoleHost host(std::cerr);
  Program program(host, data, store);
  for (tServer& server : program.main.gtypSelServ) {
    server.Name = "bench";
    server.Version = defaultProductVersion;
  }
  struct Window : Form {
    Window() : Form("frmCompareAll") {}
  } window;
  CompareAllControls controls(window);
  controls.chkObjType[static_cast<std::size_t>(CompareAllIndex(kind.type))].setChecked(true);
  CompareAllInput input;
  input.arrDatabases = {"a", "b"};
  std::string flags;
  state.latency = latency;
  const auto start = Clock::now();
  if (!CompareAll_Structure(program, controls, flags, input)) std::cerr << "the run failed\n";
  const std::chrono::duration<double> time = Clock::now() - start;
  std::filesystem::remove_all(folder);
  return {state.queries, state.connections, time.count()};
}

}  // namespace

int main() {
  constexpr int few = 20, many = 120;
  for (const Kind& kind : kinds) {
    // What a run costs without any object falls out of the difference.
    const Run small = compare(kind, few, {}), large = compare(kind, many, {});
    const auto roundTrip = std::chrono::milliseconds(5);
    const Run slow = compare(kind, many, roundTrip), ahead = compare(kind, many, roundTrip, 8);
    const double perObject = static_cast<double>(large.queries - small.queries) / (many - few);
    std::cout << "  " << kind.name << ": " << perObject << " queries an object and pair, "
              << static_cast<double>(small.queries) - perObject * few << " a run; " << many << " pairs in "
              << large.seconds << " s, with 5 ms a query " << slow.seconds << " s, read ahead " << ahead.seconds
              << " s, " << slow.seconds / ahead.seconds << " times as fast\n";
  }
}
