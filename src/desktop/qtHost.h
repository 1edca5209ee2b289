// The host of the desktop program: Qt's windows, boxes, dialogs, clipboard and printer.
#pragma once

#include <QElapsedTimer>
#include <QString>
#include <memory>
#include <vector>

#include "desktop/formWindow.h"
#include "desktop/help.h"
#include "platform/host/host.h"
#include "platform/store/keyStore.h"

namespace qrel {

class QtHost : public Host {
 public:
  // A QApplication is there first. The windows' places are kept in `places`.
  explicit QtHost(KeyStore& places);
  ~QtHost() override;

  Answer messageBox(const std::string& text, Icon icon = Icon::None, const std::string& title = {},
                    Buttons buttons = Buttons::Ok, int defaultButton = 1) override;
  void showModal(Form& form) override;
  // The window stays until its form is closed; run waits for that.
  void show(Form& form) override;
  long popUpMenu(const std::vector<MenuItem>& items) override;
  // Runs waiting events, at most every few milliseconds, so that it can be called for each record.
  void doEvents() override;
  void setPointer(Pointer pointer) override;
  void beep() override;
  bool openUrl(const std::string& url) override;
  // In one window, which stays open beside the program's own.
  void showHelp(long topic) override;
  std::string saveFileDialog(const FileDialog& dialog) override;
  std::string openFileDialog(const FileDialog& dialog) override;
  std::vector<std::string> openFilesDialog(const FileDialog& dialog) override;
  std::string openFolderDialog(const std::string& title) override;
  void setClipboardText(const std::string& text) override;
  // On the default printer; without one a file dialog asks for a PDF file.
  void print(const PrintJob& job) override;
  bool shiftHeld() const override;
  Screen screen() const override;
  LocalTime now() const override;
  std::int64_t ticks() const override;

  std::string helpFolder;  // of the help's topics; empty: they aren't installed

  // Closes what stands open beside the windows that show has opened.
  void closeOtherWindows();
  // Serves the windows that show has opened until the last of them is closed.
  void run();
  // The window of a form that is on the screen, null otherwise.
  FormWindow* windowOf(const Form& form) const;

 private:
  QWidget* frontWindow() const;
  void flush();

  KeyStore& places_;
  std::vector<FormWindow*> open_;  // the latest last
  std::vector<std::unique_ptr<FormWindow>> staying_;
  std::unique_ptr<HelpWindow> help_;  // null until it is asked for
  QElapsedTimer sinceEvents_;
  QString pdfFolder_;  // of the PDF files that take the place of a printer
};

}  // namespace qrel
