#include "console/console.h"

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <set>

#include "app/frmErrorReport.h"
#include "app/settings.h"
#include "compare/structure/modIgnoreColumns.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/mdlServers.h"
#include "db/odbcChoices.h"
#include "db/readFailures.h"
#include "embedded/embeddedProvider.h"
#include "embedded/load/loadReport.h"
#include "embedded/load/sqlProject.h"
#include "platform/error.h"
#include "platform/store/profileFile.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t longestDatabaseName = 128;

bool isScript(const fs::path& path) {
  std::error_code ignored;
  return fs::is_directory(path, ignored) || equalNoCase(path.extension().string(), ".sql") || isSqlProject(path);
}

bool namesScript(const std::string& text) {
  return lowerCase(text).ends_with(".sql") || lowerCase(text).ends_with(".sqlproj");
}

// Whether it can't be SERVER/DATABASE, whichever servers there are.
bool namesPath(const std::string& text) {
  return namesScript(text) || text == "." || text == ".." || text.starts_with("./") || text.starts_with("../") ||
         text.starts_with('/') || text.starts_with('~') || text.ends_with('/');
}

// A name that only servers have: HOST,PORT, HOST\INSTANCE, (localdb)\NAME, tcp:HOST.
bool looksLikeServer(const std::string& name) { return name.find_first_of(",\\:") != std::string::npos; }

// The name of a temporary database: that of the file or folder, as far as a database may have it.
std::string databaseNameOf(const fs::path& path) {
  std::error_code ignored;
  const fs::path whole = fs::canonical(path, ignored);  // "." and "folder/" have no name of their own
  const fs::path named = path.stem().string().find_first_not_of('.') == std::string::npos ? whole : path;
  std::string name = (fs::is_directory(path, ignored) ? named.filename() : named.stem()).string();
  name.erase(0, std::min(name.find_first_not_of('.'), name.size()));
  for (char& c : name)
    if (c == ':' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F) c = '_';
  while (name.size() > longestDatabaseName) name = leftCharacters(name, characterCount(name) - 1);
  return name.empty() ? "scripts" : name;
}

}  // namespace

Console::Console(const Folders& where, std::ostream& results, std::ostream& messages)
    : out(results),
      err(messages),
      folders(where),
      servers(where.servers),
      store(where.settings),
      host(messages),
      program(host, data, store) {
  auto provider = std::make_unique<EmbeddedProvider>(servers, data.providerStop());
  embedded_ = provider.get();
  data.add(std::move(provider));
  data.add(makeOdbcProvider([this] { return ReadOdbcChoices(program); }, data.providerStop()));
  // A query that the server thinks about ends with the first Ctrl+C, whatever the command is.
  data.stopAsked = stopRequested;
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  ConnectIgnoredColumns(program);
  host.printFolder = folders.documents.string();
  // A query that fails is told by listReadFailures, once and in the console's words.
  program.mdlData.gblnNoConnErrMsg = true;
  host.tellWindow = [this](Form& form) { return tellErrorReport(form); };
}

// Only what happened, not where in the program, and not what listReadFailures will say.
bool Console::tellErrorReport(Form& form) {
  const auto* window = dynamic_cast<const frmErrorReport*>(&form);
  if (!window) return false;
  const tErrorReport& report = window->report();
  const auto& failures = program.state<ReadFailuresState>().arrFailures;
  const bool follows = report.ErrNum == errorNumber::objectNotSet && !failures.empty();
  const bool listed = std::any_of(failures.begin(), failures.end(), [&](const ReadFailure& failure) {
    return !failure.strDescription.empty() && report.ErrDesc.find(failure.strDescription) != std::string::npos;
  });
  if (!follows && !listed) err << "qrel: " << visibleLines(replaceAll(report.ErrDesc, "\r\n", "\n")) << '\n';
  return true;
}

void Console::listReadFailures() {
  std::set<std::string> told;
  for (const ReadFailure& failure : program.state<ReadFailuresState>().arrFailures) {
    std::string line = "not read: ";
    if (!failure.strObject.empty()) line += visibleText(failure.strObject) + " in ";
    line += visibleText(failure.strServer);
    if (!failure.strDb.empty()) line += "/" + visibleText(failure.strDb);
    line += ": " + visibleText(failure.strDescription);
    if (told.insert(line).second) err << "qrel: " << line << '\n';
  }
}

void Console::LoadServers() { qrel::LoadServers(program); }

void Console::applySet(const std::string& set) {
  const std::size_t equals = set.find('=');
  const Setting* setting = findSetting(set.substr(0, equals));
  if (equals == std::string::npos || !setting)
    throw CommandFailure{ExitCode::Usage,
                         "--set " + set + ": expected OPTION=VALUE with an option of \"qrel options\"."};
  if (setting->kind == SettingKind::Text)
    return store.setOverride(settingKey(*setting), setting->name, set.substr(equals + 1));
  store.setOverride(settingKey(*setting), setting->name, settingNumber(*setting, set.substr(equals + 1)));
}

std::int32_t Console::settingNumber(const Setting& setting, const std::string& text) {
  const std::string value = lowerCase(text);
  const bool flag = setting.kind == SettingKind::Flag;
  if (!value.empty() && value.find_first_not_of("0123456789") == std::string::npos && value.size() < 10)
    return numericPrefix(value);
  if (flag && (value == "on" || value == "true" || value == "yes")) return 1;
  if (flag && (value == "off" || value == "false" || value == "no")) return 0;
  throw CommandFailure{ExitCode::Usage,
                       std::string(setting.name) + "=" + text + ": expected a number" + (flag ? ", on or off." : ".")};
}

void Console::start(const std::vector<std::string>& sets) {
  // Comparing under other options than those that were set would be a wrong answer; not remembering the last database
  // is none.
  store.check();
  program.state<SaveByTheWayState>().blnTold = true;
  servers.removeLeftovers();
  for (const std::string& set : sets) applySet(set);
  Main(program, *this);
  host.setPointer(Pointer::Default);
}

bool Console::knowsServer(const std::string& name) const {
  const auto& listed = program.servers.gtypServers;
  return servers.exists(name) ||
         std::any_of(listed.begin(), listed.end(), [&](const tServer& each) { return equalNoCase(each.Name, name); });
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

// What these files say decides what is compared: one that can't be read ends the command before it begins.
void Console::checkProfileFiles() {
  const mdlMainState& main = program.main;
  for (const std::string* file :
       {&main.gstrIgnoredColsStructIni, &main.gstrIgnoredColsDataIni, &main.gstrTablesCompsIni})
    ProfileFile::read(*file);
}

Side Console::resolveSide(const std::string& text) {
  checkProfileFiles();
  std::error_code ignored;
  if (fs::exists(text, ignored) && isScript(text)) return sideFromScripts(text);
  const std::size_t slash = text.find('/');
  const std::string server = text.substr(0, slash);
  const bool known = slash != std::string::npos && slash > 0 && slash + 1 < text.size() && knowsServer(server);
  if (!known && !fs::exists(text, ignored)) {
    if (namesPath(text)) throw CommandFailure{ExitCode::CannotRead, "\"" + text + "\": no such file or folder."};
    if (slash != std::string::npos && !looksLikeServer(server))
      throw CommandFailure{ExitCode::CannotRead, "\"" + text + "\": no such file or folder, and there is no server \"" +
                                                     server + "\": \"qrel servers add " + server +
                                                     "\" puts it on the list, \"qrel load " + text +
                                                     " FILE\" makes an embedded one."};
  }
  if (slash == std::string::npos || slash == 0 || slash + 1 == text.size() || (!known && fs::exists(text, ignored)))
    throw CommandFailure{ExitCode::Usage, "\"" + text +
                                              "\" is neither SERVER/DATABASE nor a script (.sql), a project (.sqlproj) "
                                              "or a folder that exists."};
  Side side{resolveServer(server), text.substr(slash + 1), false, text};
  side.incomplete = lacksWhatLoadsSkipped(side.server.Name, side.database);
  return side;
}

bool Console::lessThanLoaded(const LoadLosses& losses) const {
  return losses.unread > 0 || (losses.statements() > 0 && !allowSkipped);
}

bool Console::lacksWhatLoadsSkipped(const std::string& server, const std::string& database) {
  std::string instance = server;
  constexpr std::string_view localPrefix = "(localdb)\\";
  if (lowerCase(instance).starts_with(localPrefix)) instance.erase(0, localPrefix.size());
  if (!servers.exists(instance)) return false;
  LoadLosses losses;
  try {
    losses = embedded_->lossesOfLoads(instance, database);
  } catch (const RuntimeError&) {
    return false;  // a database that can't be opened is told by whoever reads it
  }
  if (!losses.any()) return false;
  err << "qrel: " << visibleText(server + "/" + database)
      << " lacks what its loads left out (statements skipped: " << withThousands(losses.skipped)
      << ", refused: " << withThousands(losses.refused)
      << "; files or folders not read: " << withThousands(losses.unread) << ").\n";
  return lessThanLoaded(losses);
}

LoadOptions Console::loadOptions() {
  LoadOptions options;
  options.stop = stopRequested;
  if (progress)
    options.progress = [this](const std::string& file, std::size_t line) {
      err << '\r' << visibleText(file) << ": line " << line << "\033[K" << std::flush;
    };
  return options;
}

void Console::clearProgress() {
  if (progress) err << "\r\033[K" << std::flush;
}

Side Console::sideFromScripts(const fs::path& path) {
  Side side;
  side.server.Name = servers.createTemporary();
  side.database = databaseNameOf(path);
  side.given = path.string();
  const LoadReport report = loadScripts(servers, side.server.Name, side.database, {path}, loadOptions());
  clearProgress();
  if (report.stopped) throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  listSkipped(err, report);
  side.incomplete = lessThanLoaded(report.losses());
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
