#include "desktop/formWindow.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QDialog>
#include <QFile>
#include <QKeyEvent>
#include <QMainWindow>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <QShortcut>
#include <QSplitter>
#include <QTimer>
#include <utility>

#include "desktop/layout.h"
#include "desktop/text.h"
#include "platform/error.h"

namespace qrel {

namespace {

constexpr const char* placesKey = "Software\\Qrel\\Windows";

// Enter presses the button that has the focus, else the window's default one; a text of several lines keeps it.
bool takesEnter(const QWidget* focus) {
  const auto* edit = qobject_cast<const QPlainTextEdit*>(focus);
  return edit && !edit->isReadOnly();
}

// The menu key, where the system doesn't do it, and Shift+F10 ask what has the focus for its menu.
bool asksForMenu(const QKeyEvent& event) {
  return event.key() == Qt::Key_Menu || (event.key() == Qt::Key_F10 && event.modifiers() == Qt::ShiftModifier);
}

void openMenuOf(QWidget* focus) {
  if (!focus) return;
  QWidget* target = focus;
  QRect place = focus->inputMethodQuery(Qt::ImCursorRectangle).toRect();
  if (auto* view = qobject_cast<QAbstractItemView*>(focus)) place = view->visualRect(view->currentIndex());
  if (auto* area = qobject_cast<QAbstractScrollArea*>(focus)) target = area->viewport();
  const QPoint at = (place.isValid() ? place : target->rect()).center();
  QContextMenuEvent asked(QContextMenuEvent::Keyboard, at, target->mapToGlobal(at));
  QApplication::sendEvent(target, &asked);
}

void passKey(FormWindow& window, QKeyEvent* event) {
  if (asksForMenu(*event)) return openMenuOf(QApplication::focusWidget());
  if (event->key() != Qt::Key_Return && event->key() != Qt::Key_Enter) return event->ignore();
  QWidget* focus = QApplication::focusWidget();
  if (takesEnter(focus)) return;
  if (auto* button = qobject_cast<QPushButton*>(focus))
    button->click();
  else
    window.enterPressed();
}

class Dialog : public QDialog {
 public:
  Dialog(FormWindow& window, QWidget* owner) : QDialog(owner), window_(window) {}
  // Only Esc comes here, since closeEvent keeps the close box to itself.
  void reject() override { window_.escPressed(); }

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    window_.closeAsked();
  }
  void keyPressEvent(QKeyEvent* event) override {
    passKey(window_, event);
    if (!event->isAccepted()) QDialog::keyPressEvent(event);
  }
  void changeEvent(QEvent* event) override {
    QDialog::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) window_.activated();
  }

 private:
  FormWindow& window_;
};

class MainWindow : public QMainWindow {
 public:
  explicit MainWindow(FormWindow& window) : window_(window) {}

 protected:
  void closeEvent(QCloseEvent* event) override {
    event->ignore();
    window_.closeAsked();
  }
  void keyPressEvent(QKeyEvent* event) override {
    if (event->key() == Qt::Key_Escape) return window_.escPressed();
    passKey(window_, event);
  }
  void changeEvent(QEvent* event) override {
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow()) window_.activated();
  }

 private:
  FormWindow& window_;
};

}  // namespace

QByteArray formText(const std::string& formName) {
  QFile file(QStringLiteral(":/forms/%1.ui").arg(toQt(formName)));
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

FormWindow::FormWindow(Form& form, QWidget* owner, KeyStore& places) : form_(form), places_(places) {
  const QByteArray text = formText(form.name);
  if (text.isEmpty()) throw RuntimeError(5, "There is no form for the window '" + form.name + "'.");
  const auto makeWindow = [&](const QString& className) -> QWidget* {
    if (className == QLatin1String("QMainWindow"))
      window_ = std::make_unique<MainWindow>(*this);
    else
      window_ = std::make_unique<Dialog>(*this, owner);
    return window_.get();
  };
  binder_ =
      std::make_unique<Binder>(form, text, makeWindow, [this](const std::function<void()>& run) { inHandler(run); });
  for (const std::string& mismatch : binder_->mismatches()) qWarning("%s", mismatch.c_str());
  addKeys();
  new CompactButtons(*window_);
  form_.onClosed = [this] { hideWhenClosed(); };
  inHandler([this] { form_.load(); });
  binder_->flush();
}

FormWindow::~FormWindow() {
  savePlace();
  form_.onClosed = nullptr;
  onClosed = nullptr;
  inHandler([this] { form_.unload(); });
  binder_.reset();
}

void FormWindow::addKeys() {
  for (const Form::Key& key : form_.keys()) {
    auto* shortcut = new QShortcut(QKeySequence(toQt(key.key)), window_.get());
    QObject::connect(shortcut, &QShortcut::activated, window_.get(),
                     [this, name = key.key] { inHandler([&] { form_.personPressesKey(name); }); });
  }
}

void FormWindow::show(bool modal) {
  if (modal && !form_.leavesOwnerOpen) window_->setWindowModality(Qt::ApplicationModal);
  restorePlace();
  window_->show();
  window_->raise();
  window_->activateWindow();
  // A window manager may be slow to activate it, or there may be none.
  QTimer::singleShot(0, window_.get(), [this] { activated(); });
}

void FormWindow::activated() {
  if (depth_ > 0 || form_.closed() || !window_->isVisible()) return;
  shown_ = true;
  inHandler([this] { form_.activate(); });
}

void FormWindow::inHandler(const std::function<void()>& run) {
  ++depth_;
  std::string error;
  try {
    run();
  } catch (const std::exception& failure) {
    error = failure.what();
    if (error.empty()) error = "unknown error";
  }
  if (!error.empty()) QMessageBox::critical(window_.get(), toQt(form_.caption), toQt(error));
  binder_->flush();
  if (--depth_ > 0) return;
  if (closeWaits_ && !form_.closed()) form_.close();
  if (form_.closed()) hideWhenClosed();
}

void FormWindow::closeAsked() {
  if (form_.closed()) return;
  bool agreed = false;
  inHandler([&] {
    agreed = form_.closeRequested();
    // Other handlers below this one still run: they see what the form has noted.
    if (agreed) closeWaits_ = true;
  });
}

void FormWindow::hideWhenClosed() {
  if (window_->isVisible()) {
    savePlace();
    window_->hide();
  }
  if (depth_ > 0 || told_) return;
  told_ = true;
  if (onClosed) onClosed();
}

void FormWindow::enterPressed() {
  inHandler([this] { form_.personPressesEnter(); });
}

void FormWindow::escPressed() {
  bool hasCancel = false;
  for (Control* control : form_.controls())
    if (const auto* button = dynamic_cast<Button*>(control); button && button->isCancel) hasCancel = true;
  if (hasCancel) return inHandler([this] { form_.personPressesEsc(); });
  if (qobject_cast<QDialog*>(window_.get())) closeAsked();
}

void FormWindow::restorePlace() {
  const auto read = [this](const std::string& name) {
    const auto value = places_.get(placesKey, name);
    const auto* text = value ? std::get_if<std::string>(&*value) : nullptr;
    return text ? QByteArray::fromBase64(QByteArray::fromStdString(*text)) : QByteArray();
  };
  if (const QByteArray place = read(form_.name); !place.isEmpty()) {
    window_->restoreGeometry(place);
  } else if (const QScreen* screen = window_->screen()) {
    window_->resize(window_->size().boundedTo(screen->availableSize()));
    window_->setAttribute(Qt::WA_Moved, false);  // the form's own 0, 0 is no place: Qt finds one
  }
  for (QSplitter* splitter : window_->findChildren<QSplitter*>())
    if (const QByteArray state = read(form_.name + "." + fromQt(splitter->objectName())); !state.isEmpty())
      splitter->setProperty(keptProperty, splitter->restoreState(state));
}

void FormWindow::savePlace() {
  if (!std::exchange(shown_, false)) return;
  const auto write = [this](const std::string& name, const QByteArray& state) {
    places_.set(placesKey, name, state.toBase64().toStdString());
  };
  try {
    KeyStore::Change change(places_);
    write(form_.name, window_->saveGeometry());
    for (QSplitter* splitter : window_->findChildren<QSplitter*>())
      write(form_.name + "." + fromQt(splitter->objectName()), splitter->saveState());
    change.commit();
  } catch (const RuntimeError&) {
    // The window opens at its usual place next time.
  }
}

}  // namespace qrel
