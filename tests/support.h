// A program over temporary folders with a scripted host, for tests of the layers above the platform.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "app/Program.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/embeddedScriptLoader.h"
#include "embedded/load/loader.h"
#include "platform/host/scriptedHost.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {

// Embedded servers in a temporary folder and an empty store.
class TestServers {
 public:
  TestServers() : servers(folder.path() / "servers") {
    data.add(std::make_unique<EmbeddedProvider>(servers, data.providerStop()));
  }

  // Loads a script into SERVER.database; every statement of it must be understood.
  void load(const std::string& server, const std::string& database, const std::string& script,
            const std::string& version = defaultProductVersion) {
    if (!servers.exists(server)) servers.create(server, version);
    const LoadReport report = loadScripts(servers, server, database, {folder.write(database + ".sql", script)}, {});
    for (const auto* list : {&report.skipped, &report.failed})
      for (const SkippedStatement& each : *list)
        ADD_FAILURE() << each.line << ": " << each.firstWords << ": " << each.reason;
  }

  // The record of an embedded server, its version known.
  static tServer server(const std::string& name, const std::string& version = defaultProductVersion) {
    tServer record;
    record.Name = name;
    record.Version = version;
    return record;
  }

  TemporaryFolder folder;
  EmbeddedServers servers;
  EmbeddedScriptLoader loader{servers};
  DataAccess data;
  KeyStore store;
};

class TestProgram : public TestServers {
 public:
  TestProgram() : program(host, data, store) { program.programFolder = folder.path().string(); }
  ~TestProgram() {
    EXPECT_TRUE(host.unexpected.empty()) << host.unexpected.front();
    EXPECT_TRUE(host.answers.empty()) << "a queued answer was never asked for";
    EXPECT_TRUE(host.windows.empty()) << "a window that was scripted never opened";
  }

  ScriptedHost host;
  Program program;
};

}  // namespace qrel
