#include "console/console.h"

#include <csignal>
#include <cstdlib>
#include <ostream>

#include "app/settings.h"
#include "compare/structure/modIgnoreColumns.h"
#include "console/loadReport.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "platform/data/embedded/loader.h"
#include "platform/store/profileFile.h"
#include "platform/text.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

volatile std::sig_atomic_t stopSignal = 0;

extern "C" void noteStop(int) {
  if (stopSignal) std::_Exit(static_cast<int>(ExitCode::Stopped));  // asked twice: at once
  stopSignal = 1;
}

bool isScript(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored) || lowerCase(path.extension().string()) == ".sql";
}

}  // namespace

bool stopRequested() { return stopSignal != 0; }

void watchForStop() {
  std::signal(SIGINT, noteStop);
  std::signal(SIGTERM, noteStop);
}

Console::Console(const Folders& where, std::ostream& results, std::ostream& messages)
    : out(results),
      err(messages),
      folders(where),
      servers(where.servers),
      data(servers),
      store(where.settings),
      host(messages),
      program(host, data, store) {
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  ConnectIgnoredColumns(program);
}

void Console::LoadServers() { qrel::LoadServers(program); }

void Console::applySet(const std::string& set) {
  const std::size_t equals = set.find('=');
  const Setting* setting = findSetting(set.substr(0, equals));
  if (equals == std::string::npos || !setting)
    throw CommandFailure{ExitCode::Usage,
                         "--set " + set + ": expected OPTION=VALUE with an option of \"qrel options\"."};
  const std::string value = lowerCase(set.substr(equals + 1));
  const bool digits = !value.empty() && value.find_first_not_of("0123456789") == std::string::npos && value.size() < 10;
  std::int32_t number = 0;
  if (digits)
    number = numericPrefix(value);
  else if (setting->kind == SettingKind::Flag && (value == "on" || value == "true" || value == "yes"))
    number = 1;
  else if (setting->kind != SettingKind::Flag || (value != "off" && value != "false" && value != "no"))
    throw CommandFailure{ExitCode::Usage, "--set " + set + ": expected a number" +
                                              (setting->kind == SettingKind::Flag ? ", on or off." : ".")};
  store.setOverride(settingKey(*setting), setting->name, number);
}

void Console::start(const std::vector<std::string>& sets) {
  // Comparing under other options than those that were set would be a wrong answer; not remembering the last database
  // is none.
  store.check();
  program.state<SaveByTheWayState>().blnTold = true;
  for (const std::string& set : sets) applySet(set);
  Main(program, *this);
  host.setPointer(Pointer::Default);
}

tServer Console::resolveServer(const std::string& name) {
  for (const bool exact : {true, false}) {
    for (const tServer& listed : program.servers.gtypServers) {
      if (exact ? listed.Name != name : !equalNoCase(listed.Name, name)) continue;
      tServer server = listed;
      const char* password = std::getenv("QREL_PASSWORD");
      if (server.SQLAuth && server.Password.empty() && password) server.Password = password;
      return server;
    }
  }
  tServer server;
  server.Name = name;
  server.LocalDb = lowerCase(name).starts_with("(localdb)\\");
  return server;
}

Side Console::resolveSide(const std::string& text) {
  // What these files say decides what is compared: one that can't be read ends the command before it begins.
  const mdlMainState& main = program.main;
  for (const std::string* file :
       {&main.gstrIgnoredColsStructIni, &main.gstrIgnoredColsDataIni, &main.gstrTablesCompsIni})
    ProfileFile::read(*file);
  std::error_code ignored;
  if (fs::exists(text, ignored) && isScript(text)) return sideFromScripts(text);
  const std::size_t slash = text.find('/');
  if (slash == std::string::npos || slash == 0 || slash + 1 == text.size() || lowerCase(text).ends_with(".sql"))
    throw CommandFailure{lowerCase(text).ends_with(".sql") ? ExitCode::CannotRead : ExitCode::Usage,
                         "\"" + text + "\" is neither SERVER/DATABASE nor a .sql file or a folder that exists."};
  return {resolveServer(text.substr(0, slash)), text.substr(slash + 1), false};
}

Side Console::sideFromScripts(const fs::path& path) {
  Side side;
  side.server.Name = servers.createTemporary();
  const fs::path named = path.has_filename() ? path : path.parent_path();
  side.database = fs::is_directory(path) ? named.filename().string() : named.stem().string();
  LoadOptions options;
  options.stop = stopRequested;
  const LoadReport report = loadScripts(servers, side.server.Name, side.database, {path}, options);
  if (report.stopped) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  listSkipped(err, report);
  side.incomplete = !report.skipped.empty() || !report.failed.empty();
  return side;
}

long Console::objectType(const std::string& word) {
  for (const long type :
       {objTables, objProcedures, objFunctions, objViews, objTriggers, objRelationships, objConstraints})
    if (equalNoCase(word, GetObjectTypeName(type, false)) || equalNoCase(word, GetObjectTypeName(type, true)))
      return type;
  throw CommandFailure{ExitCode::Usage, "\"" + word +
                                            "\" is no type: expected tables, procedures, functions, views, triggers, "
                                            "relationships or constraints."};
}

}  // namespace qrel
