// A tree of texts with one selection.
#pragma once

#include <string>
#include <vector>

#include "platform/controls/control.h"

namespace qrel {

// Nodes are known by the number that add gave them, from 0 in the order of adding; -1 stands for no node.
class Tree : public Control {
 public:
  using Control::Control;
  static constexpr int none = -1;

  // Adds a node as the last below `parent`; none: a root.
  int add(int parent, std::string text) {
    nodes_.push_back({parent, std::move(text), false});
    changed();
    return static_cast<int>(nodes_.size()) - 1;
  }
  void clear() {
    nodes_.clear();
    selected_ = none;
    changed();
  }
  std::size_t count() const { return nodes_.size(); }
  int parent(int node) const { return nodes_.at(static_cast<std::size_t>(node)).parent; }
  const std::string& text(int node) const { return nodes_.at(static_cast<std::size_t>(node)).text; }
  bool expanded(int node) const { return nodes_.at(static_cast<std::size_t>(node)).expanded; }
  void setExpanded(int node, bool expanded) {
    nodes_.at(static_cast<std::size_t>(node)).expanded = expanded;
    changed();
  }

  // The face shows it by now, and isn't told.
  void personExpands(int node, bool expanded) { nodes_.at(static_cast<std::size_t>(node)).expanded = expanded; }

  int selected() const { return selected_; }
  // Raises the event unless muted, by code too.
  void select(int node) {
    if (node < none || node >= static_cast<int>(nodes_.size())) return;
    selected_ = node;
    changed();
    if (!muted() && onClick) onClick();
  }
  std::function<void()> onClick;

 private:
  struct Node {
    int parent;
    std::string text;
    bool expanded;
  };
  std::vector<Node> nodes_;
  int selected_ = none;
};

}  // namespace qrel
