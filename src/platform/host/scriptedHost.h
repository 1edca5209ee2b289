// The host of the tests: answers are queued, what was shown is kept, the clock stands.
#pragma once

#include <deque>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/controls/menu.h"
#include "platform/host/host.h"

namespace qrel {

class ScriptedHost : public Host {
 public:
  struct Box {
    std::string text;
    Icon icon = Icon::None;
    std::string title;
    Buttons buttons = Buttons::Ok;
    int defaultButton = 1;
  };

  std::vector<Box> boxes;                          // every box shown, in order
  std::deque<Answer> answers;                      // for boxes with more than one button
  std::deque<std::function<void(Form&)>> windows;  // what a person does in each modal window, in order
  std::vector<std::string> opened;                 // URLs and files
  std::vector<long> helpTopics;                    // topics of the help shown
  std::vector<std::string> shown;                  // names of all windows shown, in order
  std::function<void()> onDoEvents;                // what a person does while a run yields
  std::deque<std::string> files;                   // answers of file dialogs; an empty one cancels
  std::vector<FileDialog> fileDialogs;             // the dialogs shown
  std::deque<long> menuChoices;                    // ids chosen in menus that open; 0 closes one
  std::vector<std::vector<MenuItem>> menus;        // the menus that opened
  std::string clipboard;
  std::vector<PrintJob> printed;
  bool shift = false;  // a Shift key is held
  bool opens = true;   // whether openUrl finds a program
  int beeps = 0;
  LocalTime time{2026, 1, 2, 3, 4, 5};
  std::int64_t tickCount = 0;

  Answer messageBox(const std::string& text, Icon icon, const std::string& title, Buttons buttons,
                    int defaultButton) override;
  void showModal(Form& form) override;
  void show(Form& form) override;
  long popUpMenu(const std::vector<MenuItem>& items) override;
  void doEvents() override;
  void beep() override { ++beeps; }
  bool openUrl(const std::string& url) override;
  void showHelp(long topic) override { helpTopics.push_back(topic); }
  std::string saveFileDialog(const FileDialog& dialog) override;
  std::string openFileDialog(const FileDialog& dialog) override { return saveFileDialog(dialog); }
  void setClipboardText(const std::string& text) override { clipboard = text; }
  void print(const PrintJob& job) override { printed.push_back(job); }
  bool shiftHeld() const override { return shift; }
  LocalTime now() const override { return time; }
  std::int64_t ticks() const override { return tickCount; }

  // What nobody expected, in words: a question without a queued answer, a window without a script. Tests check that it
  // is empty.
  std::vector<std::string> unexpected;
};

}  // namespace qrel
