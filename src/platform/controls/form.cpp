#include "platform/controls/form.h"

namespace qrel {

Control* Form::find(std::string_view controlName) const {
  for (Control* control : controls_)
    if (control->name == controlName) return control;
  return nullptr;
}

void Form::close() {
  if (closed_) return;
  closed_ = true;
  if (onClosed) onClosed();
}

void Form::personPressesKey(std::string_view key) {
  for (const Key& one : keys_)
    if (one.key == key) return one.action();
}

void Form::personPressesEnter() {
  for (Control* control : controls_)
    if (auto* button = dynamic_cast<Button*>(control); button && button->isDefault) return button->personClicks();
}

void Form::personPressesEsc() {
  for (Control* control : controls_)
    if (auto* button = dynamic_cast<Button*>(control); button && button->isCancel) return button->personClicks();
}

}  // namespace qrel
