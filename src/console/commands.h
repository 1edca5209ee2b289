// The console's commands, one file each. Each takes its arguments as parsed and returns the exit code; it may throw
// CommandFailure, RuntimeError or DataError, which the caller tells on stderr.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "console/console.h"
#include "console/forms/runForms.h"
#include "console/savedProcess.h"

namespace qrel {

struct LoadArguments {
  std::string target;  // SERVER/DATABASE
  std::vector<std::string> paths;
  bool replace = false;
  bool add = false;
  bool versionGiven = false;
  std::string version;
  std::vector<std::string> variables;  // NAME=VALUE
};
ExitCode runLoad(Console& console, const LoadArguments& arguments);

struct AddServerArguments {
  std::string name;
  std::string database = "master";
  std::string login;
  bool localDb = false;
  std::string encrypt;  // "yes", "no", "strict"; empty: yes
  std::string driver;   // of ODBC; empty: the one for all
  std::string port;
  bool trustCertificate = false;
};
ExitCode runServers(Console& console);
ExitCode runServersAdd(Console& console, const AddServerArguments& arguments);
// Asks first unless told `yes`; throws CommandFailure where nobody can be asked.
ExitCode runServersRemove(Console& console, const std::string& name, bool yes);
// Connects and tells over which road, how fast, and to what.
ExitCode runServersTest(Console& console, const std::string& name);

ExitCode runDatabases(Console& console, const std::string& server);
ExitCode runObjects(Console& console, const std::string& side, const std::string& type);
// Lines end with LF, with `crlf` as in the text.
ExitCode runText(Console& console, const std::string& side, const std::string& type, const std::string& name,
                 bool crlf);
// All options; with a name that one alone, after it has been given the value.
ExitCode runOptions(Console& console, const std::string& name, const std::optional<std::string>& value);

struct CompareArguments {
  std::string source, target;
  std::string schemas[2];  // comma-separated, of Source and Target; empty: all
  // One pair:
  std::string type;
  std::vector<std::string> objects;  // the Source's name, and the Target's when it is another
  bool aligned = false;              // both texts in two columns
  bool unified = false;              // a patch instead of the report
  int context = 3;                   // its lines around a change
  // Whole databases:
  std::string types = "all";  // comma-separated
  bool details = false;
  std::vector<std::string> only;
  std::string report;  // file
  RunForms forms;
  SaveArguments save;
};
ExitCode runComparePair(Console& console, const CompareArguments& arguments);
ExitCode runCompareAll(Console& console, const CompareArguments& arguments);

// Where a table is written to besides the output.
struct ExportArguments {
  std::string html, csv;  // files; at most one of them
  bool quote = false;     // of CSV: every value between quotation marks
  bool rfc4180 = false;   // of CSV: quotation marks where a value needs them, doubled within
  const std::string& path() const { return html.empty() ? csv : html; }
};

struct DataArguments {
  std::string source, target;
  std::vector<std::string> tables;
  std::string selected;           // or several in one report, with commas between
  bool all = false;               // or all in one report
  std::string report;             // file of that report
  RunForms forms;                 // of that run
  bool validate = false;          // test the keys of a single table instead
  std::string targetTable;        // of a single table; empty: the same name
  std::string keys[2];            // column names with commas between, of Source and Target; a pair with no Target's
  std::string sorts[2];           // uses the Source's
  std::optional<int> offsets[2];  // 1-based first record
  ExportArguments differences;    // what the differences are written to
  bool vertical = false;          // the rows with a line per value
  bool onlyDiffering = false;     // without columns that are the same
  SaveArguments save;
  bool given() const {  // any of keys, sorts and offsets
    return !keys[0].empty() || !keys[1].empty() || !sorts[0].empty() || !sorts[1].empty() || offsets[0] || offsets[1];
  }
};
// Table by table, each with what differs.
ExitCode runData(Console& console, const DataArguments& arguments);
// Many tables, one report.
ExitCode runDataAll(Console& console, const DataArguments& arguments);
// Whether the key tells the records of each side apart.
ExitCode runValidate(Console& console, const DataArguments& arguments);

struct TableArguments {
  std::string side, table;
  std::optional<std::int32_t> rows;  // at most so many records
  bool least = false;                // the least frequent values
  ExportArguments shown;             // what is shown is written to it
};
ExitCode runAnalyze(Console& console, const TableArguments& arguments);
ExitCode runView(Console& console, const TableArguments& arguments);

struct ScriptArguments {
  std::string source;
  std::string second;  // the object's name; with a table the Target
  std::string type;
  std::string table;        // for an update script; empty: a CREATE statement
  std::string targetTable;  // empty: the same name
};
ExitCode runScript(Console& console, const ScriptArguments& arguments);

struct ReferencesArguments {
  std::string side;
  std::string name;  // of one object
  std::string type;
  bool all = false;   // or all objects of the type, or of all types
  bool sure = false;  // leave out what can be explained otherwise
};
ExitCode runReferences(Console& console, const ReferencesArguments& arguments);

struct RunArguments {
  std::string process;     // name or id
  std::string exportFile;  // instead of the stored one
  std::string format;      // html, csv, report
};
ExitCode runProcess(Console& console, const RunArguments& arguments);
ExitCode runProcesses(Console& console, bool json);
ExitCode runProcessesShow(Console& console, const std::string& name);
ExitCode runProcessesRemove(Console& console, const std::string& name);

// Parses the command line and runs the command.
int runConsole(int argc, const char* const* argv, std::ostream& out, std::ostream& err);

}  // namespace qrel
