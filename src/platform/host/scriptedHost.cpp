#include "platform/host/scriptedHost.h"

#include "platform/controls/form.h"

namespace qrel {

Answer ScriptedHost::messageBox(const std::string& text, Icon icon, const std::string& title, Buttons buttons,
                                int defaultButton) {
  boxes.push_back({text, icon, title, buttons, defaultButton});
  if (buttons == Buttons::Ok) return Answer::Ok;
  if (answers.empty()) {
    unexpected.push_back("question: " + text);
    return Answer::Cancel;
  }
  const Answer answer = answers.front();
  answers.pop_front();
  return answer;
}

void ScriptedHost::showModal(Form& form) {
  shown.push_back(form.name);
  form.load();
  form.activate();
  if (windows.empty()) {
    unexpected.push_back("window: " + form.name);
  } else {
    const auto script = windows.front();
    windows.pop_front();
    if (!form.closed()) script(form);
  }
  form.close();
  form.unload();
}

void ScriptedHost::show(Form& form) {
  shown.push_back(form.name);
  form.load();
  form.activate();
}

long ScriptedHost::popUpMenu(const std::vector<MenuItem>& items) {
  menus.push_back(items);
  if (menuChoices.empty()) {
    unexpected.push_back("menu");
    return 0;
  }
  const long id = menuChoices.front();
  menuChoices.pop_front();
  return id;
}

void ScriptedHost::doEvents() {
  if (onDoEvents) onDoEvents();
}

std::string ScriptedHost::saveFileDialog(const FileDialog& dialog) {
  fileDialogs.push_back(dialog);
  if (files.empty()) {
    unexpected.push_back("file dialog: " + dialog.title);
    return {};
  }
  std::string file = files.front();
  files.pop_front();
  return file;
}

bool ScriptedHost::openUrl(const std::string& url) {
  opened.push_back(url);
  return opens;
}

}  // namespace qrel
