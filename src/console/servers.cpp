#include <cstdlib>
#include <iostream>

#include "console/commands.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/mdlServers.h"
#include "db/readFailures.h"
#include "platform/system.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

ExitCode runServers(Console& console) {
  for (const tServer& server : console.program.servers.gtypServers)
    console.out << visibleText(server.Name) << '\t'
                << (server.SQLAuth ? "login " + visibleText(server.LoginName) : "Windows authentication") << '\t'
                << visibleText(server.MRUDb) << '\t' << visibleText(server.Version) << '\n';
  for (const std::string& name : console.servers.list())
    if (!IsServerInList(console.program, name))
      console.out << visibleText(name) << "\tembedded\t\t" << console.servers.productVersion(name) << '\n';
  return ExitCode::Identical;
}

namespace {

// Of a login that is added: never an argument, which others on the machine could read.
std::string passwordOf(const Console& console, const std::string& login) {
  if (const char* password = std::getenv("QREL_PASSWORD")) return password;
  if (!console.asks) return {};
  const auto typed = system::readSecret("Password of " + visibleText(login) + ": ");
  if (!typed) throw CommandFailure{ExitCode::Stopped, "No password was given; nothing was added."};
  return *typed;
}

}  // namespace

ExitCode runServersAdd(Console& console, const AddServerArguments& arguments) {
  const std::string password = arguments.login.empty() ? std::string() : passwordOf(console, arguments.login);
  console.host.windows.push_back([&](Form& window) {
    auto& form = dynamic_cast<frmAddServer&>(window);
    if (arguments.localDb) form.chkLocalDb.personSets(true);
    form.txtServer.personTypes(arguments.port.empty() ? arguments.name : arguments.name + "," + arguments.port);
    form.chkEncrypt.personSets(arguments.encrypt != "no");
    form.blnStrict = arguments.encrypt == "strict";
    form.chkTrustCertificate.personSets(arguments.trustCertificate);
    form.strOdbcDriver = arguments.driver;
    form.txtDatabase.personTypes(arguments.database);
    if (!arguments.login.empty()) {
      form.optGen1.choose();
      form.txtLogin.personTypes(arguments.login);
      form.txtPassword.personTypes(password);
    }
    form.personPressesEnter();
  });
  // Whether the server is there is what the window asks and tells.
  const AskedScope asked(console.program);
  return MenuAddServer(console.program) ? ExitCode::Identical : ExitCode::CannotRead;
}

namespace {

void confirm(Console& console, const std::string& question, bool yes) {
  if (yes) return;
  if (!console.asks)
    throw CommandFailure{ExitCode::Usage, "There is no terminal to ask at: --yes removes without asking."};
  console.err << question << " [y/N] " << std::flush;
  std::string answer;
  std::getline(std::cin, answer);
  if (!equalNoCase(answer, "y") && !equalNoCase(answer, "yes"))
    throw CommandFailure{ExitCode::Stopped, "Nothing was removed."};
}

}  // namespace

ExitCode runServersRemove(Console& console, const std::string& name, bool yes) {
  bool known = false;
  for (const tServer& server : console.program.servers.gtypServers) known = known || server.Name == name;
  if (!known && !console.program.servers.gtypServers.empty())
    throw CommandFailure{ExitCode::CannotRead, "Server '" + name + "' not found."};
  confirm(console, "Remove the server \"" + visibleText(name) + "\" from the list?", yes);
  console.host.windows.push_back([&](Form& window) {
    auto& form = dynamic_cast<frmDeleteServer&>(window);
    for (std::size_t row = 0; row < form.lstServers.count(); ++row)
      if (form.lstServers.cell(row, 0) == name) form.lstServers.personSelects({row});
    form.personPressesEnter();
  });
  return MenuRemoveServer(console.program) ? ExitCode::Identical : ExitCode::CannotRead;
}

}  // namespace qrel
