// Connection, Command and Parameter: what is asked of a server through the data access layer.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/data/provider.h"
#include "platform/data/value.h"

namespace qrel {

class DataAccess;

enum CursorLocation : int { adUseServer = 2, adUseClient = 3 };
enum CommandType : int { adCmdText = 1, adCmdStoredProc = 4 };
enum ObjectState : int { adStateClosed = 0, adStateOpen = 1 };
enum ParameterDirection : int { adParamInput = 1, adParamOutput = 2, adParamInputOutput = 3, adParamReturnValue = 4 };
enum ParameterType : int { adInteger = 3, adDouble = 5, adDate = 7, adBoolean = 11, adVarWChar = 202 };

// A connection to one server and database. Closing it ends nothing for record sets that are still open on it: they keep
// what they need.
class Connection {
 public:
  explicit Connection(DataAccess& dataAccess) : dataAccess_(&dataAccess) {}

  std::string ConnectionString;
  int CursorLocation = adUseServer;

  // Raises DataError 0x80004005 when the server or the database can't be had. Where results were read ahead with this
  // string it opens once something else is asked for; that raises then.
  void Open();
  void Close();
  int State() const { return provider_ || opensLater_ ? adStateOpen : adStateClosed; }
  // Stops a running command or fetch; may be called from a signal handler's thread.
  void Interrupt();
  // Opens what was put off; empty when closed.
  const std::shared_ptr<ProviderConnection>& provider();

 private:
  friend class Command;
  DataAccess* dataAccess_;
  std::shared_ptr<ProviderConnection> provider_;
  bool opensLater_ = false;
};

struct Parameter {
  std::string Name;
  int Type = adVarWChar;
  int Direction = adParamInput;
  long Size = 0;
  qrel::Value Value{};
};

class Command {
 public:
  std::shared_ptr<Connection> ActiveConnection;
  std::string CommandText;
  int CommandType = adCmdText;
  int CommandTimeout = 30;  // seconds
  std::vector<Parameter> Parameters;

  // Runs the command without a result set (a result is thrown away) and fills return value and in/out parameters.
  void Execute();
  // Raises error 3265 when there is no parameter of that name.
  Parameter& parameter(std::string_view name);

 private:
  friend class Recordset;
  CommandResult run();
};

}  // namespace qrel
