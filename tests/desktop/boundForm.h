// A form bound to its model, without a host.
#pragma once

#include <QDialog>
#include <QMainWindow>
#include <memory>

#include "desktop/binder.h"

namespace qrel {

struct BoundForm {
  BoundForm(Form& form, const QByteArray& ui)
      : binder(
            form, ui,
            [this](const QString& className) -> QWidget* {
              if (className == "QMainWindow")
                window = std::make_unique<QMainWindow>();
              else
                window = std::make_unique<QDialog>();
              return window.get();
            },
            [](const std::function<void()>& run) { run(); }) {}

  std::unique_ptr<QWidget> window;
  Binder binder;
};

}  // namespace qrel
