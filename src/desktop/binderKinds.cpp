// How each kind of control is shown, and what of it a person can change.
#include <QAbstractButton>
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QCompleter>
#include <QHeaderView>
#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMainWindow>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QStandardItemModel>
#include <QStatusBar>
#include <QTabWidget>
#include <QTableView>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <cmath>
#include <utility>

#include "desktop/binder.h"
#include "desktop/gridHandling.h"
#include "desktop/menus.h"
#include "desktop/models.h"
#include "desktop/paneEdit.h"
#include "desktop/tablePrinting.h"
#include "desktop/text.h"

namespace qrel {

namespace {

// A text that the model never set leaves the form's alone.
template <class Widget>
void showText(Widget& widget, const std::string& text) {
  const QString shown = toQt(text);
  if (!shown.isEmpty() && widget.text() != shown) widget.setText(shown);
}

void showPicture(QAbstractButton& button, const QString& picture) {
  if (!picture.isEmpty()) button.setIcon(QIcon(QStringLiteral(":/icons/%1.svg").arg(picture)));
}

void fill(QWidget& widget, std::uint32_t colour) {
  QPalette palette = widget.palette();
  palette.setColor(widget.backgroundRole(), shownBackground(colour, palette));
  widget.setPalette(palette);
  widget.setAutoFillBackground(true);
}

}  // namespace

Binder::Show Binder::bindKind(Control& control, QWidget& widget) {
  if (auto* link = dynamic_cast<LinkLabel*>(&control)) return bindLink(*link, widget);
  if (auto* label = dynamic_cast<Label*>(&control)) return bindLabel(*label, widget);
  if (auto* button = dynamic_cast<Button*>(&control)) return bindButton(*button, widget);
  if (auto* box = dynamic_cast<TextBox*>(&control)) return bindTextBox(*box, widget);
  if (auto* box = dynamic_cast<CheckBox*>(&control)) return bindCheckBox(*box, widget);
  if (auto* option = dynamic_cast<OptionButton*>(&control)) return bindOption(*option, widget);
  if (auto* combo = dynamic_cast<ComboBox*>(&control)) return bindCombo(*combo, widget);
  if (auto* list = dynamic_cast<CheckList*>(&control)) return bindCheckList(*list, widget);
  if (auto* pane = dynamic_cast<TextPane*>(&control)) return bindPane(*pane, widget);
  if (auto* grid = dynamic_cast<Grid*>(&control)) return bindGrid(*grid, widget);
  if (auto* bar = dynamic_cast<ProgressBar*>(&control)) return bindProgress(*bar, widget);
  if (auto* tabs = dynamic_cast<Tabs*>(&control)) return bindTabs(*tabs, widget);
  if (auto* tree = dynamic_cast<Tree*>(&control)) return bindTree(*tree, widget);
  if (auto* bars = dynamic_cast<CommandBars*>(&control)) {
    auto* toolBar = qobject_cast<QToolBar*>(&widget);
    if (!toolBar) return nullptr;
    return [this, bars, toolBar] {
      toolBar->clear();
      addItems(*toolBar, bars->menus(), [this, bars](long id) { inHandler_([bars, id] { bars->personChooses(id); }); });
    };
  }
  return [] {};  // a frame or a shape: what all controls have is all it has
}

Binder::Show Binder::bindLabel(Label& label, QWidget& widget) {
  if (auto* bar = qobject_cast<QStatusBar*>(&widget)) return [&label, bar] { bar->showMessage(toQt(label.text())); };
  auto* shown = qobject_cast<QLabel*>(&widget);
  if (!shown) return nullptr;
  // A caption with an access key comes from the form; the model's texts are shown as they are.
  const QString fromForm = shown->text();
  return [&label, shown, fromForm] {
    QString text = label.text().empty() ? fromForm : toQt(label.text());
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (!shown->buddy()) shown->setTextFormat(Qt::PlainText);
    if (shown->text() != text) shown->setText(text);
    if (label.backColour) fill(*shown, *label.backColour);
  };
}

Binder::Show Binder::bindLink(LinkLabel& link, QWidget& widget) {
  if (auto* button = qobject_cast<QAbstractButton*>(&widget)) {
    QObject::connect(button, &QAbstractButton::clicked, context_,
                     [this, &link] { inHandler_([&link] { link.personClicks(); }); });
    return [&link, button] { showText(*button, link.text()); };
  }
  auto* label = qobject_cast<QLabel*>(&widget);
  if (!label) return nullptr;
  label->setTextInteractionFlags(Qt::LinksAccessibleByMouse | Qt::LinksAccessibleByKeyboard);
  QObject::connect(label, &QLabel::linkActivated, context_,
                   [this, &link] { inHandler_([&link] { link.personClicks(); }); });
  return [&link, label] {
    const QString words = link.text().empty() ? label->text() : toQt(link.text());
    if (!words.startsWith(QLatin1String("<a "))) label->setText("<a href=\"#\">" + words.toHtmlEscaped() + "</a>");
  };
}

Binder::Show Binder::bindButton(Button& button, QWidget& widget) {
  auto* shown = qobject_cast<QAbstractButton*>(&widget);
  if (!shown) return nullptr;
  if (auto* push = qobject_cast<QPushButton*>(shown)) {
    push->setAutoDefault(false);
    push->setDefault(button.isDefault);
  }
  QObject::connect(shown, &QAbstractButton::clicked, context_,
                   [this, &button] { inHandler_([&button] { button.personClicks(); }); });
  const QString picture = widget.property("picture").toString();
  showPicture(*shown, picture);
  auto* image = dynamic_cast<ImageButton*>(&button);
  return [&button, shown, image, picture] {
    showText(*shown, button.text());
    if (image && image->image() > 0) showPicture(*shown, QStringLiteral("%1-%2").arg(picture).arg(image->image()));
  };
}

Binder::Show Binder::bindTextBox(TextBox& box, QWidget& widget) {
  if (auto* line = qobject_cast<QLineEdit*>(&widget)) {
    line->setReadOnly(box.readOnly);
    if (box.password) line->setEchoMode(QLineEdit::Password);
    if (box.numeric)
      line->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9]*")), line));
    QObject::connect(line, &QLineEdit::textEdited, context_, [this, &box](const QString& text) {
      inHandler_([&box, text] { box.personTypes(fromQt(text)); });
    });
    if (!box.placeholder.empty()) line->setPlaceholderText(toQt(box.placeholder));
    if (!box.suggestions.empty()) {
      QStringList texts;
      for (const std::string& text : box.suggestions) texts.push_back(toQt(text));
      auto* completer = new QCompleter(texts, line);
      completer->setCaseSensitivity(Qt::CaseInsensitive);
      line->setCompleter(completer);
      QObject::connect(
          completer, qOverload<const QString&>(&QCompleter::activated), context_,
          [this, &box](const QString& text) { inHandler_([&box, text] { box.personTypes(fromQt(text)); }); });
    }
    return [&box, line] {
      line->setReadOnly(box.readOnly);
      if (const QString text = toQt(box.text()); line->text() != text) line->setText(text);
    };
  }
  auto* edit = qobject_cast<QPlainTextEdit*>(&widget);
  if (!edit) return nullptr;
  edit->setTabChangesFocus(true);
  QObject::connect(edit, &QPlainTextEdit::textChanged, context_, [this, &box, edit] {
    inHandler_([&box, text = fromQt(edit->toPlainText())] { box.personTypes(text); });
  });
  return [&box, edit] {
    edit->setReadOnly(box.readOnly);
    QString text = toQt(box.text());
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    if (edit->toPlainText() != text) edit->setPlainText(text);
  };
}

Binder::Show Binder::bindCheckBox(CheckBox& box, QWidget& widget) {
  auto* shown = qobject_cast<QAbstractButton*>(&widget);
  if (!shown || !shown->isCheckable()) return nullptr;
  showPicture(*shown, widget.property("picture").toString());
  QObject::connect(shown, &QAbstractButton::clicked, context_,
                   [this, &box](bool on) { inHandler_([&box, on] { box.personSets(on); }); });
  return [&box, shown] {
    showText(*shown, box.text());
    shown->setChecked(box.checked());
  };
}

Binder::Show Binder::bindOption(OptionButton& option, QWidget& widget) {
  auto* shown = qobject_cast<QRadioButton*>(&widget);
  if (!shown) return nullptr;
  QObject::connect(shown, &QAbstractButton::clicked, context_,
                   [this, &option] { inHandler_([&option] { option.choose(); }); });
  return [&option, shown] {
    showText(*shown, option.text());
    // Buttons of one group can't all be off while they exclude one another.
    shown->setAutoExclusive(false);
    shown->setChecked(option.chosen());
    shown->setAutoExclusive(true);
  };
}

Binder::Show Binder::bindCombo(ComboBox& combo, QWidget& widget) {
  const auto choose = [this, &combo](int row) {
    inHandler_([&combo, row] {
      if (combo.enabled() && row >= 0) combo.select(row);
    });
  };
  if (auto* box = qobject_cast<QComboBox*>(&widget)) {
    QObject::connect(box, &QComboBox::activated, context_, choose);
    return [&combo, box] {
      QStringList rows;
      for (std::size_t i = 0; i < combo.count(); ++i) rows.push_back(toQt(combo.row(i)));
      bool same = box->count() == rows.size();
      for (int i = 0; same && i < box->count(); ++i) same = box->itemText(i) == rows[i];
      if (!same) {
        box->clear();
        box->addItems(rows);
      }
      box->setCurrentIndex(combo.selected());
    };
  }
  auto* list = qobject_cast<QListWidget*>(&widget);
  if (!list) return nullptr;
  QObject::connect(list, &QListWidget::currentRowChanged, context_, choose);
  return [&combo, list] {
    list->clear();
    for (std::size_t i = 0; i < combo.count(); ++i) list->addItem(toQt(combo.row(i)));
    list->setCurrentRow(combo.selected());
  };
}

Binder::Show Binder::bindCheckList(CheckList& list, QWidget& widget) {
  auto* view = qobject_cast<QAbstractItemView*>(&widget);
  auto* tree = qobject_cast<QTreeView*>(&widget);
  if (!view || qobject_cast<QListWidget*>(&widget)) return nullptr;
  const QStringList titles = widget.property("columns").toStringList();
  const bool notes = widget.property("notes").toBool();
  auto* model = new CheckListModel(list, titles, widget.property("ticks").toBool(), notes, view);
  view->setItemDelegate(new TipWhereCut(view));
  view->setModel(model);
  view->setSelectionBehavior(QAbstractItemView::SelectRows);
  view->setSelectionMode(list.multipleSelection ? QAbstractItemView::ExtendedSelection
                                                : QAbstractItemView::SingleSelection);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  if (tree) {
    tree->setRootIsDecorated(false);
    tree->setUniformRowHeights(true);
    tree->setHeaderHidden(titles.isEmpty());
    if (notes) {
      tree->header()->setStretchLastSection(false);
      tree->header()->setSectionResizeMode(0, QHeaderView::Stretch);
      tree->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
    }
  }
  model->onTick = [this, &list](std::size_t row, bool ticked) {
    inHandler_([&list, row, ticked] { list.personTicks(row, ticked); });
  };
  QObject::connect(view->selectionModel(), &QItemSelectionModel::selectionChanged, context_, [this, &list, view] {
    if (flushing_) return;
    std::vector<std::size_t> rows;
    for (const QModelIndex& index : view->selectionModel()->selectedRows())
      rows.push_back(static_cast<std::size_t>(index.row()));
    inHandler_([&list, rows] { list.personSelects(rows); });
  });
  QObject::connect(view, &QAbstractItemView::doubleClicked, context_, [this, &list] {
    if (list.onDoubleClick) inHandler_([&list] { list.onDoubleClick(); });
  });
  return [&list, view, model, tree, titles] {
    model->refresh();
    QItemSelection wanted;
    int first = -1;
    for (int row = 0; row < model->rowCount(); ++row) {
      const auto at = static_cast<std::size_t>(row);
      if (tree && tree->isRowHidden(row, {}) == list.passes(at)) tree->setRowHidden(row, {}, !list.passes(at));
      if (!list.isSelected(at)) continue;
      if (first < 0) first = row;
      wanted.select(model->index(row, 0), model->index(row, model->columnCount() - 1));
    }
    view->selectionModel()->select(wanted, QItemSelectionModel::ClearAndSelect);
    if (first >= 0 && list.selectionCount() == 1) {
      view->selectionModel()->setCurrentIndex(model->index(first, 0), QItemSelectionModel::NoUpdate);
      view->scrollTo(model->index(first, 0));
    }
    if (tree && titles.size() > 1)
      for (int column = 0; column + 1 < titles.size(); ++column) tree->resizeColumnToContents(column);
    view->viewport()->update();
  };
}

Binder::Show Binder::bindPane(TextPane& pane, QWidget& widget) {
  auto* edit = dynamic_cast<PaneEdit*>(&widget);
  if (!edit) return nullptr;
  edit->bind(pane, inHandler_);
  pane.onSearchAsked = [this, edit] {
    flush();
    edit->openSearch();
  };
  return [edit] { edit->refresh(); };
}

Binder::Show Binder::bindGrid(Grid& grid, QWidget& widget) {
  auto* view = qobject_cast<QTableView*>(&widget);
  if (!view) return nullptr;
  auto* model = new GridModel(grid, view);
  view->setModel(model);
  view->setItemDelegate(new FramedSelection(view));
  view->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  view->verticalHeader()->setDefaultSectionSize(view->fontMetrics().height() + 6);
  view->verticalHeader()->hide();
  view->setWordWrap(false);
  auto* handling = new GridHandling(*view, grid);
  if (auto* report = dynamic_cast<ReportControl*>(&grid)) connectPrinting(*report, *view);
  return [&grid, view, model, handling, shownTop = std::size_t{0}]() mutable {
    model->refresh();
    handling->shown();
    if (std::exchange(shownTop, grid.topRow()) == grid.topRow() || grid.topRow() == 0) return;
    view->doItemsLayout();  // new rows can't be scrolled to before
    view->scrollTo(model->index(static_cast<int>(grid.topRow()) - 1, 0), QAbstractItemView::PositionAtTop);
  };
}

Binder::Show Binder::bindProgress(ProgressBar& bar, QWidget& widget) {
  auto* shown = qobject_cast<QProgressBar*>(&widget);
  if (!shown) return nullptr;
  constexpr int steps = 1000;
  shown->setRange(0, steps);
  return [&bar, shown] {
    const double percent = std::isfinite(bar.value()) ? std::clamp(bar.value(), 0.0, 100.0) : 0;
    shown->setValue(static_cast<int>(percent / 100 * steps));
  };
}

Binder::Show Binder::bindTabs(Tabs& tabs, QWidget& widget) {
  const auto choose = [this, &tabs](int tab) {
    if (tab >= 0) inHandler_([&tabs, tab] { tabs.select(static_cast<std::size_t>(tab)); });
  };
  const auto show = [&tabs](auto* shown) {
    for (int tab = 0; tab < shown->count() && tab < static_cast<int>(tabs.count()); ++tab)
      shown->setTabText(tab, toQt(tabs.title(static_cast<std::size_t>(tab))));
    shown->setCurrentIndex(static_cast<int>(tabs.selected()));
  };
  if (auto* pages = qobject_cast<QTabWidget*>(&widget)) {
    QObject::connect(pages, &QTabWidget::currentChanged, context_, choose);
    return [pages, show] { show(pages); };
  }
  auto* bar = qobject_cast<QTabBar*>(&widget);
  if (!bar) return nullptr;
  QObject::connect(bar, &QTabBar::currentChanged, context_, choose);
  return [&tabs, bar, show] {
    while (bar->count() < static_cast<int>(tabs.count())) bar->addTab(QString());
    while (bar->count() > static_cast<int>(tabs.count())) bar->removeTab(bar->count() - 1);
    show(bar);
  };
}

Binder::Show Binder::bindTree(Tree& tree, QWidget& widget) {
  auto* view = qobject_cast<QTreeView*>(&widget);
  if (!view) return nullptr;
  auto* model = new QStandardItemModel(view);
  view->setModel(model);
  view->setHeaderHidden(true);
  view->setEditTriggers(QAbstractItemView::NoEditTriggers);
  QObject::connect(view->selectionModel(), &QItemSelectionModel::currentChanged, context_,
                   [this, &tree](const QModelIndex& current) {
                     if (flushing_ || !current.isValid()) return;
                     inHandler_([&tree, node = current.data(Qt::UserRole).toInt()] { tree.select(node); });
                   });
  const auto expand = [this, &tree](const QModelIndex& index, bool expanded) {
    inHandler_([&tree, node = index.data(Qt::UserRole).toInt(), expanded] { tree.personExpands(node, expanded); });
  };
  QObject::connect(view, &QTreeView::expanded, context_, [expand](const QModelIndex& index) { expand(index, true); });
  QObject::connect(view, &QTreeView::collapsed, context_, [expand](const QModelIndex& index) { expand(index, false); });
  const bool pictures = view->property("pictures").toBool();
  return [&tree, view, model, pictures] {
    model->clear();
    std::vector<QStandardItem*> items;
    for (int node = 0; node < static_cast<int>(tree.count()); ++node) {
      items.push_back(new QStandardItem(toQt(tree.text(node))));
      items.back()->setData(node, Qt::UserRole);
      const int parent = tree.parent(node);
      if (pictures)
        items.back()->setIcon(
            QIcon(parent < 0 ? QStringLiteral(":/icons/group.svg") : QStringLiteral(":/icons/page.svg")));
      (parent < 0 ? model->invisibleRootItem() : items[static_cast<std::size_t>(parent)])->appendRow(items.back());
    }
    for (int node = 0; node < static_cast<int>(tree.count()); ++node) {
      const QModelIndex index = items[static_cast<std::size_t>(node)]->index();
      view->setExpanded(index, tree.expanded(node));
      if (node == tree.selected()) view->setCurrentIndex(index);
    }
  };
}

Binder::Show Binder::bindMenus(CommandBars& bars) {
  auto* main = qobject_cast<QMainWindow*>(window_);
  if (!main) return [] {};
  return [this, &bars, main] {
    main->menuBar()->clear();
    addItems(*main->menuBar(), bars.menus(),
             [this, &bars](long id) { inHandler_([&bars, id] { bars.personChooses(id); }); });
  };
}

Binder::Show Binder::bindTimer(Timer& timer) {
  auto* ticking = new QTimer(window_);
  QObject::connect(ticking, &QTimer::timeout, context_, [this, &timer] { inHandler_([&timer] { timer.tick(); }); });
  return [&timer, ticking] {
    if (timer.enabled() && !ticking->isActive()) ticking->start(timer.interval);
    if (!timer.enabled()) ticking->stop();
  };
}

}  // namespace qrel
