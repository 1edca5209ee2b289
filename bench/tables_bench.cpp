// The windows over the records of one table, on a screen that nobody sees: the table read, the viewer, the Data
// Analyzer. Usage: bench_tables SERVER DATABASE TABLE, with QREL_HOME set.
#include <sys/resource.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QTableView>
#include <QTimer>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <utility>

#include "app/mdlMain.h"
#include "compare/data/frmDataAnalyze.h"
#include "compare/data/frmDataView.h"
#include "compare/structure/modIgnoreColumns.h"
#include "db/mdlData.h"
#include "desktop/qtHost.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "platform/store/folders.h"

namespace {

double peakMegabytes() {
  struct rusage usage {};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024;
}

void read(qrel::Program& program, const qrel::tServer& server, const std::string& database, const std::string& table) {
  QElapsedTimer clock;
  clock.start();
  qrel::RecordsetPtr rs;
  if (qrel::GetAdoRS(program, server, qrel::adCmdText, qrel::SqlText("SELECT * FROM ") << qrel::asName(table), rs,
                     database) == -1)
    std::exit(3);
  std::size_t bytes = 0;
  long rows = 0;
  for (; !rs->Eof(); rs->MoveNext(), ++rows)
    for (std::size_t field = 0; field < rs->FieldCount(); ++field) bytes += rs->Fields(field).Text().size();
  std::printf("  read row by row, %ld rows, %.0f MB of text: %.2f s; peak %.0f MB\n", rows,
              static_cast<double>(bytes) / 1e6, static_cast<double>(clock.elapsed()) / 1000, peakMegabytes());
}

// Shows the form and acts when it is `ready`, every few milliseconds; error reports on the way are closed.
void inWindow(const std::function<void()>& show, const std::function<void()>& look) {
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] {
    QWidget* front = QApplication::activeModalWidget();
    if (front && front->objectName() == QLatin1String("frmErrorReport"))
      front->close();
    else
      look();
  });
  timer.start(2);
  show();
}

// To a hundred places all over the table, each painted.
double millisecondsToScroll(QTableView& view) {
  constexpr int places = 100;
  QElapsedTimer clock;
  clock.start();
  for (int i = 0; i < places; ++i) {
    view.scrollTo(view.model()->index(static_cast<int>(7919LL * i * 1009 % view.model()->rowCount()), 0),
                  QAbstractItemView::PositionAtTop);
    view.viewport()->repaint();
  }
  return static_cast<double>(clock.elapsed()) / places;
}

void view(qrel::Program& program, qrel::QtHost& host, const std::string& database, const std::string& table) {
  qrel::frmDataView window(program);
  QElapsedTimer clock;
  clock.start();
  inWindow([&] { window.ShowUp("[" + table + "]", table, database, 0, 0); },
           [&] {
             qrel::FormWindow* shown = host.windowOf(window);
             if (!shown || shown->handlerRuns() || window.VSFlexGrid1.rowCount() < 2) return;
             const double seconds = static_cast<double>(clock.elapsed()) / 1000;
             const double scrolling = millisecondsToScroll(*shown->widget().findChild<QTableView*>());
             std::printf("  the viewer, counted, read and watched: %.2f s; peak %.0f MB; a scroll %.1f ms\n", seconds,
                         peakMegabytes(), scrolling);
             shown->widget().close();
           });
}

void analyze(qrel::Program& program, qrel::QtHost& host, const std::string& database, const std::string& table) {
  qrel::frmDataAnalyze window(program);
  bool started = false;
  const auto run = [&] {
    QElapsedTimer clock;
    clock.start();
    host.windowOf(window)->inHandler([&] { window.cmdStart.personClicks(); });
    std::printf("  the Data Analyzer, %zu columns: %.2f s; peak %.0f MB\n", window.rpcReport.recordCount(),
                static_cast<double>(clock.elapsed()) / 1000, peakMegabytes());
    window.close();
  };
  inWindow([&] { window.ShowUp("[" + table + "]", table, database, 0, 0); },
           [&] {
             // Not from within the timer, which closes the error reports meanwhile.
             if (host.windowOf(window) && !std::exchange(started, true)) QTimer::singleShot(0, run);
           });
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  qrel::DataAccess data;
  data.add(std::make_unique<qrel::EmbeddedProvider>(servers, data.providerStop()));
  qrel::KeyStore store(folders.settings);
  qrel::QtHost host(store);
  qrel::Program program(host, data, store);
  program.programFolder = folders.program.string();
  qrel::SetFilePaths(program);
  qrel::ConnectIgnoredColumns(program);
  qrel::tServer server;
  server.Name = argv[1];
  server.Version = qrel::GetServerVersion(program, server);
  program.main.gtypSelServ = {server, server};
  for (int run = 0; run < 2; ++run) read(program, server, argv[2], argv[3]);
  for (int run = 0; run < 2; ++run) view(program, host, argv[2], argv[3]);
  for (int run = 0; run < 2; ++run) analyze(program, host, argv[2], argv[3]);
  return 0;
}
