// A row of tabs, one of which is on top.
#pragma once

#include <string>
#include <vector>

#include "platform/controls/control.h"

namespace qrel {

// Tabs are 0-based; made with none. The face's pages follow the tabs in order.
class Tabs : public Control {
 public:
  using Control::Control;
  std::size_t count() const { return titles_.size(); }
  const std::string& title(std::size_t tab) const { return titles_.at(tab); }
  void setTitles(std::vector<std::string> titles) {
    titles_ = std::move(titles);
    if (selected_ >= titles_.size()) selected_ = 0;
    changed();
  }
  std::size_t selected() const { return selected_; }
  // Bringing a tab to the top raises the event too when it is another one; a muted control stays silent.
  void select(std::size_t tab) {
    if (tab >= titles_.size() || tab == selected_) return;
    selected_ = tab;
    changed();
    if (!muted() && onClick) onClick();
  }
  std::function<void()> onClick;

 private:
  std::vector<std::string> titles_;
  std::size_t selected_ = 0;
};

}  // namespace qrel
