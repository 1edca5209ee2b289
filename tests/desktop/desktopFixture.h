// The desktop program over embedded servers, and what a person does with its windows.
#pragma once

#include <QApplication>
#include <QElapsedTimer>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QtTest/QTest>
#include <algorithm>
#include <deque>
#include <functional>

#include "app/mdlMain.h"
#include "db/mdlServers.h"
#include "desktop/qtHost.h"
#include "desktop/text.h"
#include "tests/desktop/person.h"
#include "tests/support.h"
#include "ui/startUp.h"

namespace qrel {

class DesktopTest : public testing::Test, public TestServers {
 protected:
  DesktopTest() {
    program.programFolder = folder.path().string();
    program.state<ScriptLoaderState>().loader = &loader;
    watch();
  }
  ~DesktopTest() override {
    for (const Act& act : acts_) ADD_FAILURE() << "never came: " << act.window;
    if (startUp.mainWindow() && !startUp.mainWindow()->closed()) main().close();
    host.run();
  }

  // Starts the program as main does, with the servers given in the list.
  void start(const std::vector<std::string>& names) {
    for (const std::string& name : names) AppendServer(program, server(name, ""));
    Main(program, startUp);
    ASSERT_TRUE(startUp.mainWindow());
    ASSERT_TRUE(until([this] { return startUp.mainWindow()->mblnActivated; }));
  }
  QWidget& main() { return host.windowOf(*startUp.mainWindow())->widget(); }

  // Serves events until it is so; false after ten seconds.
  static bool until(const std::function<bool()>& so) { return QTest::qWaitFor(so, 10000); }

  // As soon as a window of that name or class is in front, it is acted with. Windows open inside the click that asks
  // for them, so that what is done in them is said before it. In the order given; what is said inside an act comes
  // before what still waits.
  void when(const char* window, std::function<void(QWidget&)> act) {
    const auto place = acts_.begin() + static_cast<std::ptrdiff_t>(std::min(next_, acts_.size()));
    acts_.insert(place, {window, std::move(act)});
    ++next_;
  }
  // A message box is answered; its text is kept.
  void whenBox(QMessageBox::StandardButton answer) {
    when("QMessageBox", [this, answer](QWidget& widget) {
      auto& box = dynamic_cast<QMessageBox&>(widget);
      boxText = fromQt(box.text());
      click(*box.button(answer));
    });
  }
  std::string boxText;  // of the box answered last
  bool allDone() const { return acts_.empty(); }

  QtHost host{store};
  Program program{host, data, store};
  StartUp startUp{program};

 private:
  struct Act {
    std::string window;
    std::function<void(QWidget&)> act;
  };

  void watch() {
    QTimer::singleShot(2, &context_, [this] {
      watch();
      look();
    });
  }
  void look() {
    QWidget* front = QApplication::activePopupWidget();
    if (!front) front = QApplication::activeModalWidget();
    if (!front || !front->isVisible()) return;
    if (front != front_) {
      front_ = front;
      inFront_.start();
      acted_ = false;
    }
    const bool awaited =
        !acted_ && !acts_.empty() &&
        (front->objectName() == acts_.front().window.c_str() || front->inherits(acts_.front().window.c_str()));
    if (awaited) {
      acted_ = true;
      const Act act = std::move(acts_.front());
      acts_.pop_front();
      const std::size_t nextOutside = next_ > 0 ? next_ - 1 : 0;
      next_ = 0;
      try {
        act.act(*front);
      } catch (const std::exception& failure) {
        ADD_FAILURE() << act.window << ": " << failure.what();
      }
      next_ = nextOutside;
    } else if (inFront_.elapsed() > 8000) {
      const auto* box = qobject_cast<const QMessageBox*>(front);
      ADD_FAILURE() << "left open: " << fromQt(front->objectName()) << " " << front->metaObject()->className() << " "
                    << (box ? fromQt(box->text()) : std::string());
      inFront_.start();
      front->close();
    }
  }

  QObject context_;
  std::deque<Act> acts_;
  std::size_t next_ = 0;  // where the next act said goes
  QPointer<QWidget> front_;
  QElapsedTimer inFront_;
  bool acted_ = false;
};

}  // namespace qrel
