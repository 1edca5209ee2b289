// Texts between the models (UTF-8) and Qt (UTF-16), and their colours.
#pragma once

#include <QColor>
#include <QPalette>
#include <QString>
#include <algorithm>
#include <cmath>
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

// How much lighter one colour is than the other, from 1 (the same) to 21 (black and white).
inline double contrast(const QColor& a, const QColor& b) {
  const auto luminance = [](const QColor& colour) {
    const auto part = [](double value) {
      return value <= 0.03928 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(colour.redF()) + 0.7152 * part(colour.greenF()) + 0.0722 * part(colour.blueF());
  };
  const double x = luminance(a), y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

// The colour, as much darker or lighter as it must be to be read on that ground.
inline QColor readableOn(QColor text, const QColor& ground) {
  constexpr double readable = 4.5;
  const bool darker = contrast(ground, Qt::black) > contrast(ground, Qt::white);
  for (int step = 0; step < 20 && contrast(text, ground) < readable; ++step) {
    const double part = 0.1;
    const QColor end = darker ? QColor(Qt::black) : QColor(Qt::white);
    text = QColor::fromRgbF(static_cast<float>(text.redF() + (end.redF() - text.redF()) * part),
                            static_cast<float>(text.greenF() + (end.greenF() - text.greenF()) * part),
                            static_cast<float>(text.blueF() + (end.blueF() - text.blueF()) * part));
  }
  return text;
}

}  // namespace qrel
