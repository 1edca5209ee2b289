#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <cstdio>
#include <cstdlib>

#include "desktop/qtHost.h"
#include "desktop/text.h"
#include "desktop/theme.h"
#include "platform/data/embedded/instances.h"
#include "platform/store/folders.h"
#include "ui/startUp.h"

namespace {

// Qt ends the process without a word that a person could use when there is no display.
bool hasDisplay() {
#ifdef __linux__
  for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"})
    if (const char* value = std::getenv(name); value && *value) return true;
  return false;
#else
  return true;
#endif
}

bool asksForWords(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (argument == "--help" || argument == "-h" || argument == "--version" || argument == "-v") return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  constexpr int cannotStart = 3;
  if (asksForWords(argc, argv)) {
    setenv("QT_QPA_PLATFORM", "offscreen", 0);
  } else if (!hasDisplay()) {
    std::fputs("quorrel: there is no display. Start it on a desktop, set DISPLAY, or use the console program qrel.\n",
               stderr);
    return cannotStart;
  }
  QApplication application(argc, argv);
  QApplication::setApplicationName(QStringLiteral("Quorrel"));
  QApplication::setApplicationVersion(QString::fromLatin1(qrel::programVersion));
  QApplication::setDesktopFileName(QStringLiteral("quorrel"));
  QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/quorrel.svg")));
  QCommandLineParser parser;
  parser.setApplicationDescription(QStringLiteral("Compares two SQL Server databases and says what differs."));
  const QCommandLineOption help = parser.addHelpOption();
  const QCommandLineOption version = parser.addVersionOption();
  const QCommandLineOption theme(QStringLiteral("theme"), QStringLiteral("light or dark; else as the desktop is"),
                                 QStringLiteral("theme"));
  parser.addOption(theme);
  // What isn't known is none of this program's business; Qt's own way would be to end here.
  parser.parse(QApplication::arguments());
  if (parser.isSet(help)) parser.showHelp();
  if (parser.isSet(version)) parser.showVersion();
  qrel::applyTheme(qrel::fromQt(parser.value(theme)));

  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  qrel::DataAccess data(servers);
  qrel::KeyStore store(folders.settings);
  qrel::QtHost host(store);
  qrel::Program program(host, data, store);
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  program.commandLine = qrel::fromQt(parser.positionalArguments().join(' '));
  qrel::StartUp startUp(program);
  qrel::Main(program, startUp);
  if (!startUp.mainWindow()) return cannotStart;
  host.run();
  return 0;
}
