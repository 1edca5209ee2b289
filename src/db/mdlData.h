// All traffic with a server: one query, one connection, unless a long run holds one open.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "app/Program.h"
#include "db/SqlText.h"
#include "platform/data/recordset.h"

namespace qrel {

// A record set as the query layer hands it out: empty when the query failed or gave none. The caller owns and closes
// it.
using RecordsetPtr = std::unique_ptr<Recordset>;
using ConnectionPtr = std::shared_ptr<Connection>;

// A parameter's value. std::monostate is an omitted one and adds nothing; tDate is a date field's content or Null.
struct tDate {
  bool null = true;
  std::string text;  // yyyy-mm-dd[ hh:mm:ss]
};
using ParamValue = std::variant<std::monostate, std::string, std::int32_t, double, bool, tDate>;

// What GetAdoRS takes beside its query and gives back beside its record set.
struct AdoExtras {
  std::vector<ParamValue> params;  // input only
  std::vector<ParamValue> outs;    // up to 5, in and out
  std::int32_t errNumber = 0;      // errorNumber::cancelled when the command was stopped
  std::string errDescription;
};

// Runs strSql in strDb on a connection of its own. Returns the command's return value (0 for ordinary text) or -1 on
// any failure, after an error report unless gblnNoConnErrMsg is set or the command was stopped. An empty strSql only
// connects, to the login's default database. With the client-side cursor the record set comes back disconnected. Every
// failure, also of the rows that come later, is noted (readFailures.h); a spoiled strSql fails without being sent.
std::int32_t GetAdoRS(Program& program, const tServer& server, int commandType, const SqlText& strSql, RecordsetPtr& rs,
                      const std::string& strDb, AdoExtras* extras = nullptr);

// How a result that is read ahead will be used; see PrefetchHint.
struct PrefetchUse {
  std::size_t lngSteps = 0;  // of the run, for which it is kept
  bool whole = false;        // all its rows will be held
  std::function<std::vector<PrefetchHint>(const ReadAhead&)> next{};
};

// Has a query read ahead that GetAdoRS will send in these words, or with strConnection the procedure that runs on a
// connection of that string (DataAccess::prefetch). A spoiled strSql is left to whoever sends it.
void PrefetchAdoRS(Program& program, const std::string& strConnection, const SqlText& strSql, PrefetchUse use);
// The hint alone, for what follows from a result; strSql is not spoiled.
PrefetchHint HintOf(const std::string& strConnection, const SqlText& strSql, std::int32_t lngTimeout);

// The same on an open connection, 0 or -1; a failure shows a warning with the command unless gblnNoConnErrMsg is set or
// the command was stopped.
std::int32_t GetAdoRS_Conn(Program& program, const ConnectionPtr& connection, const tServer& server, int commandType,
                           const SqlText& strSql, RecordsetPtr& rs);

// Opens a connection for a long run. A failure is always reported. It knows nothing of LocalDb servers.
bool ADO_Connection_Open(Program& program, ConnectionPtr& connection, const tServer& server, const std::string& strDb);

// Runs a command without a result set on a connection of its own; its return value or -1, after a report in any case.
std::int32_t ExecAdoCmd(Program& program, const tServer& server, int commandType, const SqlText& strSql,
                        const std::string& strDb, AdoExtras* extras = nullptr);

// Runs a statement through EXEC in strDb (WrapSqlInExec changes strSql). False after "Error occured - aborting.".
bool SQL_Execute(Program& program, const tServer& server, const std::string& strDb, std::string& strSql);

// The connection strings, in the two forms that the procedures above send. A value that couldn't be read back as it is
// (a ";" in a password) stands in quotes.
std::string connectionStringForQuery(const tServer& server, const std::string& strDb, bool blnCommandGiven);
std::string connectionStringForRun(const tServer& server, const std::string& strDb);

// Adds one parameter and returns its generated name; an omitted value adds nothing and returns an empty name. A number
// -1 is sent as Null.
std::string AddParameter(Program& program, Command& command, const ParamValue& value, int direction);

// The server's ProductVersion, empty when it can't be had. Silent; noted unless the server doesn't know the question.
std::string GetServerVersion(Program& program, const tServer& server);
// The major version: the number before the first point, 0 for an empty text.
std::int32_t GetVersionNumber(const std::string& strVersion);

// True when a record of the table holds Null in that column. strTable comes bare or as GetExtendedObjectName gives it.
// A failure is False, after its report.
bool NullExistsInColumn(Program& program, const tServer& server, const std::string& strDb, const std::string& strTable,
                        const std::string& strColumn);

// Counts a table's records, trying once more with its schema when the bare name is refused. strTable comes with or
// without brackets; after a second attempt it is the qualified name. -1 after a warning, or at once for an empty name
// and when the count was stopped.
std::int32_t GetNumberOfRecordsInTable(Program& program, tServer& server, std::string& strTable,
                                       const std::string& strDb);

// Reads ahead the count that the procedure above begins with, and the records that GetAdoRS will bring with the
// client-side cursor.
void PrefetchNumberOfRecords(Program& program, const tServer& server, const std::string& strTable,
                             const std::string& strDb);
void PrefetchRecords(Program& program, const tServer& server, const SqlText& strSql, const std::string& strDb);

// Whether the server accepts a query. Silent; only a failure that says nothing about the query is noted.
bool DbCheckSqlSelect(Program& program, const tServer& server, const std::string& strDb, const SqlText& strSql);

// Whether an error number is a server's answer to a query (bad SQL, an unknown name) and not a failure to get one.
bool IsAnswer(std::int32_t errNumber);

// The name in square brackets; a bracket that is there already isn't added again.
std::string AddSquareBrackets(const std::string& strName);

// Sets gblnNoConnErrMsg for a scope; what it was before comes back.
class QuietScope {
 public:
  explicit QuietScope(Program& program) : program_(program), before_(program.mdlData.gblnNoConnErrMsg) {
    program.mdlData.gblnNoConnErrMsg = true;
  }
  ~QuietScope() { restore(); }
  void restore() { program_.mdlData.gblnNoConnErrMsg = before_; }
  QuietScope(const QuietScope&) = delete;
  QuietScope& operator=(const QuietScope&) = delete;

 private:
  Program& program_;
  bool before_;
};

// True when the record set is there and holds at least one record.
bool hasRecords(const RecordsetPtr& rs);

}  // namespace qrel
