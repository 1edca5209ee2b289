// The commands that print one list or one text: databases, objects, text, options.
#include <algorithm>
#include <ostream>

#include "app/modRegistry.h"
#include "app/settings.h"
#include "console/cliHelp.h"
#include "console/commands.h"
#include "console/panel.h"
#include "db/mdlData.h"
#include "db/mdlObjects.h"
#include "db/modObjectText.h"
#include "db/readFailures.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

ExitCode runDatabases(Console& console, const std::string& name) {
  const tServer server = console.resolveServer(name);
  RecordsetPtr rs;
  if (GetAdoRS(console.program, server, adCmdText, "SELECT name FROM sysdatabases ORDER BY name", rs, "master") == -1)
    return ExitCode::CannotRead;
  for (; !rs->Eof(); rs->MoveNext()) console.out << visibleText(rs->Fields("name").Text()) << '\n';
  return ExitCode::Identical;
}

ExitCode runObjects(Console& console, const std::string& sideText, const std::string& typeWord) {
  std::vector<long> types = {objTables, objProcedures, objFunctions, objViews, objTriggers, objRelationships};
  if (!typeWord.empty()) types = {Console::objectType(typeWord)};
  const Side side = console.resolveSide(sideText);
  Workspace workspace;
  const ReadWatch reads(console.program);
  openPanel(console, workspace, side, 0);
  bool none = true;
  for (const long type : types) {
    if (listObjects(console, workspace, side, 0, type)) none = false;
    const CheckList& list = workspace.pvlSqlObj[0];
    for (std::size_t row = 0; row < list.count(); ++row)
      console.out << visibleText(list.cell(row, 0)) << '\t' << list.cell(row, 1) << '\t' << list.cell(row, 2) << '\t'
                  << lowerCase(GetObjectTypeName(type, true)) << '\n';
  }
  if (none) return ExitCode::CannotRead;
  return side.incomplete || reads.failed() ? ExitCode::Incomplete : ExitCode::Identical;
}

ExitCode runText(Console& console, const std::string& sideText, const std::string& typeWord, const std::string& name,
                 bool crlf) {
  const long type = Console::objectType(typeWord);
  const Side side = console.resolveSide(sideText);
  Workspace workspace;
  openPanel(console, workspace, side, 0);
  requireObjects(console, workspace, side, 0, type);
  selectObject(console, workspace, side, 0, name);
  if (!showSelected(console, workspace, side, 0)) return ExitCode::Incomplete;
  std::string text = workspace.txtTXProc[0].givenText();
  const bool hasCrlf = text.find("\r\n") != std::string::npos;
  if (!crlf) text = replaceAll(text, "\r\n", "\n");
  if (!text.ends_with('\n')) text += crlf && hasCrlf ? "\r\n" : "\n";
  // Byte by byte, but for eyes.
  console.out << (console.terminal ? visibleLines(text) : text);
  return side.incomplete ? ExitCode::Incomplete : ExitCode::Identical;
}

namespace {

void printOption(Console& console, const Setting& setting) {
  console.out << setting.name << '\t'
              << (setting.kind == SettingKind::Text ? visibleText(ReadText(console.program, setting.name))
                                                    : std::to_string(ReadNumber(console.program, setting.name)))
              << '\t' << setting.meaning << '\n';
}

void changeOption(Console& console, const Setting& setting, const std::string& value) {
  Program& program = console.program;
  if (std::string_view(setting.name) == "Count")
    throw CommandFailure{ExitCode::Usage, "Count is kept by \"qrel servers add\" and \"qrel servers remove\"."};
  if (setting.kind == SettingKind::Text)
    SaveSettingString(program.store, HKEY_CURRENT_USER, settingKey(setting), setting.name, value);
  else
    SaveSetting(program, setting, Console::settingNumber(setting, value));
  console.changed = true;
}

}  // namespace

ExitCode runOptions(Console& console, const std::string& name, const std::optional<std::string>& value) {
  if (name.empty()) {
    for (const Setting& setting : settingsTable()) printOption(console, setting);
    return ExitCode::Identical;
  }
  const Setting* setting = findSetting(name);
  if (!setting) {
    std::vector<std::string> names;
    for (const Setting& each : settingsTable()) names.emplace_back(each.name);
    const std::string nearest = nearestWord(name, names);
    throw CommandFailure{ExitCode::Usage, "There is no option \"" + name + "\"" +
                                              (nearest.empty() ? "; \"qrel options\" lists them."
                                                               : "; did you mean \"" + nearest + "\"?")};
  }
  if (value) changeOption(console, *setting, *value);
  printOption(console, *setting);
  return ExitCode::Identical;
}

}  // namespace qrel
