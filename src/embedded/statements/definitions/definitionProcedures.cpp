#include "embedded/statements/definitions/definitionProcedures.h"

#include <array>

#include "embedded/language/refusal.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

using Arguments = std::vector<Argument>;

// sp_addextendedproperty name, value, level0type, level0name, ... level2name; the one that drops takes no value.
void changeExtended(StatementRun& run, const Arguments& arguments, CatalogueChanges::ExtendedChange change) {
  const bool drops = change == CatalogueChanges::ExtendedChange::Drop;
  const Value name = argumentOf(arguments, 0, "@name");
  if (name.null) refuse("The procedure expects parameter '@name', which was not supplied.");
  const Value value = drops ? Value() : argumentOf(arguments, 1, "@value");
  std::vector<Level> levels;
  for (std::size_t i = 0; i < 3; ++i) {
    const std::string number = std::to_string(i);
    const std::size_t at = (drops ? 1 : 2) + 2 * i;
    const Value kind = argumentOf(arguments, at, "@level" + number + "type");
    const Value thing = argumentOf(arguments, at + 1, "@level" + number + "name");
    if (kind.null || kind.text.empty()) break;
    levels.push_back({upperCase(trimBlanks(kind.text)), thing.text});
  }
  run.atomically([&] { run.changes().changeExtended(change, name.text, value, levels); });
}

void addExtended(StatementRun& run, const Arguments& arguments) {
  changeExtended(run, arguments, CatalogueChanges::ExtendedChange::Add);
}
void updateExtended(StatementRun& run, const Arguments& arguments) {
  changeExtended(run, arguments, CatalogueChanges::ExtendedChange::Update);
}
void dropExtended(StatementRun& run, const Arguments& arguments) {
  changeExtended(run, arguments, CatalogueChanges::ExtendedChange::Drop);
}

std::string required(const Arguments& arguments, std::size_t position, const char* name) {
  const Value value = argumentOf(arguments, position, name);
  if (value.null) refuse("The procedure expects parameter '" + std::string(name) + "', which was not supplied.");
  return value.text;
}

// sp_adduser and sp_grantdbaccess: login, name in the database, role.
void addUser(StatementRun& run, const Arguments& arguments) {
  const std::string login = required(arguments, 0, "@loginame");
  const Value name = argumentOf(arguments, 1, "@name_in_db");
  const Value role = argumentOf(arguments, 2, "@grpname");
  PrincipalDef user;
  user.name = name.null || name.text.empty() ? login : name.text;
  user.defaultSchema = user.name;  // which these procedures take, and make where it isn't there
  if (user.name.find('\\') != std::string::npos) user.type = 'U', user.authentication = 3;
  run.atomically([&] {
    run.changes().createPrincipal(user);
    if (run.catalogue().serverMajor() >= 9 && !run.catalogue().schemaExists(user.name))
      run.changes().createSchema(user.name, user.name);
    if (!role.null && !role.text.empty()) run.changes().setMember(role.text, user.name, true);
  });
}

void dropUser(StatementRun& run, const Arguments& arguments) {
  const std::string name = required(arguments, 0, "@name_in_db");
  run.atomically([&] {
    if (run.catalogue().serverMajor() >= 9 && run.catalogue().schemaExists(name)) run.changes().dropSchema(name);
    run.changes().dropPrincipal(name, false);
  });
}

void addRole(StatementRun& run, const Arguments& arguments) {
  PrincipalDef role;
  role.type = 'R';
  role.name = required(arguments, 0, "@rolename");
  role.owner = argumentOf(arguments, 1, "@ownername").text;
  run.changes().createPrincipal(role);
}

void dropRole(StatementRun& run, const Arguments& arguments) {
  const std::string name = required(arguments, 0, "@rolename");
  run.atomically([&] { run.changes().dropPrincipal(name, true); });
}

void addRoleMember(StatementRun& run, const Arguments& arguments) {
  run.changes().setMember(required(arguments, 0, "@rolename"), required(arguments, 1, "@membername"), true);
}

void dropRoleMember(StatementRun& run, const Arguments& arguments) {
  run.changes().setMember(required(arguments, 0, "@rolename"), required(arguments, 1, "@membername"), false);
}

void setTriggerOrder(StatementRun& run, const Arguments& arguments) {
  const ObjectName trigger = run.localName(nameFrom(required(arguments, 0, "@triggername")));
  const std::string order = lowerCase(required(arguments, 1, "@order"));
  const std::string event = lowerCase(required(arguments, 2, "@stmttype"));
  const Value scope = argumentOf(arguments, 3, "@namespace");
  if (!scope.null) throw NotUnderstood{"triggers on databases and servers aren't kept", 1};
  if (order != "first" && order != "last" && order != "none")
    refuse("The @order parameter must be 'First', 'Last' or 'None'.");
  run.atomically([&] { run.changes().orderTrigger(trigger, order, event); });
}

struct DefiningProcedure {
  std::string_view name;
  void (*function)(StatementRun& run, const Arguments& arguments);
};
constexpr std::array definingProcedures = std::to_array<DefiningProcedure>({
    {"sp_addextendedproperty", addExtended},
    {"sp_updateextendedproperty", updateExtended},
    {"sp_dropextendedproperty", dropExtended},
    {"sp_adduser", addUser},
    {"sp_grantdbaccess", addUser},
    {"sp_dropuser", dropUser},
    {"sp_revokedbaccess", dropUser},
    {"sp_addrole", addRole},
    {"sp_droprole", dropRole},
    {"sp_addrolemember", addRoleMember},
    {"sp_droprolemember", dropRoleMember},
    {"sp_settriggerorder", setTriggerOrder},
});

}  // namespace

bool runDefinitionProcedure(StatementRun& run, const std::string& name, const std::vector<Argument>& arguments) {
  for (const DefiningProcedure& each : definingProcedures) {
    if (name != each.name) continue;
    each.function(run, arguments);
    return true;
  }
  return false;
}

}  // namespace qrel::tsql
