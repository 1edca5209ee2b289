// Times of the desktop program, without a screen. Usage: bench_window START, START being the wall clock's nanoseconds
// before the process was started; QREL_HOME has the server "bench" in its list, with databases a and b that hold many
// objects each and a procedure TheBigOne.
#include <QApplication>
#include <QElapsedTimer>
#include <QEvent>
#include <QTimer>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "db/mdlObjects.h"
#include "desktop/qtHost.h"
#include "desktop/theme.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "platform/store/folders.h"
#include "report/frmReport.h"
#include "ui/startUp.h"

namespace {

// Sees every paint event and beats as long as the event loop runs.
class Watch : public QObject {
 public:
  Watch() {
    QCoreApplication::instance()->installEventFilter(this);
    beat_.callOnTimeout(this, [this] { onBeat(); });
    beat_.start(5);
    since_.start();
  }
  void begin() {
    paints_ = 0;
    longest_ = longestWithoutHourglass_ = 0;
    since_.restart();
    whole_.start();
  }
  // The pointer became the hourglass, or was it until now.
  void hourglass(bool on) {
    if (on == hourglassIsOn_) return;
    if (!on) underHourglass_ += sinceHourglass_.elapsed();
    sinceHourglass_.restart();
    hourglassIsOn_ = on;
  }
  qint64 milliseconds() const { return whole_.elapsed(); }
  int paints() const { return paints_; }  // of the progress bar or the labels of a run: any widget's
  qint64 longest() const { return longest_; }
  qint64 longestWithoutHourglass() const { return longestWithoutHourglass_; }

  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() == QEvent::Paint && object->isWidgetType()) {
      const qint64 now = whole_.elapsed();
      if (paints_ == 0 || now != lastPaint_) ++paints_;
      lastPaint_ = now;
    }
    return false;
  }

 private:
  void onBeat() {
    const qint64 gap = since_.restart();
    if (hourglassIsOn_) {
      underHourglass_ += sinceHourglass_.elapsed();
      sinceHourglass_.restart();
    }
    longest_ = std::max(longest_, gap);
    longestWithoutHourglass_ = std::max(longestWithoutHourglass_, gap - underHourglass_);
    underHourglass_ = 0;
  }

  QTimer beat_;
  QElapsedTimer since_, sinceHourglass_, whole_;
  bool hourglassIsOn_ = false;
  qint64 underHourglass_ = 0;  // since the last beat
  int paints_ = 0;
  qint64 lastPaint_ = 0, longest_ = 0, longestWithoutHourglass_ = 0;
};

class WatchedHost : public qrel::QtHost {
 public:
  WatchedHost(qrel::KeyStore& places, Watch& watch) : QtHost(places), watch_(watch) {}
  void setPointer(qrel::Pointer pointer) override {
    QtHost::setPointer(pointer);
    watch_.hourglass(pointer == qrel::Pointer::Hourglass);
  }

 private:
  Watch& watch_;
};

void tell(const char* what, const Watch& watch) {
  std::printf("  %s: %lld ms; without events for %lld ms at most, %lld ms without the hourglass\n", what,
              static_cast<long long>(watch.milliseconds()), static_cast<long long>(watch.longest()),
              static_cast<long long>(watch.longestWithoutHourglass()));
}

// Runs something and lets its windows be painted.
template <class Work>
void measure(const char* what, Watch& watch, Work work) {
  watch.begin();
  work();
  QApplication::processEvents();
  tell(what, watch);
}

// The windows that come up are closed; a run is started in those that have a button for it.
void closeWindows(QTimer& timer) {
  timer.callOnTimeout([] {
    if (QWidget* window = QApplication::activeModalWidget())
      if (window->objectName() == QStringLiteral("frmReport")) window->close();
  });
  timer.start(20);
}

void run(qrel::frmMain& window, Watch& watch) {
  auto& work = window.workspace;
  QTimer closing;
  closeWindows(closing);
  window.cmdConnect.personClicks();
  qrel::SelectRowByText(work.pvlDb[0], "a");
  qrel::SelectRowByText(work.pvlDb[1], "b");
  measure("2,000 procedures listed on both sides", watch, [&] {
    for (std::size_t row = 0; row < work.cmbType.count(); ++row)
      if (work.cmbType.itemData(row) == qrel::objProcedures) work.cmbType.select(static_cast<int>(row));
  });
  // Laying out the two texts, most of it, has an hourglass of its own that isn't seen here.
  measure("a procedure of 30,000 lines shown on both sides", watch, [&] {
    qrel::SelectRowByText(work.pvlSqlObj[0], "TheBigOne");
    qrel::SelectRowByText(work.pvlSqlObj[1], "TheBigOne");
  });
  measure("the same compared, 600 lines marked, report closed", watch, [&] { window.cmdCompare.personClicks(); });
  watch.begin();
  window.barCommands.personChooses(222);  // all procedures with details
  tell("2,000 procedures compared with details", watch);
  std::printf("  painted %.0f times a second meanwhile\n",
              watch.paints() * 1000.0 / static_cast<double>(std::max<qint64>(1, watch.milliseconds())));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  qrel::applyTheme("light");
  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  qrel::DataAccess data;
  data.add(std::make_unique<qrel::EmbeddedProvider>(servers, data.providerStop()));
  qrel::KeyStore store(folders.settings);
  Watch watch;
  WatchedHost host(store, watch);
  qrel::Program program(host, data, store);
  program.programFolder = folders.program.string();
  program.documentsFolder = folders.documents.string();
  qrel::StartUp startUp(program);
  qrel::Main(program, startUp);
  if (!startUp.mainWindow()) return 3;
  while (watch.paints() == 0) QApplication::processEvents();
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  std::printf("  from the start of the process to a painted main window: %.0f ms\n",
              static_cast<double>(std::chrono::nanoseconds(now).count() - std::atoll(argv[1])) / 1e6);
  QTimer::singleShot(0, &watch, [&] {
    run(*startUp.mainWindow(), watch);
    startUp.mainWindow()->close();
    QApplication::quit();
  });
  host.run();
  return 0;
}
