// What every console command works with: the program's parts made ready, and the two streams.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Program.h"
#include "app/mdlMain.h"
#include "console/exitCode.h"
#include "console/stopWatch.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "platform/host/consoleHost.h"
#include "platform/store/folders.h"

namespace qrel {

class EmbeddedProvider;
struct Setting;

// One side of a comparison: a server's record and a database.
struct Side {
  tServer server;
  std::string database;
  bool incomplete = false;  // of its scripts something was left out that isn't allowed to be
  std::string given;        // as it was named on the command line
};

// A request that can't be carried out: what to print and how to end.
struct CommandFailure {
  ExitCode code;
  std::string message;
};

class Console : private MainSteps {
 public:
  Console(const Folders& folders, std::ostream& out, std::ostream& err);

  std::ostream& out;      // results
  std::ostream& err;      // progress and messages
  bool terminal = false;  // `out` is one
  bool colours = false;
  int columns = 130;          // of characters in a row of `out`
  bool asks = false;          // a person at a terminal can be asked for a password
  bool progress = false;      // `err` is a terminal
  bool allowSkipped = false;  // statements of scripts that were skipped or refused leave a side complete
  bool changed = false;       // what was asked for is done, and it has changed something: a stop comes too late
  Folders folders;
  EmbeddedServers servers;
  DataAccess data;
  KeyStore store;
  ConsoleHost host;
  Program program;

  // Starts the program (paths, settings, server list) with settings changed for this run: "OPTION=VALUE" each.
  // Raises RuntimeError when the settings' file is there and can't be read in full.
  void start(const std::vector<std::string>& sets);

  // "SERVER/DATABASE", a .sql file or a folder of them. Scripts are loaded into a temporary database. Throws
  // CommandFailure, and RuntimeError when a profile file that comparisons go by can't be read.
  Side resolveSide(const std::string& text);
  // How scripts are loaded: a stop is asked for, progress is told on a terminal.
  LoadOptions loadOptions();
  // Tells what the loads of a database have left out, as far as that is known; true when it counts.
  bool lacksWhatLoadsSkipped(const std::string& server, const std::string& database);
  // Takes the line of progress away.
  void clearProgress();
  // Raises RuntimeError when a profile file that comparisons go by is there and can't be read.
  void checkProfileFiles();
  // Whether a server of this name is on the list or embedded.
  bool knowsServer(const std::string& name) const;
  // A server by its name in the list, else an embedded instance of that name.
  tServer resolveServer(const std::string& name);

  // Names on `err` what couldn't be read since the start, each failure once.
  void listReadFailures();

  // The number that a setting's value stands for; throws CommandFailure for one that stands for none.
  static std::int32_t settingNumber(const Setting& setting, const std::string& text);

  // The object type code of "tables", "procedures", ...; throws CommandFailure for any other word.
  static long objectType(const std::string& word);

 private:
  bool tellErrorReport(Form& form);
  void LoadServers() override;
  void ShowMainWindow() override {}
  void applySet(const std::string& set);
  Side sideFromScripts(const std::filesystem::path& path);
  bool lessThanLoaded(const LoadLosses& losses) const;

  EmbeddedProvider* embedded_ = nullptr;  // of `data`
};

}  // namespace qrel
