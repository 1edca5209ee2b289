// How windows use the room that they have.
#pragma once

#include <QObject>
#include <functional>

class QToolButton;
class QWidget;

namespace qrel {

// Tool buttons with their words beside the picture lose the words while the window is too narrow for them, and widgets
// with the property onlyWide (a label that explains) aren't shown then. The window
// can't be made narrower than it is without them, so that nothing ever lies over anything else.
class CompactButtons : public QObject {
 public:
  // Owned by the window. Windows without such buttons are left alone.
  explicit CompactButtons(QWidget& window);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  int leastWidth() const;
  void fit();

  QWidget& window_;
  QList<QToolButton*> buttons_;
  QList<QWidget*> onlyWide_;
  bool compact_ = false;
};

// Whether a splitter has its place from the last run.
inline constexpr const char* keptProperty = "placeKept";

// Runs it when the window that is being made stands on the screen.
void whenShown(const std::function<void()>& run);
// For a screen of 640 by 480 pixels: the whole screen, small margins.
void applySmallScreenLayout(QWidget& window);
// Gives the lists of the main window two fifths of a panel's height and the text the rest, unless a person has moved
// the border in an earlier run.
void setSplitterHeight(QWidget& window);

}  // namespace qrel
