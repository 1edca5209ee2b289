#include "platform/data/connection.h"

#include <utility>

#include "platform/data/dataAccess.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

void Connection::Open() {
  provider_.reset();
  opensLater_ = dataAccess_->prefetcher().knows(ConnectionString);
  if (!opensLater_) provider_ = dataAccess_->open(ConnectionString);
}

void Connection::Close() {
  provider_.reset();
  opensLater_ = false;
}

const std::shared_ptr<ProviderConnection>& Connection::provider() {
  if (opensLater_) {
    provider_ = dataAccess_->open(ConnectionString);
    opensLater_ = false;
  }
  return provider_;
}

void Connection::Interrupt() {
  if (provider_) provider_->interrupt();
}

namespace {

// An error tells its SQL, whether or not the provider thought of it.
CommandResult execute(ProviderConnection& provider, const CommandRequest& request) {
  try {
    return provider.execute(request);
  } catch (DataError& error) {
    if (error.sql.empty()) error.sql = request.text;
    throw;
  }
}

}  // namespace

CommandResult Command::run() {
  if (!ActiveConnection || ActiveConnection->State() == adStateClosed) {
    throw RuntimeError(errorNumber::objectClosed, "Operation is not allowed when the object is closed.");
  }
  CommandRequest request;
  request.text = CommandText;
  request.timeoutSeconds = CommandTimeout;
  request.isProcedure = CommandType == adCmdStoredProc;
  for (const Parameter& parameter : Parameters) {
    if (parameter.Direction == adParamReturnValue) continue;
    request.parameters.push_back(parameter.Value);
    request.comesBack.push_back(parameter.Direction != adParamInput);
  }
  Prefetcher& ahead = ActiveConnection->dataAccess_->prefetcher();
  CommandResult result;
  result.rows = ahead.take(ActiveConnection->ConnectionString, request);
  if (!result.rows) {
    // What is known by now may be what this changes.
    if (ahead.active() && !Prefetcher::isQuery(request)) ahead.forget();
    result = execute(*ActiveConnection->provider(), request);
  }
  std::size_t next = 0;
  for (Parameter& parameter : Parameters) {
    if (parameter.Direction == adParamReturnValue) {
      parameter.Value = Value::ofInteger(result.returnValue);
      continue;
    }
    const std::size_t index = next++;
    const bool comesBack = parameter.Direction == adParamOutput || parameter.Direction == adParamInputOutput;
    if (comesBack && index < result.outputs.size()) parameter.Value = std::move(result.outputs[index]);
  }
  return result;
}

void Command::Execute() { run(); }

Parameter& Command::parameter(std::string_view name) {
  for (Parameter& parameter : Parameters) {
    if (equalNoCase(parameter.Name, name)) return parameter;
  }
  throw RuntimeError(errorNumber::itemNotFound,
                     "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

}  // namespace qrel
