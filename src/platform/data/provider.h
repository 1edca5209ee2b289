// What a provider (the embedded server, ODBC) gives to the record sets above it.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/data/value.h"

namespace qrel {

class ColumnStore;
struct ConnectionString;

// One column of a result. `typeName` is the server's type name in lower case, empty for an expression.
struct ColumnInfo {
  std::string name;
  std::string typeName;
  DataType type = DataType::Empty;
  int precision = 0;
  int scale = 0;
};

// The rows of one result, read forwards.
class RowSource {
 public:
  virtual ~RowSource() = default;
  virtual const std::vector<ColumnInfo>& columns() const = 0;
  // Appends up to `most` further rows to the store; returns how many, 0 at the end.
  virtual std::size_t fetch(ColumnStore& store, std::size_t most) = 0;
  // Moves all rows into an empty store when they are here and none was fetched; false: they must be fetched.
  virtual bool takeAll(ColumnStore&) { return false; }
  // Goes back before the first row.
  virtual void rewind() = 0;
  // Number of rows of the whole result; may run the query a second time.
  virtual std::int64_t count() = 0;
};

// What a command asks for.
struct CommandRequest {
  std::string text;               // SQL, or a procedure's name
  int timeoutSeconds = 30;        // 0 waits without end
  std::vector<Value> parameters;  // in order of their creation, without the return value
  bool isProcedure = false;       // the parameters are the procedure's, in order
  std::vector<bool> comesBack{};  // parallel to the parameters: those that are outputs as well; may be shorter
};

struct CommandResult {
  std::unique_ptr<RowSource> rows;  // empty: the command gave no result set
  std::int32_t returnValue = 0;
  std::int64_t recordsAffected = 0;
  std::vector<Value> outputs;  // parallel to CommandRequest::parameters, as they are afterwards
};

// An open connection. Errors are raised as DataError with the numbers of errorNumber.
class ProviderConnection {
 public:
  virtual ~ProviderConnection() = default;
  // Row sources keep what they need of the connection alive.
  virtual CommandResult execute(const CommandRequest& request) = 0;
  // Ends a running execute or fetch from another thread or a signal-safe place; it raises
  // errorNumber::cancelled, "Operation canceled".
  virtual void interrupt() = 0;
  // What a person may want to know of the road to the server ("driver", "encryption", ...), a name and a text each.
  virtual std::vector<std::pair<std::string, std::string>> facts() { return {}; }
};

class Provider {
 public:
  virtual ~Provider() = default;
  // Names of servers that a person can be offered because they are known to be there, in order; empty where none are
  // known without asking around.
  virtual std::vector<std::string> knownServers() const { return {}; }
  // Whether it reaches the server of this name, "(localdb)\" cut off.
  virtual bool serves(const std::string& server) const = 0;
  // Whether servers of this machine's user, "(localdb)\NAME", are among them.
  virtual bool isLocal() const { return true; }
  virtual std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) = 0;
  // The same for later and for any thread: what an opening takes from the program is taken now.
  virtual std::function<std::unique_ptr<ProviderConnection>()> opener(const ConnectionString& connectionString);
  // How many connections of a connection string several threads may use at once, beside the program's own; 0 where a
  // thread of its own is not for this provider.
  virtual std::size_t connectionsAhead() const { return 0; }
  // As long as the result lives, a database stays the one that it is when it is first opened from now on, whatever
  // takes its place meanwhile. Empty where the server itself sees to that.
  virtual std::shared_ptr<void> holdState() { return {}; }
};

}  // namespace qrel
