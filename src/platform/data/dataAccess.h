// The data access layer as one object: which providers there are and which one a connection string means.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/data/prefetcher.h"
#include "platform/data/provider.h"

namespace qrel {

class DataAccess {
 public:
  // QREL_PREFETCH=0 in the environment switches reading ahead off, another number is the most connections for it.
  DataAccess();
  DataAccess(const DataAccess&) = delete;
  DataAccess& operator=(const DataAccess&) = delete;

  // Whoever puts the program together hands the providers over. Of several that serve a server the first one is asked.
  // One that isn't there is left out.
  void add(std::unique_ptr<Provider> provider) {
    if (provider) providers_.push_back(std::move(provider));
  }

  // The servers that the providers know to be there, in their order, each name once.
  std::vector<std::string> knownServers() const;

  // Asked every few milliseconds while a command runs or its rows come. It may let the window system run, but must
  // run nothing on the same connection. True ends the command or the fetch with "Operation canceled".
  std::function<bool()> stopAsked;
  // What a provider asks: stopAsked, but on a thread that reads ahead only whether that is to end.
  const std::function<bool()>* providerStop() const { return &providerStop_; }

  // The layer's own version, as a number ("2.8"); 0 would mean that no driver is present.
  double version() const { return 2.8; }

  // SQLNCLI11 with (localdb)\Name is the server Name, SQLOLEDB.1 the server of the name as it stands. (localdb)\Name
  // through SQLOLEDB.1, a server that no provider serves and an unknown provider raise 0x80004005 with a sentence that
  // says what to do.
  std::unique_ptr<ProviderConnection> open(const std::string& connectionString);

  // For the length of one comparison, or of one command of the console: as long as the result lives, each database is
  // read as it was when it was first opened from now on, also when a load puts another one in its place. Afterwards the
  // next connection sees what is there. May be nested.
  [[nodiscard]] std::shared_ptr<void> holdState();

  // Reading ahead, for as long as a state is held: a query that will be sent on a connection with this string, in the
  // very words, is run by another thread now. Nothing changes but the time it takes: an answer, a failure and the
  // moment when they are told come when the query itself is sent. Ignored where no state is held.
  void prefetch(PrefetchHint hint) { prefetcher_.hint(std::move(hint)); }
  bool readsAhead() const { return prefetcher_.active(); }
  Prefetcher& prefetcher() { return prefetcher_; }

  // Puts a provider of the caller's in the place of each one here; `wrap` is given the present one. For measuring.
  void wrapProviders(const std::function<std::unique_ptr<Provider>(std::unique_ptr<Provider> inner)>& wrap) {
    for (auto& provider : providers_) provider = wrap(std::move(provider));
  }

 private:
  // The provider that serves the connection string; its server comes back as the provider knows it.
  Provider& serving(ConnectionString& connectionString) const;
  Prefetcher::Opening openingAhead(const std::string& text) const;

  std::function<bool()> providerStop_;
  std::vector<std::unique_ptr<Provider>> providers_;
  Prefetcher prefetcher_;  // ends its threads before the providers go
};

}  // namespace qrel
