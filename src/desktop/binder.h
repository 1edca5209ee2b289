// The binder: one generic piece that makes a window's widgets from `:/forms/<form.name>.ui` and ties each of them to the
// control model of the same name, both ways.
//
// Names. The top-level object is called as the form ("frmReport"); it is a QDialog, the main window a QMainWindow. A
// control "cmdOK" has the widget `cmdOK`, a member of a control array "txtTXProc(0)" the widget `txtTXProc_0`. Every
// control whose `shown` is true has its widget, and every named widget its control. Widgets that only arrange or explain
// (boxes, splitters, fixed labels, the central widget) have names that begin with "ui" and a capital: `uiServer`,
// `uiPanels`. Layouts, spacers, actions and Qt's own parts ("qt_...") are free. A name occurs once.
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
//   Grid                    QTableView
//   ProgressBar             QProgressBar
//   Tabs                    QTabWidget (its pages hold the controls) or QTabBar
//   Tree                    QTreeView
//   CommandBars             QToolBar by that name; without a widget of its name it is the window's menu bar
//   Timer                   none
//
// Dynamic properties of a widget (Add Dynamic Property in Designer):
//   ticks      bool        CheckList: rows have a check box
//   columns    stringlist  CheckList: titles of the columns; without it one column and no header
//   picture    string      buttons and tool buttons: `:/icons/<picture>.svg` (open the folder src/desktop/icons)
//   keepsPlace bool        any: keeps its room in the layout while it is invisible
//
// Captions and tips that the model sets win over the form's; a text that the model never set leaves the form's alone, so
// that it can hold a caption. Texts of labels are plain text. Enter and Esc press the model's default and cancel buttons
// (don't set `default` in the form), the tab order is the form's. Splitters (`uiSomething`) and the window's place are
// kept between runs. A QDialog is resizable: give it a minimum size by its layout, not by a fixed geometry.
#pragma once
