#include "desktop/menus.h"

#include <QAction>
#include <QMenu>
#include <QMenuBar>

#include "desktop/text.h"
#include "platform/controls/menu.h"

namespace qrel {

namespace {

// Qt takes the first of several marked letters for the access key; the last one is free of another menu's.
QString withOneMark(QString caption) {
  for (qsizetype mark = caption.indexOf('&'); mark >= 0 && caption.count('&') > 1; mark = caption.indexOf('&'))
    caption.remove(mark, 1);
  return caption;
}

QMenu* addPopup(QWidget& menu, const QString& caption) {
  if (auto* bar = qobject_cast<QMenuBar*>(&menu)) return bar->addMenu(caption);
  if (auto* popup = qobject_cast<QMenu*>(&menu)) return popup->addMenu(caption);
  auto* popup = new QMenu(caption, &menu);
  menu.addAction(popup->menuAction());
  return popup;
}

}  // namespace

void addItems(QWidget& menu, const std::vector<MenuItem>& items, const std::function<void(long)>& choose) {
  for (const MenuItem& item : items) {
    if (item.separatorBefore) {
      auto* line = new QAction(&menu);
      line->setSeparator(true);
      menu.addAction(line);
    }
    // The key is shown only: pressing it is up to the window's keys.
    const QString caption = toQt(item.caption) + (item.key.empty() ? QString() : "\t" + toQt(item.key));
    if (item.popup) {
      QMenu* popup = addPopup(menu, withOneMark(caption));
      popup->setEnabled(item.enabled);
      addItems(*popup, item.items, choose);
      continue;
    }
    auto* action = new QAction(caption, &menu);
    action->setEnabled(item.enabled);
    action->setData(QVariant::fromValue<qlonglong>(item.id));
    if (!item.toolTip.empty()) action->setStatusTip(toQt(item.toolTip));
    QObject::connect(action, &QAction::triggered, &menu, [choose, id = item.id] { choose(id); });
    menu.addAction(action);
  }
}

}  // namespace qrel
