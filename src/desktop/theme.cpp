#include "desktop/theme.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

#include "desktop/text.h"

namespace qrel {

namespace {

QPalette lightPalette() {
  QPalette palette(QColor(239, 240, 241), QColor(239, 240, 241));
  palette.setColor(QPalette::Base, Qt::white);
  palette.setColor(QPalette::AlternateBase, QColor(246, 247, 248));
  palette.setColor(QPalette::Highlight, QColor(38, 110, 182));
  palette.setColor(QPalette::HighlightedText, Qt::white);
  palette.setColor(QPalette::Link, QColor(0, 87, 174));
  palette.setColor(QPalette::PlaceholderText, QColor(120, 124, 128));
  return palette;
}

QPalette darkPalette() {
  QPalette palette(QColor(49, 52, 56), QColor(42, 45, 48));
  palette.setColor(QPalette::Base, QColor(30, 32, 35));
  palette.setColor(QPalette::AlternateBase, QColor(38, 41, 44));
  palette.setColor(QPalette::ToolTipBase, QColor(49, 52, 56));
  palette.setColor(QPalette::Highlight, QColor(48, 108, 168));
  palette.setColor(QPalette::Link, QColor(110, 170, 240));
  palette.setColor(QPalette::PlaceholderText, QColor(140, 145, 150));
  for (const QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText,
                                         QPalette::ToolTipText, QPalette::HighlightedText, QPalette::BrightText}) {
    palette.setColor(role, QColor(229, 231, 233));
    palette.setColor(QPalette::Disabled, role, QColor(122, 126, 130));
  }
  return palette;
}

}  // namespace

void applyTheme(QApplication& application, const std::string& theme) {
  const bool dark = theme == "dark" || (theme.empty() && isDark(QApplication::palette()));
  QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
  QApplication::setPalette(dark ? darkPalette() : lightPalette());
  application.setStyleSheet(QStringLiteral("QToolTip { padding: 2px; }"));
}

}  // namespace qrel
