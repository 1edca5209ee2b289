#include <QApplication>
#include <QIcon>
#include <array>
#include <cstdio>
#include <iostream>
#include <string>

#include "console/commands.h"
#include "db/odbcChoices.h"
#include "desktop/layout.h"
#include "desktop/qtHost.h"
#include "desktop/startArguments.h"
#include "desktop/theme.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/embeddedScriptLoader.h"
#include "platform/store/folders.h"
#include "platform/system.h"
#include "platform/visibleText.h"
#include "process/replayOutcome.h"
#include "ui/startUp.h"
#include "ui/tools/frmTip.h"

namespace {

// A saved process needs no window: nobody could look at it.
int runWithoutWindow(const char* programFile, const std::string& id) {
  const std::array<const char*, 3> arguments{programFile, "run", id.c_str()};
  return qrel::runConsole(static_cast<int>(arguments.size()), arguments.data(), std::cout, std::cerr);
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int wrongUsage = 2, cannotStart = 3;
  const qrel::StartArguments asked = qrel::readStartArguments(argc, argv);
  if (asked.help || asked.version) {
    std::fputs((asked.help ? qrel::startHelp() : std::string("Quorrel ") + qrel::programVersion + "\n").c_str(),
               stdout);
    return 0;
  }
  if (const std::string why = qrel::whyNotStart(asked); !why.empty()) {
    std::fputs(("quorrel: " + qrel::visibleLines(why) + "\n").c_str(), stderr);
    return wrongUsage;
  }
  // Qt would end the process without a word that a person could use.
  if (!qrel::system::hasDisplay()) {
    if (const std::string id = std::to_string(qrel::RunSavedCompId(asked.commandLine)); id != "0")
      return runWithoutWindow(argv[0], id);
    std::fputs("quorrel: there is no display. Start it on a desktop, set DISPLAY, or use the console program qrel.\n",
               stderr);
    return cannotStart;
  }
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Quorrel"));
  QApplication::setApplicationVersion(QString::fromLatin1(qrel::programVersion));
  QApplication::setDesktopFileName(QStringLiteral("quorrel"));
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/quorrel.svg")));
  // Qt has taken its own arguments out by now.
  const qrel::StartArguments arguments = qrel::readStartArguments(argc, argv);
  qrel::applyTheme(arguments.theme);

  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  servers.removeLeftovers();
  qrel::DataAccess data;
  data.add(std::make_unique<qrel::EmbeddedProvider>(servers, data.providerStop()));
  qrel::KeyStore store(folders.settings);
  qrel::QtHost host(store);
  host.helpFolder = folders.help.string();
  qrel::Program program(host, data, store);
  data.add(qrel::makeOdbcProvider([&program] { return qrel::ReadOdbcChoices(program); }, data.providerStop()));
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  program.commandLine = arguments.commandLine;
  qrel::EmbeddedScriptLoader loader(servers);
  program.state<qrel::ScriptLoaderState>().loader = &loader;
  program.state<qrel::TipsState>().strInstalledFolder = folders.installed.string();
  qrel::MainWindowSteps steps;
  const qrel::StartUp* running = nullptr;
  const auto mainWindow = [&]() -> QWidget& { return host.windowOf(*running->mainWindow())->widget(); };
  steps.ApplySmallScreenLayout = [&] { qrel::whenShown([&] { qrel::applySmallScreenLayout(mainWindow()); }); };
  steps.SetSplitterHeight = [&] { qrel::setSplitterHeight(mainWindow()); };
  steps.CloseOtherWindows = [&host] { host.closeOtherWindows(); };
  qrel::StartUp startUp(program, steps);
  running = &startUp;
  qrel::Main(program, startUp);
  if (!startUp.mainWindow()) return cannotStart;
  host.run();
  // Whoever started it for one process asks the exit code how that ended.
  return program.main.glngRunSavedCompId > 0 ? qrel::ReplayExitCode(program.state<qrel::ReplayOutcome>()) : 0;
}
