#include "db/mdlData.h"

#include <random>

#include "app/trap.h"
#include "db/modObjectText.h"
#include "db/modSchema.h"
#include "db/readFailures.h"
#include "platform/data/connectionString.h"
#include "platform/text.h"

namespace qrel {

namespace {

// What an ODBC driver is told of this server beside the usual.
std::string roadPart(const tServer& server) {
  std::string text;
  if (!server.Encrypt.empty()) text += ";Encrypt=" + ConnectionString::quoted(server.Encrypt);
  if (server.TrustServerCertificate) text += ";TrustServerCertificate=yes";
  if (!server.OdbcDriver.empty()) text += ";OdbcDriver=" + ConnectionString::quoted(server.OdbcDriver);
  return text;
}

std::string loginPart(const tServer& server) {
  if (!server.SQLAuth) return "Integrated Security=SSPI" + roadPart(server);
  return "Password=" + ConnectionString::quoted(server.Password) +
         ";User ID=" + ConnectionString::quoted(server.LoginName) + roadPart(server);
}

ConnectionPtr openConnection(Program& program, const std::string& connectionString) {
  auto connection = std::make_shared<Connection>(program.data);
  connection->ConnectionString = connectionString;
  connection->CursorLocation = program.settings.glngCursorLocation;
  connection->Open();
  return connection;
}

Command makeCommand(Program& program, const ConnectionPtr& connection, int commandType, const SqlText& strSql) {
  Command command;
  command.ActiveConnection = connection;
  command.CommandText = strSql.text();
  command.CommandType = commandType;
  command.CommandTimeout = program.settings.Timeout;
  Parameter result;
  result.Name = "Return";
  result.Type = adInteger;
  result.Direction = adParamReturnValue;
  command.Parameters.push_back(result);
  return command;
}

// Adds the given values; returns the names generated for the in/out ones.
std::vector<std::string> addValues(Program& program, Command& command, const AdoExtras* extras) {
  std::vector<std::string> names;
  if (!extras) return names;
  for (const ParamValue& value : extras->params) AddParameter(program, command, value, adParamInput);
  for (const ParamValue& value : extras->outs)
    names.push_back(AddParameter(program, command, value, adParamInputOutput));
  return names;
}

ParamValue outputOf(const Value& value, const ParamValue& before) {
  if (std::holds_alternative<tDate>(before)) return tDate{value.null, value.null ? "" : textOf(value.cell())};
  if (value.null) return tDate{};
  if (std::holds_alternative<std::int32_t>(before)) return integerOf(value.cell());
  if (std::holds_alternative<double>(before))
    return value.type == DataType::Double ? value.real : static_cast<double>(integerOf(value.cell()));
  if (std::holds_alternative<bool>(before)) return value.integer != 0;
  return textOf(value.cell());
}

void readOutputs(Command& command, const std::vector<std::string>& names, AdoExtras* extras) {
  for (std::size_t i = 0; i < names.size(); ++i)
    if (!names[i].empty()) extras->outs[i] = outputOf(command.parameter(names[i]).Value, extras->outs[i]);
}

std::int32_t returnValueOf(Command& command) {
  const Value& value = command.parameter("Return").Value;
  return value.null ? 0 : static_cast<std::int32_t>(value.integer);
}

void noteFailure(Program& program, const std::string& strServer, const std::string& strDb, const ErrorInfo& info) {
  if (info.number != errorNumber::cancelled) NoteReadFailure(program, strServer, strDb, info.description);
}

// Opens the record set of a command under the current settings. Rows that fail to come later are noted.
RecordsetPtr openRecordset(Program& program, Command& command, const std::string& strServer, const std::string& strDb) {
  auto rs = std::make_unique<Recordset>();
  // What fails while it opens is told by whoever opens it.
  const auto opened = std::make_shared<bool>(false);
  rs->onReadFailed = [&program, strServer, strDb, opened](const std::exception& error) {
    if (*opened) noteFailure(program, strServer, strDb, describeError(error));
  };
  rs->CursorLocation = program.settings.glngCursorLocation;
  if (program.settings.glngCursorLocation == adUseServer)
    rs->CacheSize = static_cast<std::size_t>(std::max(program.settings.CacheSize, 1));
  rs->Open(command);
  *opened = true;
  if (rs->State() == adStateOpen && program.settings.glngCursorLocation == adUseClient) {
    rs->Disconnect();
    rs->MarshalOptions = 1;
  }
  return rs;
}

}  // namespace

std::string connectionStringForQuery(const tServer& server, const std::string& strDb, bool blnCommandGiven) {
  const std::string strName = ConnectionString::quoted(server.Name);
  std::string text = server.LocalDb ? "Provider=SQLNCLI11;Server=" + strName + ";"
                                    : "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=" + strName + ";";
  if (blnCommandGiven) text += "Initial Catalog=" + ConnectionString::quoted(strDb) + ";";
  return text + loginPart(server);
}

std::string connectionStringForRun(const tServer& server, const std::string& strDb) {
  return "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=" + ConnectionString::quoted(server.Name) +
         ";Initial Catalog=" + ConnectionString::quoted(strDb) + ";" + loginPart(server);
}

std::int32_t GetAdoRS(Program& program, const tServer& server, int commandType, const SqlText& strSql, RecordsetPtr& rs,
                      const std::string& strDb, AdoExtras* extras) {
  const PointerScope pointer(program.host, Pointer::Hourglass);
  rs.reset();
  try {
    strSql.text();  // a spoiled one isn't worth a connection
    const ConnectionPtr connection = openConnection(program, connectionStringForQuery(server, strDb, !strSql.empty()));
    if (strSql.empty()) return 0;
    Command command = makeCommand(program, connection, commandType, strSql);
    const std::vector<std::string> names = addValues(program, command, extras);
    rs = openRecordset(program, command, server.Name, strDb);
    const std::int32_t result = returnValueOf(command);
    readOutputs(command, names, extras);
    if (program.settings.glngCursorLocation == adUseClient) connection->Close();
    return result;
  } catch (const std::exception& error) {
    rs.reset();
    const ErrorInfo info = describeError(error);
    if (extras) {
      extras->errNumber = info.number;
      extras->errDescription = info.description;
    }
    noteFailure(program, server.Name, strDb, info);
    // Who stopped the command knows it.
    if (!program.mdlData.gblnNoConnErrMsg && info.number != errorNumber::cancelled)
      ShowErrorReport(
          program, info.number, info.description, "mdlData", "GetAdoRS",
          "Server connection failed; cursor location = " + std::to_string(program.settings.glngCursorLocation));
    return -1;
  }
}

PrefetchHint HintOf(const std::string& strConnection, const SqlText& strSql, std::int32_t lngTimeout) {
  PrefetchHint hint;
  hint.connectionString = strConnection;
  hint.sql = strSql.text();
  hint.timeoutSeconds = lngTimeout;
  return hint;
}

void PrefetchAdoRS(Program& program, const std::string& strConnection, const SqlText& strSql, PrefetchUse use) {
  if (!program.data.readsAhead()) return;
  try {
    PrefetchHint hint = HintOf(strConnection, strSql, program.settings.Timeout);
    hint.keepSteps = use.lngSteps;
    hint.whole = use.whole;
    hint.next = std::move(use.next);
    program.data.prefetch(std::move(hint));
  } catch (const DataError&) {
    // It is told when it would be sent.
  }
}

std::int32_t GetAdoRS_Conn(Program& program, const ConnectionPtr& connection, const tServer& server, int commandType,
                           const SqlText& strSql, RecordsetPtr& rs) {
  rs.reset();
  const std::string strDb = connection ? ConnectionString::parse(connection->ConnectionString).database() : "";
  try {
    Command command = makeCommand(program, connection, commandType, strSql);
    rs = openRecordset(program, command, server.Name, strDb);
    return 0;
  } catch (const std::exception& error) {
    rs.reset();
    const ErrorInfo info = describeError(error);
    noteFailure(program, server.Name, strDb, info);
    if (!program.mdlData.gblnNoConnErrMsg && info.number != errorNumber::cancelled)
      program.host.messageBox("Server connection failed.\r\n\r\nRun time error: " + std::to_string(info.number) +
                                  "\r\n" + info.description + "\r\n\r\nCommand failed: \r\n\r\n" + strSql.shown(),
                              Icon::Warning);
    return -1;
  }
}

namespace {

// Runs the body; what it raises is noted and goes on.
template <class Body>
auto noting(Program& program, const tServer& server, const std::string& strDb, Body&& body) {
  try {
    return body();
  } catch (const std::exception& error) {
    noteFailure(program, server.Name, strDb, describeError(error));
    throw;
  }
}

}  // namespace

bool ADO_Connection_Open(Program& program, ConnectionPtr& connection, const tServer& server, const std::string& strDb) {
  connection.reset();
  return trap(program, "mdlData", "ADO_Connection_Open", false, [&] {
    return noting(program, server, strDb, [&] {
      connection = openConnection(program, connectionStringForRun(server, strDb));
      return true;
    });
  });
}

std::int32_t ExecAdoCmd(Program& program, const tServer& server, int commandType, const SqlText& strSql,
                        const std::string& strDb, AdoExtras* extras) {
  return trap(program, "mdlData", "ExecAdoCmd", std::int32_t{-1}, [&] {
    return noting(program, server, strDb, [&] {
      strSql.text();  // a spoiled one isn't worth a connection
      const ConnectionPtr connection = openConnection(program, connectionStringForRun(server, strDb));
      Command command = makeCommand(program, connection, commandType, strSql);
      const std::vector<std::string> names = addValues(program, command, extras);
      command.Execute();
      const std::int32_t result = returnValueOf(command);
      readOutputs(command, names, extras);
      connection->Close();
      return result;
    });
  });
}

bool SQL_Execute(Program& program, const tServer& server, const std::string& strDb, std::string& strSql) {
  const std::string strWrapped = WrapSqlInExec(strSql, strDb);
  if (ExecAdoCmd(program, server, adCmdText, SqlText::ofExec(strWrapped, strDb), strDb) != -1) return true;
  program.host.messageBox("Error occured - aborting.");
  return false;
}

namespace {

std::string randomSuffix() { return std::to_string(std::random_device{}()); }

// Direction input sizes a text by its length; the others leave room for an answer.
long textSize(const std::string& text, int direction) {
  const long length = static_cast<long>(characterCount(text));
  if (direction == adParamInput) return length > 0 ? length : 1;
  return length > 255 ? length : 255;
}

Parameter parameterOf(const ParamValue& value, int direction) {
  Parameter parameter;
  parameter.Direction = direction;
  if (const auto* text = std::get_if<std::string>(&value)) {
    parameter.Name = "str";
    parameter.Type = adVarWChar;
    parameter.Size = textSize(*text, direction);
    parameter.Value = Value::ofText(*text);
  } else if (const auto* number = std::get_if<std::int32_t>(&value)) {
    parameter.Name = "lng";
    parameter.Type = adInteger;
    if (*number != -1) parameter.Value = Value::ofInteger(*number);
  } else if (const auto* real = std::get_if<double>(&value)) {
    parameter.Name = "dbl";
    parameter.Type = adDouble;
    if (*real != -1) parameter.Value = Value::ofDouble(*real);
  } else if (const auto* flag = std::get_if<bool>(&value)) {
    parameter.Name = "bln";
    parameter.Type = adBoolean;
    parameter.Value = Value::ofBoolean(*flag);
  } else {
    const tDate& date = std::get<tDate>(value);
    parameter.Name = "dtm";
    parameter.Type = adDate;
    if (!date.null) {
      parameter.Value = Value::ofText(date.text);
      parameter.Value.type = DataType::Date;
    }
  }
  return parameter;
}

}  // namespace

std::string AddParameter(Program&, Command& command, const ParamValue& value, int direction) {
  if (std::holds_alternative<std::monostate>(value)) return {};
  Parameter parameter = parameterOf(value, direction);
  parameter.Name += randomSuffix();
  command.Parameters.push_back(parameter);
  return parameter.Name;
}

bool IsAnswer(std::int32_t errNumber) {
  return errNumber == errorNumber::badSql || errNumber == errorNumber::invalidObjectName;
}

namespace {

void noteUnlessAnswer(Program& program, const tServer& server, const std::string& strDb, const AdoExtras& extras) {
  if (!IsAnswer(extras.errNumber)) noteFailure(program, server.Name, strDb, {extras.errNumber, extras.errDescription});
}

}  // namespace

std::string GetServerVersion(Program& program, const tServer& server) {
  const QuietScope quiet(program);
  RecordsetPtr rs;
  AdoExtras extras;
  {
    const AskedScope asked(program);
    GetAdoRS(program, server, adCmdText, "SELECT serverproperty('ProductVersion') AS ServerVer", rs, "Master", &extras);
  }
  if (!rs) noteUnlessAnswer(program, server, "Master", extras);
  if (!hasRecords(rs)) return {};
  return rs->Fields("ServerVer").Text();
}

std::int32_t GetVersionNumber(const std::string& strVersion) {
  const std::string_view trimmed = trimBlanks(strVersion);
  return numericPrefix(trimmed.substr(0, trimmed.find('.')));
}

bool hasRecords(const RecordsetPtr& rs) { return rs && rs->State() == adStateOpen && !(rs->Bof() && rs->Eof()); }

bool NullExistsInColumn(Program& program, const tServer& server, const std::string& strDb, const std::string& strTable,
                        const std::string& strColumn) {
  return trap(program, "mdlData", "NullExistsInColumn", false, [&] {
    RecordsetPtr rs;
    SqlText strSql = "IF EXISTS (SELECT TOP (1) ";
    strSql << inBrackets(strColumn) << " FROM " << asName(strTable) << " WHERE " << inBrackets(strColumn)
           << "  IS NULL) SELECT 1 ELSE SELECT 0";
    if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb) == -1 || !hasRecords(rs)) return false;
    const Field field = rs->Fields(0);
    return !field.IsNull() && integerOf(field.cell) == 1;
  });
}

std::string AddSquareBrackets(const std::string& strName) {
  std::string name = strName;
  if (name.empty() || name.front() != '[') name.insert(name.begin(), '[');
  if (name.back() != ']') name += ']';
  return name;
}

namespace {

SqlText countQuery(const std::string& strTable) {
  SqlText strSql = "SELECT COUNT(*) AS RecsCount FROM ";
  return strSql << asName(strTable);
}

}  // namespace

void PrefetchNumberOfRecords(Program& program, const tServer& server, const std::string& strTable,
                             const std::string& strDb) {
  if (!strTable.empty())
    PrefetchAdoRS(program, connectionStringForQuery(server, strDb, true), countQuery(strTable), {});
}

void PrefetchRecords(Program& program, const tServer& server, const SqlText& strSql, const std::string& strDb) {
  PrefetchAdoRS(program, connectionStringForQuery(server, strDb, true), strSql, {.whole = true});
}

std::int32_t GetNumberOfRecordsInTable(Program& program, tServer& server, std::string& strTable,
                                       const std::string& strDb) {
  if (strTable.empty()) return -1;
  const QuietScope quiet(program);
  RecordsetPtr rs;
  AdoExtras extras;
  const auto count = [&](const std::string& strName) {
    // The first attempt only asks whether the name will do.
    const AskedScope asked(program);
    return GetAdoRS(program, server, adCmdText, countQuery(strName), rs, strDb, &extras);
  };
  std::int32_t result = count(strTable);
  if (extras.errNumber == errorNumber::cancelled) return -1;
  if (result == -1) {
    std::string strQualified;
    if (SchemaPrefixNeeded(program, server, strTable, strQualified, strDb, extras.errNumber)) {
      result = count(strQualified);
      strTable = strQualified;
    }
  }
  if (result == -1 || !hasRecords(rs)) {
    noteFailure(program, server.Name, strDb, {extras.errNumber, extras.errDescription});
    program.host.messageBox("Error while attempting to count records in table: " + extras.errDescription,
                            Icon::Warning);
    return -1;
  }
  return integerOf(rs->Fields("RecsCount").cell);
}

bool DbCheckSqlSelect(Program& program, const tServer& server, const std::string& strDb, const SqlText& strSql) {
  const QuietScope quiet(program);
  RecordsetPtr rs;
  AdoExtras extras;
  {
    const AskedScope asked(program);
    if (GetAdoRS(program, server, adCmdText, strSql, rs, strDb, &extras) != -1) return true;
  }
  noteUnlessAnswer(program, server, strDb, extras);
  return false;
}

}  // namespace qrel
