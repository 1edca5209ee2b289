#include "desktop/theme.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QProxyStyle>
#include <QStyleOption>

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
  palette.setColor(QPalette::PlaceholderText, QColor(102, 106, 110));
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

// Fusion's own frame of a box to tick can't be seen on a dark window.
class Style : public QProxyStyle {
 public:
  Style() : QProxyStyle(QStringLiteral("Fusion")) {}

  void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                     const QWidget* widget) const override {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool round = element == PE_IndicatorRadioButton;
    if (element != PE_IndicatorCheckBox && element != PE_IndicatorItemViewItemCheck && !round) return;
    painter->save();
    painter->setBrush(Qt::NoBrush);
    painter->setPen(option->palette.color(QPalette::PlaceholderText));
    painter->setRenderHint(QPainter::Antialiasing, round);
    const QRect frame = option->rect.adjusted(0, 0, -1, -1);
    if (round)
      painter->drawEllipse(frame);
    else
      painter->drawRect(frame);
    painter->restore();
  }

  int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                QStyleHintReturn* result) const override {
    if (hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, result);
  }
};

}  // namespace

void applyTheme(const std::string& theme) {
  const bool dark = theme == "dark" || (theme.empty() && isDark(QApplication::palette()));
  QApplication::setStyle(new Style);  // owned by the application
  QApplication::setPalette(dark ? darkPalette() : lightPalette());
}

}  // namespace qrel
