#include "platform/host/consoleHost.h"

#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <ostream>

#include "platform/controls/form.h"
#include "platform/files.h"
#include "platform/system.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

// 2026-11-24 08:05:09
std::string timeText(const LocalTime& time) {
  char text[32];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", time.year % 10000, time.month % 100, time.day % 100,
                time.hour % 100, time.minute % 100, time.second % 100);
  return text;
}

}  // namespace

void ConsoleHost::tell(const std::string& title, const std::string& text) {
  if (withTime) messages_ << timeText(now()) << ' ';
  messages_ << "qrel: ";
  if (!title.empty()) messages_ << title << ": ";
  messages_ << visibleLines(replaceAll(text, "\r\n", "\n")) << '\n';
  messages_.flush();
}

namespace {

Answer answerOf(Buttons buttons, int defaultButton) {
  switch (buttons) {
    case Buttons::Ok:
      return Answer::Ok;
    case Buttons::OkCancel:
      return defaultButton == 2 ? Answer::Cancel : Answer::Ok;
    case Buttons::YesNo:
      return defaultButton == 2 ? Answer::No : Answer::Yes;
    case Buttons::YesNoCancel:
      return defaultButton == 3 ? Answer::Cancel : defaultButton == 2 ? Answer::No : Answer::Yes;
    case Buttons::RetryCancel:
      return defaultButton == 2 ? Answer::Cancel : Answer::Retry;
  }
  return Answer::Cancel;
}

}  // namespace

Answer ConsoleHost::messageBox(const std::string& text, Icon, const std::string& title, Buttons buttons,
                               int defaultButton) {
  if (!tellBox || !tellBox(title, text)) tell(title, text);
  return answerOf(buttons, defaultButton);
}

void ConsoleHost::tellReadOnlyTexts(Form& form) {
  for (Control* control : form.controls()) {
    const auto* box = dynamic_cast<const TextBox*>(control);
    if (box && box->readOnly && !box->text().empty()) {
      ++errorReports_;
      if (!tellWindow || !tellWindow(form)) tell(form.caption, box->text());
    }
  }
}

void ConsoleHost::showModal(Form& form) {
  Form* const before = shown_;
  shown_ = &form;
  form.load();
  form.activate();
  if (onWindow) onWindow(form);
  if (windows.empty()) {
    tellReadOnlyTexts(form);
  } else {
    const auto action = std::move(windows.front());
    windows.pop_front();
    action(form);
  }
  form.close();
  form.unload();
  shown_ = before;
}

void ConsoleHost::show(Form& form) {
  form.load();
  form.activate();
}

void ConsoleHost::print(const PrintJob& job) {
  const std::string stamp = replaceAll(timeText(now()), ":", "");  // no file name holds a colon everywhere
  std::filesystem::path file;
  for (int copy = 1; copy == 1 || files::exists(file); ++copy)  // several pages of one second each have a file
    file = std::filesystem::path(printFolder) /
           (job.title + ' ' + stamp + (copy > 1 ? " (" + std::to_string(copy) + ")" : "") + ".txt");
  files::writeAtomically(file, (job.header.empty() ? "" : job.header + "\r\n\r\n") +
                                   replaceAll(replaceAll(job.text, "\r\n", "\n"), "\n", "\r\n"));
  tell("", "printed to " + file.string());
}

void ConsoleHost::doEvents() {
  if (onDoEvents) onDoEvents();
}

LocalTime ConsoleHost::now() const {
  const std::time_t seconds = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  const std::tm parts = system::localTime(seconds);
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec};
}

std::int64_t ConsoleHost::ticks() const {
  return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

}  // namespace qrel
