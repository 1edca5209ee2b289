// Menus: the bar of a window and the ones that open under the pointer.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "platform/controls/control.h"

namespace qrel {

struct MenuItem {
  long id = 0;
  std::string caption;           // with "&" before its access key
  bool separatorBefore = false;  // a line above it
  bool enabled = true;
  std::string toolTip;
  std::string key;              // "F5": shown beside the caption; pressing it is up to the window's keys
  bool popup = false;           // opens `items`; choosing it does nothing
  std::vector<MenuItem> items;  // of a popup
};

// The menus of a window's bar. Choosing an item raises one event with its id.
class CommandBars : public Control {
 public:
  using Control::Control;
  const std::vector<MenuItem>& menus() const { return menus_; }
  void setMenus(std::vector<MenuItem> menus) {
    menus_ = std::move(menus);
    changed();
  }
  std::function<void(long id)> onExecute;
  // A person chose an item; a muted bar stays silent.
  void personChooses(long id) {
    if (!muted() && onExecute) onExecute(id);
  }

 private:
  std::vector<MenuItem> menus_;
};

}  // namespace qrel
