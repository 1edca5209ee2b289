// The console's host: messages go to stderr, questions are answered with their default button, and an unattended window
// closes itself after its first activation.
#pragma once

#include <deque>
#include <functional>
#include <iosfwd>
#include <string>

#include "platform/host/host.h"

namespace qrel {

class ConsoleHost : public Host {
 public:
  explicit ConsoleHost(std::ostream& messages) : messages_(messages) {}

  // What a command does in the next modal windows, in order.
  std::deque<std::function<void(Form&)>> windows;
  // The modal window that is open, the innermost one; null without any.
  Form* shown() const { return shown_; }
  // Windows with a message of their own (error reports) shown so far.
  std::size_t errorReports() const { return errorReports_; }
  // Asked first how a message box is told; true: it has been.
  std::function<bool(const std::string& title, const std::string& text)> tellBox;
  // Asked first how a modal window without an action is told; true: it has been.
  std::function<bool(Form&)> tellWindow;
  // Told of each modal window once it has been activated, before it is closed.
  std::function<void(Form&)> onWindow;
  // Every message begins with the time.
  bool withTime = false;
  // Asked at every yield; a command sets it to watch for Ctrl+C.
  std::function<void()> onDoEvents;

  Answer messageBox(const std::string& text, Icon icon, const std::string& title, Buttons buttons,
                    int defaultButton) override;
  void showModal(Form& form) override;
  void show(Form& form) override;
  long popUpMenu(const std::vector<MenuItem>&) override { return 0; }
  void doEvents() override;
  // There is nobody to look at it: it stays where it is, which is no failure.
  bool openUrl(const std::string&) override { return true; }
  // There is nobody to choose a file: always cancelled.
  std::string saveFileDialog(const FileDialog&) override { return {}; }
  std::string openFileDialog(const FileDialog&) override { return {}; }
  void setClipboardText(const std::string&) override {}
  // Writes the pages to a text file in printFolder, named after the job's title and the time, never over
  // another.
  void print(const PrintJob& job) override;
  std::string printFolder;
  LocalTime now() const override;
  std::int64_t ticks() const override;

 private:
  void tell(const std::string& title, const std::string& text);
  void tellReadOnlyTexts(Form& form);

  std::ostream& messages_;
  Form* shown_ = nullptr;
  std::size_t errorReports_ = 0;
};

}  // namespace qrel
