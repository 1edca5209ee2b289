// The binder: one generic piece that makes a window's widgets from `:/forms/<form.name>.ui` and ties each of them to
// the control model of the same name, both ways.
//
// Names. The top-level object is called as the form ("frmReport"); it is a QDialog, the main window a QMainWindow. A
// control "cmdOK" has the widget `cmdOK`, a member of a control array "txtTXProc(0)" the widget `txtTXProc_0`. Every
// control whose `shown` is true has its widget, and every named widget its control. Widgets that only arrange or
// explain (boxes, splitters, fixed labels, the central widget) have names that begin with "ui" and a capital:
// `uiServer`, `uiPanels`. Layouts, spacers, actions and Qt's own parts ("qt_...") are free. A name occurs once.
//
// Which widget a kind of control wants:
//   Control (frame, shape)  any widget                    visible, enabled
//   Label                   QLabel; or QStatusBar, which then shows the text as its one pane
//   LinkLabel               QLabel, or any button
//   Button, ImageButton     QPushButton or QToolButton
//   TextBox                 QLineEdit; QPlainTextEdit for several lines
//   CheckBox                QCheckBox, or a button with checkable set
//   OptionButton            QRadioButton (buttons of one group have one parent)
//   ComboBox                QComboBox; QListWidget for a plain list
//   CheckList               QTreeView or QTableView (not the ...Widget classes)
//   TextPane                QPlainTextEdit; the binder makes its own class of it
//   Grid, ReportControl     QTableView; a ReportControl prints itself through it
//   ProgressBar             QProgressBar
//   Tabs                    QTabWidget (its pages hold the controls) or QTabBar
//   Tree                    QTreeView
//   CommandBars             QToolBar by that name; without a widget of its name it is the window's menu bar
//   Timer                   none
//
// Dynamic properties of a widget (Add Dynamic Property in Designer):
//   ticks      bool        CheckList: rows have a check box
//   columns    stringlist  CheckList: titles of the columns; without it one column and no header
//   notes      bool        CheckList: what is known of a row stands behind its cells, in a column of its own
//   picture    string      buttons and tool buttons: `:/icons/<picture>.svg` (open the folder src/desktop/icons)
//   pictures   bool        Tree: a picture before each node, another one for groups than for what lies in them
//   onlyWide   bool        any: isn't shown while the window is too narrow for its buttons' words
//   keepsPlace bool        any: keeps its room in the layout while it is invisible
//
// Captions and tips that the model sets win over the form's; a text that the model never set leaves the form's alone,
// so that it can hold a caption. Texts of labels are plain text. Enter and Esc press the model's default and cancel
// buttons (don't set `default` in the form), the tab order is the form's. Splitters (`uiSomething`) and the window's
// place are kept between runs. A QDialog is resizable: give it a minimum size by its layout, not by a fixed geometry.
#pragma once

#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/controls/form.h"
#include "platform/controls/grid.h"
#include "platform/controls/menu.h"
#include "platform/controls/tabs.h"
#include "platform/controls/textPane.h"
#include "platform/controls/tree.h"

namespace qrel {

class Binder : public ControlObserver {
 public:
  // Runs what a person's act sets off in the model.
  using InHandler = std::function<void(std::function<void()>)>;

  // Makes the widgets from the text of a form. `makeWindow` makes the top-level widget of the class asked for,
  // "QDialog" or "QMainWindow"; it is owned by whoever owns what it returns. Raises RuntimeError when the text is no
  // form. The form outlives the binder.
  Binder(Form& form, const QByteArray& ui, const std::function<QWidget*(const QString& className)>& makeWindow,
         InHandler inHandler);
  ~Binder() override;

  QWidget* window() const { return window_; }
  // The widget of a control, null without one.
  QWidget* widget(std::string_view controlName) const;
  // What doesn't fit: controls without a widget, widgets without a control, names that occur twice, widgets of a kind
  // that the control can't be shown by. Empty when all is well.
  const std::vector<std::string>& mismatches() const { return mismatches_; }

  // Where a menu that a key has opened belongs on the screen, by the control that has the focus; nothing while the
  // pointer opens menus.
  std::optional<QPoint> menuPlace() const { return menuPlace_; }

  // Changes are noted and shown together, at the latest when Qt is idle; this shows them now.
  void flush();
  void controlChanged(Control& control) override;

 private:
  class Loader;
  class Watcher;

  bool isPane(const QString& name) const;
  void bind(Control& control, QWidget& widget);
  void checkNames();

  // One for each kind of control: connects the widget and returns what shows the control; an empty function when the
  // widget can't show it.
  using Show = std::function<void()>;
  Show bindKind(Control& control, QWidget& widget);
  Show bindLabel(Label& label, QWidget& widget);
  Show bindLink(LinkLabel& link, QWidget& widget);
  Show bindButton(Button& button, QWidget& widget);
  Show bindTextBox(TextBox& box, QWidget& widget);
  Show bindCheckBox(CheckBox& box, QWidget& widget);
  Show bindOption(OptionButton& option, QWidget& widget);
  Show bindCombo(ComboBox& combo, QWidget& widget);
  Show bindCheckList(CheckList& list, QWidget& widget);
  Show bindPane(TextPane& pane, QWidget& widget);
  Show bindGrid(Grid& grid, QWidget& widget);
  Show bindProgress(ProgressBar& bar, QWidget& widget);
  Show bindTabs(Tabs& tabs, QWidget& widget);
  Show bindTree(Tree& tree, QWidget& widget);
  Show bindMenus(CommandBars& bars);
  Show bindTimer(Timer& timer);

  struct Bound {
    QWidget* widget = nullptr;  // null for timers
    Show show;
    bool tipFromForm = false;
  };
  void showCommon(Control& control, const Bound& bound);

  Form& form_;
  InHandler inHandler_;
  QWidget* window_ = nullptr;
  std::unique_ptr<Watcher> watcher_;
  QObject* context_ = nullptr;  // of all connections: the watcher
  std::map<Control*, Bound> bound_;
  std::set<Control*> changed_;
  std::optional<QPoint> menuPlace_;
  bool flushing_ = false;
  bool queued_ = false;
  std::vector<std::string> mismatches_;
};

// The widget's name of a control: "txtTXProc_0" for "txtTXProc(0)".
std::string widgetName(std::string_view controlName);

}  // namespace qrel
