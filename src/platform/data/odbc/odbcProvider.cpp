#include "platform/data/odbc/odbcProvider.h"

#include <mutex>

#include "platform/data/odbc/odbcConnection.h"

namespace qrel {

namespace {

using namespace odbc;

class OdbcProvider : public Provider {
 public:
  OdbcProvider(std::function<OdbcChoices()> choices, const std::function<bool()>* stopAsked)
      : choices_(std::move(choices)), stopAsked_(stopAsked), pool_(std::make_shared<SessionPool>()) {}

  bool serves(const std::string&) const override { return true; }
  bool isLocal() const override { return false; }

  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) override {
    return open(connectionString, choices_ ? choices_() : OdbcChoices{});
  }
  std::function<std::unique_ptr<ProviderConnection>()> opener(const ConnectionString& connectionString) override {
    return [this, connectionString, choices = choices_ ? choices_() : OdbcChoices{}] {
      return open(connectionString, choices);
    };
  }
  std::size_t connectionsAhead() const override { return mostAhead; }

 private:
  static constexpr std::size_t mostAhead = 8;

  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString, const OdbcChoices& choices) {
    const auto [environment, installed] = manager();
    Opening opening;
    opening.stopAsked = stopAsked_;
    try {
      choose(opening, connectionString, choices, installed);
    } catch (DataError& error) {
      forgetDrivers();  // somebody may install one now
      // Whoever misspells an embedded server's name comes here.
      error.description += " An embedded server '" + opening.target.server + "' isn't there either: \"qrel load " +
                           opening.target.server + "/DATABASE FILE\" makes one.";
      throw;
    }
    opening.attempt = attemptOf(opening.driver, opening.target, std::max(choices.loginSeconds, 1));
    return std::make_unique<OdbcConnection>(
        std::make_shared<Road>(environment, pool_, std::move(opening), choices.keepSeconds));
  }

  static void choose(Opening& opening, const ConnectionString& connectionString, const OdbcChoices& choices,
                     const std::vector<std::string>& installed) {
    readTarget(connectionString, opening.target);
    opening.driver = chooseDriver(opening.target.driver.empty() ? choices.driver : opening.target.driver, installed);
    if (opening.target.windows) opening.target.token = choices.token;
    if (!opening.target.token.empty() && opening.driver.family == Family::FreeTds)
      throw DataError(
          errorNumber::cannotConnect,
          "QREL_TOKEN holds an access token, which FreeTDS can't take: install Microsoft's \"ODBC Driver 18 "
          "for SQL Server\" (docs/servers.md), or unset QREL_TOKEN.",
          "08001");
    opening.text = driverText(opening.driver, opening.target);
  }

  // Made when it is first needed: whoever reads embedded servers only never loads a driver. Which drivers there are is
  // read from files, and asked with every query.
  std::pair<std::shared_ptr<Environment>, std::vector<std::string>> manager() {
    const std::lock_guard lock(mutex_);
    if (!environment_) environment_ = std::make_shared<Environment>();
    if (installed_.empty()) installed_ = environment_->drivers();
    return {environment_, installed_};
  }
  void forgetDrivers() {
    const std::lock_guard lock(mutex_);
    installed_.clear();
  }

  std::function<OdbcChoices()> choices_;
  const std::function<bool()>* stopAsked_;
  std::mutex mutex_;
  std::shared_ptr<Environment> environment_;
  std::vector<std::string> installed_;
  std::shared_ptr<SessionPool> pool_;
};

}  // namespace

std::unique_ptr<Provider> makeOdbcProvider(std::function<OdbcChoices()> choices,
                                           const std::function<bool()>* stopAsked) {
  return std::make_unique<OdbcProvider>(std::move(choices), stopAsked);
}

}  // namespace qrel
