#include "desktop/qtHost.h"

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QDesktopServices>
#include <QDir>
#include <QEventLoop>
#include <QFileDialog>
#include <QFileInfo>
#include <QMenu>
#include <QMessageBox>
#include <QPrinter>
#include <QPushButton>
#include <QScreen>
#include <QStandardPaths>
#include <QUrl>
#include <algorithm>
#include <chrono>

#include "desktop/menus.h"
#include "desktop/printing.h"
#include "desktop/text.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr qint64 eventsEvery = 10;  // milliseconds

QMessageBox::Icon boxIcon(Icon icon) {
  switch (icon) {
    case Icon::None:
      return QMessageBox::NoIcon;
    case Icon::Information:
      return QMessageBox::Information;
    case Icon::Question:
      return QMessageBox::Question;
    case Icon::Warning:
      return QMessageBox::Warning;
    case Icon::Critical:
      return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

struct BoxButton {
  QMessageBox::StandardButton button;
  Answer answer;
};

// In the order that a default button's number counts.
std::vector<BoxButton> buttonsOf(Buttons buttons) {
  const BoxButton ok{QMessageBox::Ok, Answer::Ok}, cancel{QMessageBox::Cancel, Answer::Cancel},
      yes{QMessageBox::Yes, Answer::Yes}, no{QMessageBox::No, Answer::No}, retry{QMessageBox::Retry, Answer::Retry};
  switch (buttons) {
    case Buttons::Ok:
      return {ok};
    case Buttons::OkCancel:
      return {ok, cancel};
    case Buttons::YesNo:
      return {yes, no};
    case Buttons::YesNoCancel:
      return {yes, no, cancel};
    case Buttons::RetryCancel:
      return {retry, cancel};
  }
  return {ok};
}

QFileInfo startOf(const FileDialog& dialog) { return QFileInfo(qrel::toQt(dialog.defaultFile)); }

// "Words (pattern)" of "Words|pattern", which is "Words (*.x)|*.x" as often.
QString filterOf(const FileDialog& dialog) {
  const QStringList parts = qrel::toQt(dialog.filter).split('|');
  if (parts.size() != 2 || parts[0].contains('(')) return parts[0];
  return parts[0] + QStringLiteral(" (") + parts[1] + ')';
}

}  // namespace

QtHost::QtHost(KeyStore& places) : places_(places) {
  QApplication::setQuitOnLastWindowClosed(false);
  sinceEvents_.start();
}

QtHost::~QtHost() = default;

QWidget* QtHost::frontWindow() const {
  if (QWidget* active = QApplication::activeModalWidget()) return active;
  for (auto each = open_.rbegin(); each != open_.rend(); ++each)
    if ((*each)->widget().isVisible()) return &(*each)->widget();
  return nullptr;
}

FormWindow* QtHost::windowOf(const Form& form) const {
  for (FormWindow* each : open_)
    if (&each->form() == &form) return each;
  return nullptr;
}

void QtHost::flush() {
  for (FormWindow* each : open_) each->binder().flush();
}

Answer QtHost::messageBox(const std::string& text, Icon icon, const std::string& title, Buttons buttons,
                          int defaultButton) {
  flush();
  const Pointer before = pointer();
  setPointer(Pointer::Default);
  QMessageBox box(frontWindow());
  box.setIcon(boxIcon(icon));
  box.setWindowTitle(title.empty() ? QStringLiteral("Quorrel") : qrel::toQt(title));
  box.setTextFormat(Qt::PlainText);
  box.setText(qrel::toQt(replaceAll(text, "\r\n", "\n")));
  const std::vector<BoxButton> choices = buttonsOf(buttons);
  for (const BoxButton& choice : choices) box.addButton(choice.button);
  const auto chosenFirst =
      static_cast<std::size_t>(std::clamp<int>(defaultButton, 1, static_cast<int>(choices.size())));
  box.setDefaultButton(choices[chosenFirst - 1].button);
  if (buttons == Buttons::YesNo) box.setEscapeButton(QMessageBox::No);
  const int pressed = box.exec();
  setPointer(before);
  for (const BoxButton& choice : choices)
    if (choice.button == pressed) return choice.answer;
  return choices.back().answer;
}

void QtHost::showModal(Form& form) {
  flush();
  FormWindow window(form, frontWindow(), places_);
  open_.push_back(&window);
  if (!form.closed()) {
    QEventLoop loop;
    window.onClosed = [&loop] { loop.quit(); };
    window.show(true);
    if (!form.closed()) loop.exec();
  }
  std::erase(open_, &window);
}

void QtHost::show(Form& form) {
  auto window = std::make_unique<FormWindow>(form, nullptr, places_);
  open_.push_back(window.get());
  window->show(false);
  staying_.push_back(std::move(window));
}

void QtHost::run() {
  QEventLoop loop;
  const auto allClosed = [this] {
    return std::all_of(staying_.begin(), staying_.end(), [](const auto& each) { return each->form().closed(); });
  };
  for (auto& window : staying_)
    window->onClosed = [&] {
      if (allClosed()) loop.quit();
    };
  if (!allClosed()) loop.exec();
  // A form that is unloaded may close what else is open.
  const std::vector<std::unique_ptr<FormWindow>> ended = std::move(staying_);
  staying_.clear();
  for (const auto& window : ended) std::erase(open_, window.get());
}

long QtHost::popUpMenu(const std::vector<MenuItem>& items) {
  flush();
  QMenu menu(frontWindow());
  long chosen = 0;
  addItems(menu, items, [&chosen](long id) { chosen = id; });
  std::optional<QPoint> place;
  for (FormWindow* each : open_)
    if (each->binder().menuPlace()) place = each->binder().menuPlace();
  menu.exec(place.value_or(QCursor::pos()));
  return chosen;
}

void QtHost::doEvents() {
  if (sinceEvents_.elapsed() < eventsEvery) return;
  flush();
  QApplication::processEvents();
  sinceEvents_.restart();
}

void QtHost::setPointer(Pointer pointer) {
  if (pointer == this->pointer()) return;
  Host::setPointer(pointer);
  if (pointer == Pointer::Hourglass)
    QApplication::setOverrideCursor(Qt::WaitCursor);
  else
    QApplication::restoreOverrideCursor();
}

void QtHost::beep() { QApplication::beep(); }

bool QtHost::openUrl(const std::string& url) {
  const QString text = qrel::toQt(url);
  return QDesktopServices::openUrl(QFileInfo::exists(text) ? QUrl::fromLocalFile(text) : QUrl::fromUserInput(text));
}

void QtHost::showHelp(long topic) {
  if (!help_) help_ = std::make_unique<HelpWindow>(qrel::toQt(helpFolder));
  help_->showTopic(topic);
}

void QtHost::closeOtherWindows() {
  for (FormWindow* each : std::vector<FormWindow*>(open_))
    if (std::none_of(staying_.begin(), staying_.end(), [&](const auto& stays) { return stays.get() == each; }))
      each->form().close();
  help_.reset();
}

std::string QtHost::saveFileDialog(const FileDialog& dialog) {
  flush();
  // Not the short form of one call, which would ask before it replaces the name as typed, without its extension.
  QFileDialog window(frontWindow(), qrel::toQt(dialog.title), startOf(dialog).path(), filterOf(dialog));
  window.setAcceptMode(QFileDialog::AcceptSave);
  window.setFileMode(QFileDialog::AnyFile);
  window.setDefaultSuffix(qrel::toQt(dialog.defaultExtension));
  window.selectFile(startOf(dialog).fileName());
  if (window.exec() != QDialog::Accepted || window.selectedFiles().isEmpty()) return {};
  return fromQt(window.selectedFiles().front());
}

std::string QtHost::openFileDialog(const FileDialog& dialog) {
  flush();
  return fromQt(QFileDialog::getOpenFileName(frontWindow(), qrel::toQt(dialog.title), startOf(dialog).filePath(),
                                             filterOf(dialog)));
}

std::vector<std::string> QtHost::openFilesDialog(const FileDialog& dialog) {
  flush();
  std::vector<std::string> files;
  for (const QString& file : QFileDialog::getOpenFileNames(frontWindow(), qrel::toQt(dialog.title),
                                                           startOf(dialog).filePath(), filterOf(dialog)))
    files.push_back(fromQt(file));
  return files;
}

std::string QtHost::openFolderDialog(const std::string& title) {
  flush();
  return fromQt(QFileDialog::getExistingDirectory(frontWindow(), qrel::toQt(title)));
}

// Qt gives Windows' programs a CR before each LF by itself.
void QtHost::setClipboardText(const std::string& text) {
  QApplication::clipboard()->setText(qrel::toQt(replaceAll(text, "\r\n", "\n")));
}

void QtHost::print(const PrintJob& job) {
  QPrinter printer(QPrinter::HighResolution);
  setUsualMargins(printer);
  const auto askForFile = [&] {
    const QString name = fileNameOf(job.name.empty() ? job.title : job.name) + QStringLiteral(".pdf");
    if (pdfFolder_.isEmpty()) pdfFolder_ = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    std::string file = saveFileDialog(
        {"Print to a PDF file", "PDF files (*.pdf)|*.pdf", fromQt(QDir(pdfFolder_).filePath(name)), "pdf"});
    if (!file.empty()) pdfFolder_ = QFileInfo(qrel::toQt(file)).path();
    return file;
  };
  if (choosePrinter(printer, askForFile)) printPages(printer, job);
}

bool QtHost::shiftHeld() const { return QApplication::keyboardModifiers().testFlag(Qt::ShiftModifier); }

Screen QtHost::screen() const {
  const QScreen* screen = QApplication::primaryScreen();
  return screen ? Screen{screen->size().width(), screen->size().height()} : Host::screen();
}

LocalTime QtHost::now() const {
  const QDateTime now = QDateTime::currentDateTime();
  return {now.date().year(), now.date().month(),  now.date().day(),
          now.time().hour(), now.time().minute(), now.time().second()};
}

std::int64_t QtHost::ticks() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace qrel
