#include "embedded/statements/databases.h"

#include "embedded/instance/databaseFiles.h"
#include "embedded/language/refusal.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isSystemDatabase(std::string_view name) {
  for (const char* each : {"master", "tempdb", "model", "msdb"})
    if (equalNoCase(name, each)) return true;
  return false;
}

}  // namespace

void createDatabase(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  const std::string name = reader.expectIdentifier();
  reader.moveTo(run.plainEnd());
  if (!run.act()) return;
  if (run.listener) {
    if (!run.listener->useDatabase(name)) run.notUnderstood("CREATE DATABASE isn't carried out here");
    run.withoutEffect();
    return;
  }
  sqlite::Database fresh(fileForNewDatabase(*run.open, name), sqlite::OpenMode::Create);
  Catalogue::createStorage(fresh);
}

void dropDatabases(StatementRun& run, bool ifExists) {
  TokenReader& reader = run.reader;
  std::vector<std::string> names;
  do {
    names.push_back(reader.expectIdentifier());
  } while (reader.acceptSymbol(","));
  if (!run.act()) return;
  for (const std::string& name : names) {
    if (run.listener) {
      if (!run.listener->useDatabase(name)) run.notUnderstood("DROP DATABASE isn't carried out here");
      run.withoutEffect();
      continue;
    }
    const auto file = findDatabaseFile(run.open->facts.folder, name);
    if (file.empty()) {
      if (ifExists) continue;
      refuse("Cannot drop the database '" + name + "', because it does not exist or you do not have permission.");
    }
    if (isSystemDatabase(name)) refuse("Cannot drop the database '" + name + "' because it is a system database.");
    if (equalNoCase(name, run.open->facts.database))
      refuse("Cannot drop database \"" + name + "\" because it is currently in use.");
    std::filesystem::remove(file);
  }
}

void useStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  const std::string name = reader.expectIdentifier();
  if (!run.act()) return;
  if (run.listener) {
    if (!run.listener->useDatabase(name)) run.notUnderstood("USE of another database isn't carried out here");
    run.withoutEffect();
    if (!isSystemDatabase(name)) run.memory.usedNames.insert(lowerCase(name));
    return;
  }
  const OpenDatabase& open = *run.open;
  if (equalNoCase(name, open.facts.database)) return;
  const auto unknown = [&] {
    refuse("Database '" + name + "' does not exist. Make sure that the name is entered correctly.");
  };
  if (open.sibling) {
    auto other = open.sibling(name);
    if (!other) unknown();
    run.useDatabase(std::move(other));
    return;
  }
  const auto file = findDatabaseFile(open.facts.folder, name);
  if (file.empty()) unknown();
  ServerFacts facts = open.facts;
  facts.database = file.stem().string();
  const auto mode = open.database.readOnly() ? sqlite::OpenMode::ReadOnly : sqlite::OpenMode::ReadWrite;
  run.useDatabase(std::make_shared<OpenDatabase>(file, facts, run.catalogue().serverMajor(), mode));
}

}  // namespace qrel::tsql
