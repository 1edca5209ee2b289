// The embedded server as a provider of the data access layer.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/data/connectionString.h"
#include "platform/data/embedded/instances.h"
#include "platform/data/provider.h"

namespace qrel {

namespace tsql {
class OpenDatabase;
}

// Opens databases of embedded instances: the server is the instance's name, with or without "(localdb)\" in front, the
// database a name of the instance's or empty for master. What can't be opened raises DataError 0x80004005 with a
// sentence that says what to do. Open files are kept for the next connection as long as they stay the same file, and a
// connection that has run nothing yet leaves its own to the others. Outlives its connections.
class EmbeddedProvider : public Provider {
 public:
  // `stopAsked` (may be null) is asked now and then while a command runs or its rows come; true ends it.
  explicit EmbeddedProvider(EmbeddedServers& servers, const std::function<bool()>* stopAsked = nullptr);
  ~EmbeddedProvider() override;
  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) override;

 private:
  struct Idle;
  class Pool;

  Idle take(const std::string& instance, const std::string& wanted);
  // By way of the folders, whatever the names' case.
  Idle find(const std::string& instance, const std::string& wanted);
  std::shared_ptr<tsql::OpenDatabase> lease(Idle used);

  EmbeddedServers& servers_;
  const std::function<bool()>* stopAsked_;
  std::shared_ptr<Pool> pool_;
};

}  // namespace qrel
