#include "platform/data/dataAccess.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <string_view>

#include "platform/data/connectionString.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {
namespace {

constexpr std::string_view localDbPrefix = "(localdb)\\";
constexpr const char* loginRefused = "08001";  // SQLSTATE of a connection that can't be had

[[noreturn]] void refuse(std::string message) {
  throw DataError(errorNumber::cannotConnect, std::move(message), loginRefused);
}

bool startsNoCase(std::string_view text, std::string_view prefix) {
  return equalNoCase(text.substr(0, prefix.size()), prefix);
}

std::string missingServer(const std::string& name, const std::string& database, bool others) {
  const std::string side = name + "/" + (database.empty() ? "DATABASE" : database);
  return "SQL Server '" + name +
         "' does not exist or access denied. There is no embedded server of that name: make one " +
         "with \"qrel load " + side + " FILE\"" + (others ? "." : "; this build has no ODBC provider.");
}

}  // namespace

std::function<std::unique_ptr<ProviderConnection>()> Provider::opener(const ConnectionString& connectionString) {
  return [this, connectionString] { return open(connectionString); };
}

DataAccess::DataAccess()
    : providerStop_([this] {
        if (const std::function<bool()>* ahead = stopOfPrefetchThread()) return (*ahead)();
        return stopAsked && stopAsked();
      }),
      prefetcher_([this](const std::string& text) { return openingAhead(text); }, stopAsked) {
  const char* wanted = std::getenv("QREL_PREFETCH");
  if (!wanted) return;
  const std::string_view text = wanted;
  std::size_t most = 0;
  if (std::from_chars(text.data(), text.data() + text.size(), most).ec == std::errc()) prefetcher_.setMost(most);
}

std::vector<std::string> DataAccess::knownServers() const {
  std::vector<std::string> names;
  for (const auto& provider : providers_)
    for (std::string& name : provider->knownServers())
      if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
  return names;
}

std::shared_ptr<void> DataAccess::holdState() {
  struct Held {
    std::vector<std::shared_ptr<void>> states;
    std::shared_ptr<void> ahead;  // goes first
  };
  auto held = std::make_shared<Held>();
  for (const auto& provider : providers_) held->states.push_back(provider->holdState());
  held->ahead = prefetcher_.begin();
  return held;
}

std::unique_ptr<ProviderConnection> DataAccess::open(const std::string& text) {
  ConnectionString connectionString = ConnectionString::parse(text);
  return serving(connectionString).open(connectionString);
}

// A string by which nothing can be opened is told by the one who opens it.
Prefetcher::Opening DataAccess::openingAhead(const std::string& text) const {
  try {
    ConnectionString connectionString = ConnectionString::parse(text);
    Provider& provider = serving(connectionString);
    if (provider.connectionsAhead() == 0) return {};
    return {provider.opener(connectionString), provider.connectionsAhead()};
  } catch (const std::exception&) {
    return {};
  }
}

Provider& DataAccess::serving(ConnectionString& connectionString) const {
  const std::string provider = connectionString.provider();
  const bool native = startsNoCase(provider, "SQLNCLI11");
  if (!native && !startsNoCase(provider, "SQLOLEDB")) {
    refuse("Provider '" + provider + "' cannot be found. Use SQLOLEDB.1, or SQLNCLI11 for (localdb) servers.");
  }
  std::string server = connectionString.server();
  const bool local = startsNoCase(server, localDbPrefix);
  if (local) {
    if (!native) {
      refuse("SQL Server '" + server +
             "' does not exist or access denied. Provider SQLOLEDB.1 cannot reach (localdb) " +
             "servers: mark the server as LocalDB.");
    }
    server.erase(0, localDbPrefix.size());
  }
  if (server.empty()) refuse("No server name was given: the connection string has no Data Source.");
  const auto found = std::find_if(providers_.begin(), providers_.end(), [&](const auto& each) {
    return (!local || each->isLocal()) && each->serves(server);
  });
  if (found == providers_.end()) refuse(missingServer(server, connectionString.database(), local));
  connectionString.pairs.emplace_back("Data Source", server);
  return **found;
}

}  // namespace qrel
