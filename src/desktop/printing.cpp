#include "desktop/printing.h"

#include <QFontDatabase>
#include <QFontMetricsF>
#include <QPainter>
#include <QPrinter>
#include <QPrinterInfo>
#include <vector>

#include "desktop/text.h"
#include "platform/error.h"
#include "platform/host/host.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr double textPointSize = 9;
constexpr double margin = 15;                 // millimetres
constexpr std::uint32_t noColour = 0xFFFFFF;  // paper is white

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

void setUsualMargins(QPrinter& printer) {
  printer.setPageMargins(QMarginsF(margin, margin, margin, margin), QPageLayout::Millimeter);
}

QString fileNameOf(const std::string& text) {
  constexpr qsizetype longest = 100;
  QString name;
  for (const QChar each : toQt(text).simplified()) {
    const bool isTaken = each.isPrint() || each.isSurrogate();
    name += isTaken && !QStringLiteral("/\\:*?\"<>|").contains(each) ? each : QChar('-');
  }
  name.truncate(longest);
  if (!name.isEmpty() && name.back().isHighSurrogate()) name.chop(1);
  while (name.endsWith('.') || name.endsWith(' ')) name.chop(1);
  while (name.startsWith('.')) name.remove(0, 1);
  return name.isEmpty() ? QStringLiteral("Print") : name;
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

namespace {

// A line of paper: a line of the text, or a piece of one that is too long.
struct PaperLine {
  QString text;
  QColor ground;  // invalid: none
};

std::vector<PaperLine> paperLines(const PrintJob& job, qsizetype widest) {
  std::vector<PaperLine> lines;
  std::size_t number = 0;
  for (const std::string& line : splitAt(replaceAll(replaceAll(job.text, "\r\n", "\n"), "\r", "\n"), '\n')) {
    const std::uint32_t colour = number < job.lineColours.size() ? job.lineColours[number] : noColour;
    ++number;
    for (const QString& piece : linesOnPaper(line, widest))
      lines.push_back({piece, colour == noColour ? QColor() : toQt(colour)});
  }
  return lines;
}

// Where things stand on each page.
class Pages {
 public:
  Pages(QPainter& painter, const QPrinter& printer, const PrintJob& job) : painter_(painter), job_(job) {
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSizeF(textPointSize);
    painter.setFont(font);
    const QFontMetricsF metrics(font, painter.device());
    size_ = printer.pageLayout().paintRectPixels(printer.resolution()).size();
    step_ = metrics.lineSpacing();
    top_ = job.header.empty() ? 0 : 2 * step_;
    const double foot = job.pageNumbers ? 2 * step_ : 0;
    perPage_ = static_cast<std::size_t>(qMax(1.0, (size_.height() - top_ - foot) / step_));
    lines_ =
        paperLines(job, qMax<qsizetype>(1, static_cast<qsizetype>(size_.width() / metrics.horizontalAdvance('M'))));
    header_ = metrics.elidedText(toQt(job.header), Qt::ElideRight, size_.width());
  }
  std::size_t count() const { return qMax<std::size_t>(1, (lines_.size() + perPage_ - 1) / perPage_); }
  void draw(std::size_t page) {
    painter_.setPen(Qt::black);
    painter_.drawText(QRectF(0, 0, size_.width(), step_), Qt::AlignLeft, header_);
    const std::size_t first = page * perPage_;
    for (std::size_t row = 0; row < perPage_ && first + row < lines_.size(); ++row) {
      const PaperLine& line = lines_[first + row];
      const QRectF place(0, top_ + static_cast<double>(row) * step_, size_.width(), step_);
      if (line.ground.isValid()) painter_.fillRect(place, line.ground);
      painter_.drawText(place, Qt::AlignLeft | Qt::TextDontClip, line.text);
    }
    if (job_.pageNumbers)
      painter_.drawText(QRectF(0, size_.height() - step_, size_.width(), step_), Qt::AlignRight,
                        QStringLiteral("Page: %1 of %2").arg(page + 1).arg(count()));
  }

 private:
  QPainter& painter_;
  const PrintJob& job_;
  QSizeF size_;
  double step_ = 0, top_ = 0;
  std::size_t perPage_ = 1;
  std::vector<PaperLine> lines_;
  QString header_;
};

}  // namespace

void printPages(QPrinter& printer, const PrintJob& job) {
  QPainter painter;
  beginPrinting(painter, printer, toQt(job.title));
  Pages pages(painter, printer, job);
  for (std::size_t page = 0; page < pages.count(); ++page) {
    if (page > 0) printer.newPage();
    pages.draw(page);
  }
}

}  // namespace qrel
