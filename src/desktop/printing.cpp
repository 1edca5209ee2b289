#include "desktop/printing.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>

#include "desktop/text.h"
#include "platform/error.h"
#include "platform/host/host.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr double pointSize = 9;

}  // namespace

QStringList linesOnPaper(const std::string& text, qsizetype widest) {
  QStringList lines;
  for (QString line : toQt(replaceAll(replaceAll(text, "\r\n", "\n"), "\r", "\n")).split('\n')) {
    line.replace('\t', QStringLiteral("    "));
    do {
      const bool cutsCharacter = widest > 1 && line.size() > widest && line[widest - 1].isHighSurrogate();
      const qsizetype taken = cutsCharacter ? widest - 1 : widest;
      lines.push_back(line.left(taken));
      line.remove(0, taken);
    } while (!line.isEmpty());
  }
  return lines;
}

bool choosePrinter(QPrinter& printer, const std::function<std::string()>& askForFile) {
  if (!QPrinterInfo::defaultPrinter().isNull()) return true;
  const std::string file = askForFile();
  if (file.empty()) return false;
  printer.setOutputFormat(QPrinter::PdfFormat);
  printer.setOutputFileName(toQt(file));
  return true;
}

void beginPrinting(QPainter& painter, QPrinter& printer, const QString& title) {
  printer.setDocName(title);
  if (painter.begin(&printer)) return;
  const std::string file = fromQt(printer.outputFileName());
  throw RuntimeError(482, "Printer error: " + fromQt(title) + " can't be printed" +
                              (file.empty() ? std::string(".") : " to " + file + "."));
}

void printPages(QPrinter& printer, const PrintJob& job) {
  QPainter painter;
  beginPrinting(painter, printer, toQt(job.title));
  QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
  font.setPointSizeF(pointSize);
  painter.setFont(font);
  const QFontMetricsF metrics(font, &printer);
  const QRectF page(QPointF(0, 0), printer.pageLayout().paintRectPixels(printer.resolution()).size());
  const double step = metrics.lineSpacing();
  const double head = job.header.empty() ? 0 : 2 * step;
  const double foot = job.pageNumbers ? 2 * step : 0;
  const auto perPage = qMax<qsizetype>(1, static_cast<qsizetype>((page.height() - head - foot) / step));
  const auto widest = qMax<qsizetype>(1, static_cast<qsizetype>(page.width() / metrics.horizontalAdvance('M')));
  const QStringList lines = linesOnPaper(job.text, widest);
  const qsizetype pages = (lines.size() + perPage - 1) / perPage;
  for (qsizetype number = 0; number < pages; ++number) {
    if (number > 0) printer.newPage();
    if (!job.header.empty()) painter.drawText(QRectF(0, 0, page.width(), step), Qt::AlignLeft, toQt(job.header));
    for (qsizetype row = 0; row < perPage && number * perPage + row < lines.size(); ++row)
      painter.drawText(QPointF(0, head + static_cast<double>(row) * step + metrics.ascent()),
                       lines[number * perPage + row]);
    if (job.pageNumbers)
      painter.drawText(QRectF(0, page.height() - step, page.width(), step), Qt::AlignRight,
                       QStringLiteral("Page: %1 of %2").arg(number + 1).arg(pages));
  }
}

}  // namespace qrel
