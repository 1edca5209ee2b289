#include "desktop/binder.h"

#include <QBuffer>
#include <QComboBox>
#include <QContextMenuEvent>
#include <QDropEvent>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMimeData>
#include <QMouseEvent>
#include <QRegularExpression>
#include <QStatusBar>
#include <QTabBar>
#include <QTableView>
#include <QUiLoader>
#include <QUrl>

#include "desktop/paneEdit.h"
#include "desktop/text.h"
#include "platform/error.h"

namespace qrel {

namespace {

// Names of widgets that only arrange or explain.
bool isFree(const QString& name) {
  static const QRegularExpression free(QStringLiteral("^(ui[A-Z]|qt_)"));
  return name.isEmpty() || name.contains(free);
}

// Qt names a field by the label in front of it, but neither a list nor a table.
void nameByLabel(QWidget& window, QWidget& widget) {
  if (!widget.accessibleName().isEmpty() || !qobject_cast<QAbstractScrollArea*>(&widget)) return;
  for (const QLabel* label : window.findChildren<QLabel*>())
    if (label->buddy() == &widget)
      widget.setAccessibleName(label->text().remove(QLatin1Char('&')).remove(QLatin1Char(':')));
}

}  // namespace

std::string widgetName(std::string_view controlName) {
  std::string name(controlName);
  if (const std::size_t open = name.find('('); open != std::string::npos && name.back() == ')') {
    name.pop_back();
    name[open] = '_';
  }
  return name;
}

// Puts our own classes where the form asks for Qt's.
class Binder::Loader : public QUiLoader {
 public:
  Loader(Binder& binder, const std::function<QWidget*(const QString&)>& makeWindow)
      : binder_(binder), makeWindow_(makeWindow) {}

  QWidget* createWidget(const QString& className, QWidget* parent, const QString& name) override {
    QWidget* made = nullptr;
    if (!parent) {
      made = makeWindow_(className);
    } else if (className == QLatin1String("QPlainTextEdit") && binder_.isPane(name)) {
      made = new PaneEdit(parent);
    } else {
      return QUiLoader::createWidget(className, parent, name);
    }
    if (made) made->setObjectName(name);
    return made;
  }

 private:
  Binder& binder_;
  const std::function<QWidget*(const QString&)>& makeWindow_;
};

// Tells the models of the pointer, the focus and the mouse.
class Binder::Watcher : public QObject {
 public:
  explicit Watcher(Binder& binder) : binder_(binder) {}
  void watch(Control& control, QWidget& widget) {
    controls_[&widget] = &control;
    widget.installEventFilter(this);
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override {
    const auto found = controls_.find(watched);
    if (found == controls_.end()) return false;
    Control& control = *found->second;
    const auto tell = [&](bool here) {
      if (control.onPointedAt) binder_.inHandler_([&control, here] { control.onPointedAt(here); });
    };
    switch (event->type()) {
      case QEvent::Enter:
      case QEvent::FocusIn:
        tell(true);
        break;
      case QEvent::Leave:
      case QEvent::FocusOut:
        tell(false);
        break;
      case QEvent::MouseButtonRelease:
        if (control.onMouseUp) {
          const int button = static_cast<QMouseEvent*>(event)->button() == Qt::RightButton ? 2 : 1;
          binder_.inHandler_([&control, button] { control.onMouseUp(button); });
        }
        tellRowEvent(control, event);
        break;
      case QEvent::KeyRelease:
        tellRowEvent(control, event);
        break;
      case QEvent::ContextMenu:
        if (control.onMouseUp) return openMenu(control, *static_cast<QContextMenuEvent*>(event));
        break;
      case QEvent::DragEnter:
      case QEvent::DragMove:
      case QEvent::Drop:
        if (control.onFilesDropped) return drop(control, *static_cast<QDropEvent*>(event));
        break;
      case QEvent::ShortcutOverride:
        // A list that drops down has its own use for Alt and an arrow.
        if (const auto* key = static_cast<QKeyEvent*>(event); qobject_cast<QComboBox*>(watched) &&
                                                              key->modifiers() == Qt::AltModifier &&
                                                              (key->key() == Qt::Key_Down || key->key() == Qt::Key_Up))
          event->accept();
        break;
      default:
        break;
    }
    return false;
  }

 private:
  void tellRowEvent(Control& control, QEvent* event) {
    auto* list = dynamic_cast<CheckList*>(&control);
    if (!list || !list->onRowEvent) return;
    const Qt::KeyboardModifiers held = static_cast<QInputEvent*>(event)->modifiers();
    const int shift = (held.testFlag(Qt::ShiftModifier) ? 1 : 0) + (held.testFlag(Qt::ControlModifier) ? 2 : 0) +
                      (held.testFlag(Qt::AltModifier) ? 4 : 0);
    // The list takes the event first, so that the row under the pointer is selected.
    QMetaObject::invokeMethod(
        this, [this, list, shift] { binder_.inHandler_([list, shift] { list->onRowEvent(shift); }); },
        Qt::QueuedConnection);
  }

  // A menu that the pointer asks for opens when its button goes up, by MouseButtonRelease.
  bool openMenu(Control& control, QContextMenuEvent& event) {
    if (event.reason() != QContextMenuEvent::Keyboard) return true;
    binder_.menuPlace_ = event.globalPos();
    binder_.inHandler_([&control] { control.onMouseUp(2); });
    binder_.menuPlace_.reset();
    event.accept();
    return true;
  }

  // The handler may open a window, which the system that still holds what was dragged would wait for.
  bool drop(Control& control, QDropEvent& event) {
    std::vector<std::string> paths;
    for (const QUrl& url : event.mimeData()->urls())
      if (url.isLocalFile()) paths.push_back(fromQt(url.toLocalFile()));
    if (paths.empty()) return false;
    event.setDropAction(Qt::CopyAction);
    event.accept();
    if (event.type() == QEvent::Drop)
      QMetaObject::invokeMethod(
          this, [this, &control, paths] { binder_.inHandler_([&control, &paths] { control.onFilesDropped(paths); }); },
          Qt::QueuedConnection);
    return true;
  }

  Binder& binder_;
  std::map<QObject*, Control*> controls_;
};

Binder::Binder(Form& form, const QByteArray& ui, const std::function<QWidget*(const QString&)>& makeWindow,
               InHandler inHandler)
    : form_(form),
      inHandler_(std::move(inHandler)),
      watcher_(std::make_unique<Watcher>(*this)),
      context_(watcher_.get()) {
  Loader loader(*this, makeWindow);
  QByteArray text = ui;
  QBuffer buffer(&text);
  buffer.open(QIODevice::ReadOnly);
  window_ = loader.load(&buffer);
  if (!window_)
    throw RuntimeError(5, "The form of the window '" + form.name + "' can't be read: " + fromQt(loader.errorString()));
  for (Control* control : form.controls()) {
    if (!control->shown) continue;
    if (auto* timer = dynamic_cast<Timer*>(control)) {
      bound_[control] = {nullptr, bindTimer(*timer), false};
      control->observer = this;
      continue;
    }
    QWidget* found = widget(control->name);
    if (auto* bars = dynamic_cast<CommandBars*>(control); bars && !found) {
      bound_[control] = {nullptr, bindMenus(*bars), false};
      control->observer = this;
    } else if (found) {
      bind(*control, *found);
    } else {
      mismatches_.push_back(form.name + ": no widget for the control " + control->name);
    }
  }
  checkNames();
  for (auto& [control, bound] : bound_) changed_.insert(control);
  flush();
}

Binder::~Binder() {
  for (auto& [control, bound] : bound_) {
    control->observer = nullptr;
    control->onFocus = nullptr;
    if (auto* pane = dynamic_cast<TextPane*>(control)) pane->onSearchAsked = nullptr;
  }
}

bool Binder::isPane(const QString& name) const {
  for (Control* control : form_.controls())
    if (toQt(widgetName(control->name)) == name) return dynamic_cast<TextPane*>(control) != nullptr;
  return false;
}

QWidget* Binder::widget(std::string_view controlName) const {
  return window_->findChild<QWidget*>(toQt(widgetName(controlName)));
}

void Binder::bind(Control& control, QWidget& widget) {
  Show show = bindKind(control, widget);
  if (!show) {
    mismatches_.push_back(form_.name + ": the widget " + fromQt(widget.objectName()) + " is a " +
                          widget.metaObject()->className() + ", which can't show that control");
    return;
  }
  bound_[&control] = {&widget, std::move(show), !widget.toolTip().isEmpty()};
  nameByLabel(*window_, widget);
  control.observer = this;
  control.onFocus = [this, &control, &widget] {
    flush();
    widget.setFocus();
    if (control.selectAllOnFocus())
      if (auto* line = qobject_cast<QLineEdit*>(&widget)) line->selectAll();
  };
  auto* area = qobject_cast<QAbstractScrollArea*>(&widget);
  watcher_->watch(control, widget);
  if (area) watcher_->watch(control, *area->viewport());
  if (auto* table = qobject_cast<QTableView*>(&widget))
    watcher_->watch(control, *table->horizontalHeader()->viewport());
  if (control.onFilesDropped) {
    widget.setAcceptDrops(true);
    if (area) area->viewport()->setAcceptDrops(true);
  }
  if (control.onMouseUp) widget.setContextMenuPolicy(Qt::PreventContextMenu);
  if (widget.property("keepsPlace").toBool()) {
    QSizePolicy policy = widget.sizePolicy();
    policy.setRetainSizeWhenHidden(true);
    widget.setSizePolicy(policy);
  }
}

void Binder::checkNames() {
  std::set<QString> known, seen;
  for (Control* control : form_.controls())
    if (control->shown) known.insert(toQt(widgetName(control->name)));
  for (const QWidget* each : window_->findChildren<QWidget*>()) {
    const QString name = each->objectName();
    // A tab bar has buttons of its own.
    if (isFree(name) || qobject_cast<const QMenuBar*>(each) || qobject_cast<QTabBar*>(each->parentWidget())) continue;
    if (!known.count(name)) mismatches_.push_back(form_.name + ": no control for the widget " + fromQt(name));
    if (!seen.insert(name).second) mismatches_.push_back(form_.name + ": two widgets are called " + fromQt(name));
  }
}

void Binder::controlChanged(Control& control) {
  changed_.insert(&control);
  if (queued_ || flushing_) return;
  queued_ = true;
  QMetaObject::invokeMethod(
      watcher_.get(), [this] { flush(); }, Qt::QueuedConnection);
}

void Binder::flush() {
  queued_ = false;
  if (flushing_) return;
  flushing_ = true;
  if (const QString title = toQt(form_.caption); !title.isEmpty() && window_->windowTitle() != title)
    window_->setWindowTitle(title);
  while (!changed_.empty()) {
    Control* control = *changed_.begin();
    changed_.erase(changed_.begin());
    const auto found = bound_.find(control);
    if (found == bound_.end()) continue;
    const Bound& bound = found->second;
    if (bound.widget) {
      const QSignalBlocker silent(bound.widget);
      showCommon(*control, bound);
      bound.show();
    } else {
      bound.show();
    }
  }
  flushing_ = false;
}

void Binder::showCommon(Control& control, const Bound& bound) {
  QWidget& widget = *bound.widget;
  if (widget.isEnabled() != control.enabled()) widget.setEnabled(control.enabled());
  // isHidden tells what was asked for, isVisible whether it can be seen.
  if (widget.isHidden() == control.visible()) widget.setVisible(control.visible());
  if (!control.toolTip().empty() || !bound.tipFromForm) {
    const QString tip = toQt(control.toolTip());
    if (widget.toolTip() != tip) widget.setToolTip(tip);
  }
}

}  // namespace qrel
