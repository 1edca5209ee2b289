// Texts between the models (UTF-8) and Qt (UTF-16), and their colours.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>
#include <cstdint>
#include <string>
#include <string_view>

namespace qrel {

inline QString toQt(std::string_view text) {
  return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}
inline std::string fromQt(const QString& text) { return text.toStdString(); }

// 0x00BBGGRR as the models hold it.
inline QColor toQt(std::uint32_t colour) {
  return QColor(static_cast<int>(colour & 0xFF), static_cast<int>(colour >> 8 & 0xFF),
                static_cast<int>(colour >> 16 & 0xFF));
}

inline bool isDark(const QPalette& palette) { return palette.color(QPalette::Base).lightness() < 128; }

// A background colour as this palette shows it: the models' colours are made for dark letters on white, so that a dark
// palette gets a dark shade of the same hue.
inline QColor shownBackground(std::uint32_t colour, const QPalette& palette) {
  const QColor asGiven = toQt(colour);
  if (!isDark(palette)) return asGiven;
  if (asGiven == Qt::white) return palette.color(QPalette::Base);
  if (asGiven.hsvSaturation() == 0) return QColor(64, 64, 64);
  return QColor::fromHsv(asGiven.hsvHue(), qMin(255, asGiven.hsvSaturation() + 60), 105);
}

// A text colour likewise; black is the palette's own.
inline QColor shownText(std::uint32_t colour, const QPalette& palette) {
  if (colour == 0) return palette.color(QPalette::Text);
  const QColor asGiven = toQt(colour);
  return isDark(palette) ? asGiven.lighter(150) : asGiven;
}

}  // namespace qrel
