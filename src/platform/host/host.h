// The host: the one seam between the program and the outside world.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

namespace qrel {

class Form;
struct MenuItem;

enum class Icon : std::uint8_t { None, Information, Question, Warning, Critical };
enum class Buttons : std::uint8_t { Ok, OkCancel, YesNo, YesNoCancel, RetryCancel };
enum class Answer : std::uint8_t { Ok, Cancel, Yes, No, Retry };
enum class Pointer : int { Default = 0, Hourglass = 11 };

struct Screen {
  int width = 0;  // pixels
  int height = 0;
};

// A moment in local time.
struct LocalTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
};

// A file dialog: what it shows first.
struct FileDialog {
  std::string title;
  std::string filter;                 // "*.*", or words and a pattern: "Export Files (*.htm)|*.htm"
  std::string defaultFile;            // with its folder
  std::string defaultExtension = {};  // "htm", which a chosen name without one gets; empty: none
};

// Pages of text for the printer.
struct PrintJob {
  std::string title;  // of the job
  std::string text;
  std::string header;        // on each page; empty: none
  bool pageNumbers = false;  // "Page: x of y" at the foot
  // The ground of each line, 0x00BBGGRR; lines beyond have none.
  std::vector<std::uint32_t> lineColours = {};
  std::string name = {};  // of what is printed, for a file that takes it; empty: the title
};

class Host {
 public:
  virtual ~Host() = default;

  // Shows a box and waits. `defaultButton` is 1-based. An empty title is the program's name.
  virtual Answer messageBox(const std::string& text, Icon icon = Icon::None, const std::string& title = {},
                            Buttons buttons = Buttons::Ok, int defaultButton = 1) = 0;
  // Loads and activates the window and returns when it is closed; afterwards it is unloaded.
  virtual void showModal(Form& form) = 0;
  // Loads and activates a window that stays.
  virtual void show(Form& form) = 0;
  // Opens a menu under the pointer and waits; the id of the chosen item, 0 when it was closed without a choice.
  virtual long popUpMenu(const std::vector<MenuItem>& items) = 0;
  // Lets waiting events run.
  virtual void doEvents() = 0;

  virtual Pointer pointer() const { return pointer_; }
  virtual void setPointer(Pointer pointer) { pointer_ = pointer; }
  virtual void beep() {}
  // Opens a file or an URL with the program that the desktop has for it; false when that fails.
  virtual bool openUrl(const std::string& url) = 0;
  // Opens the program's help at a topic, by its number. A host without help does nothing.
  virtual void showHelp(long topic) { static_cast<void>(topic); }
  // The chosen path; empty when the person cancelled.
  virtual std::string saveFileDialog(const FileDialog& dialog) = 0;
  virtual std::string openFileDialog(const FileDialog& dialog) = 0;
  // Any number of files that are there; none when the person cancelled.
  virtual std::vector<std::string> openFilesDialog(const FileDialog& dialog) {
    const std::string file = openFileDialog(dialog);
    return file.empty() ? std::vector<std::string>() : std::vector<std::string>{file};
  }
  // A folder that is there; empty when the person cancelled.
  virtual std::string openFolderDialog(const std::string& title) { return openFileDialog({title, {}, {}}); }
  // Text with CR LF is put there with the line ends that the system's programs use.
  virtual void setClipboardText(const std::string& text) = 0;
  // One copy on the default printer. Raises RuntimeError when it can't be printed.
  virtual void print(const PrintJob& job) = 0;
  // Whether a Shift key is held down now.
  virtual bool shiftHeld() const { return false; }
  virtual Screen screen() const { return {1280, 800}; }
  virtual LocalTime now() const = 0;
  // Steady milliseconds, for elapsed times.
  virtual std::int64_t ticks() const = 0;

 private:
  Pointer pointer_ = Pointer::Default;
};

// The hourglass for the length of a scope; what was shown before comes back.
class PointerScope {
 public:
  PointerScope(Host& host, Pointer pointer) : host_(host), before_(host.pointer()) { host.setPointer(pointer); }
  ~PointerScope() { host_.setPointer(before_); }
  PointerScope(const PointerScope&) = delete;
  PointerScope& operator=(const PointerScope&) = delete;

 private:
  Host& host_;
  Pointer before_;
};

}  // namespace qrel
