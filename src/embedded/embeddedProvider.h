// The embedded server as a provider of the data access layer.
#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "embedded/instance/instances.h"
#include "embedded/load/loadLosses.h"
#include "platform/data/connectionString.h"
#include "platform/data/provider.h"

namespace qrel {

namespace tsql {
class OpenDatabase;
}

// Opens databases of embedded instances for reading: the server is the instance's name, with or without "(localdb)\" in
// front, the database a name of the instance's or empty for master. What can't be opened raises DataError 0x80004005
// with a sentence that says what to do. A connection changes nothing: statements that would are refused as for want of
// permission. The one thing that it alters, and only as a procedure command (CommandRequest::isProcedure), is which
// databases the server has: sp_attach_db and sp_attach_single_file_db. Open files are kept for the next connection as
// long as they stay the same file, and a connection that has run nothing yet leaves its own to the others. Outlives its
// connections.
class EmbeddedProvider : public Provider {
 public:
  // `stopAsked` (may be null) is asked now and then while a command runs or its rows come; true ends it.
  explicit EmbeddedProvider(EmbeddedServers& servers, const std::function<bool()>* stopAsked = nullptr);
  ~EmbeddedProvider() override;
  std::vector<std::string> knownServers() const override { return servers_.list(); }
  bool serves(const std::string& server) const override { return servers_.exists(server); }
  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) override;
  // Reading costs work and no waiting: more threads than this would only take turns.
  std::size_t connectionsAhead() const override { return 2; }
  std::shared_ptr<void> holdState() override;
  // What loads have left out of a database of an instance, of the very file that open() gives. Raises the DataError of
  // a database that can't be opened.
  LoadLosses lossesOfLoads(const std::string& instance, const std::string& database);

 private:
  struct Idle;
  struct Kept;
  class Pool;
  class Holding;

  Idle take(const std::string& instance, const std::string& wanted);
  Idle takePresent(const std::string& instance, const std::string& wanted);
  Idle takeKept(const Kept& kept);
  // By way of the folders, whatever the names' case.
  Idle find(const std::string& instance, const std::string& wanted);
  Idle openFile(const std::string& instance, const std::string& database, const std::filesystem::path& file);
  void connectSiblings(tsql::OpenDatabase& open, const std::string& instance);
  bool hasDatabase(const std::string& instance, const std::string& name) const;
  std::string fileToAttach(const std::string& instance, const std::string& name);
  std::shared_ptr<tsql::OpenDatabase> lease(Idle used);

  EmbeddedServers& servers_;
  const std::function<bool()>* stopAsked_;
  std::shared_ptr<Pool> pool_;
  std::shared_ptr<Holding> holding_;
};

}  // namespace qrel
