// A window on the screen: the widgets of one form, bound to its model, and how it opens, takes keys and closes.
#pragma once

#include <QPointer>
#include <functional>
#include <memory>

#include "desktop/binder.h"
#include "platform/store/keyStore.h"

namespace qrel {

// Handlers of the model run one inside the other: a handler yields to events, and the next click comes. A window that
// is asked to close while one runs tells its form, stays, and closes when the last one has returned.
class FormWindow {
 public:
  // Makes the widgets and loads the form. `owner` is the window in front of which it stands, or null. Places are kept
  // under the product's key. Raises RuntimeError when there is no form of that name.
  FormWindow(Form& form, QWidget* owner, KeyStore& places);
  // Unloads the form. No handler may be running.
  ~FormWindow();
  FormWindow(const FormWindow&) = delete;
  FormWindow& operator=(const FormWindow&) = delete;

  Form& form() { return form_; }
  QWidget& widget() { return *window_; }
  Binder& binder() { return *binder_; }
  bool handlerRuns() const { return depth_ > 0; }

  // Puts it on the screen; the form is activated when it is there.
  void show(bool modal);
  // Runs something of the model. Errors that nobody has trapped are told in a box.
  void inHandler(const std::function<void()>& run);

  std::function<void()> onClosed;  // the form is closed and no handler runs any more

  // What the widgets tell.
  void closeAsked();
  void enterPressed();
  void escPressed();
  void activated();

 private:
  void addKeys();
  void hideWhenClosed();
  void restorePlace();
  void savePlace();

  Form& form_;
  KeyStore& places_;
  std::unique_ptr<QWidget> window_;
  std::unique_ptr<Binder> binder_;
  int depth_ = 0;
  bool closeWaits_ = false;
  bool shown_ = false;  // the first activation has been handed on
  bool told_ = false;
};

// The text of a window's form; empty when there is none.
QByteArray formText(const std::string& formName);

}  // namespace qrel
