// A window model: its controls by name and its life from load to unload.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "platform/controls/control.h"

namespace qrel {

class Form {
 public:
  explicit Form(std::string formName) : name(std::move(formName)) {}
  Form(const Form&) = delete;
  Form& operator=(const Form&) = delete;
  virtual ~Form() = default;

  const std::string name;  // "frmReport"
  std::string caption;
  bool leavesOwnerOpen = false;  // shown modal, it lets a person go on using the modal window that it is shown from

  // The controls by name, in the order of registration; not owned.
  const std::vector<Control*>& controls() const { return controls_; }
  Control* find(std::string_view controlName) const;

  // Called by the host: once when the window is made, and at each activation.
  virtual void load() {}
  virtual void activate() {}
  // A person (or the system) asks to close the window. False keeps it open.
  virtual bool closeRequested() { return true; }
  virtual void unload() {}

  // Ends the window: the host's modal loop returns.
  void close();
  bool closed() const { return closed_; }
  void reopen() { closed_ = false; }
  std::function<void()> onClosed;  // set by the host

  // A key of the whole window, "F5" or "Alt+O", and what it does. The face only delivers it.
  struct Key {
    std::string key;
    std::function<void()> action;
  };
  const std::vector<Key>& keys() const { return keys_; }
  void personPressesKey(std::string_view key);

  // Presses the button that Enter or Esc stands for.
  void personPressesEnter();
  void personPressesEsc();

 protected:
  void add(Control& control) { controls_.push_back(&control); }
  void addKey(std::string key, std::function<void()> action) { keys_.push_back({std::move(key), std::move(action)}); }

 private:
  std::vector<Control*> controls_;
  std::vector<Key> keys_;
  bool closed_ = false;
};

}  // namespace qrel
