#include "desktop/tablePrinting.h"

#include <QFileDialog>
#include <QFontMetricsF>
#include <QPageSetupDialog>
#include <QPainter>
#include <QPointer>
#include <QPrintPreviewDialog>
#include <algorithm>
#include <vector>

#include "desktop/printing.h"
#include "desktop/text.h"

namespace qrel {

namespace {

constexpr double cellPointSize = 8;
constexpr double widestShare = 0.3;  // of the page that one column takes

// A table laid out for one kind of page.
class Sheets {
 public:
  Sheets(QPainter& painter, const QPrinter& printer, const Grid& table, QString title)
      : painter_(painter), table_(table), title_(std::move(title)), metrics_(painter.font(), painter.device()) {
    page_ = printer.pageLayout().paintRectPixels(printer.resolution()).size();
    pad_ = metrics_.horizontalAdvance('n') / 2;
    step_ = metrics_.lineSpacing() * 1.3;
    measure();
    share();
    const auto room = static_cast<std::size_t>(std::max(1.0, (page_.height() - 4 * step_) / step_) - 1);
    rowsPerPage_ = std::max<std::size_t>(1, room);
  }

  std::size_t count() const { return groups_.size() * stretches(); }
  void draw(std::size_t page) {
    const std::vector<std::size_t>& columns = groups_[page % groups_.size()];
    const std::size_t first = page / groups_.size() * rowsPerPage_ + 1;
    painter_.setPen(Qt::black);
    painter_.drawText(QRectF(0, 0, page_.width(), step_), Qt::AlignLeft, title_);
    painter_.drawText(QRectF(0, page_.height() - step_, page_.width(), step_), Qt::AlignRight,
                      QStringLiteral("Page: %1 of %2").arg(page + 1).arg(count()));
    double top = 2 * step_;
    drawRow(0, columns, top);
    for (std::size_t row = first; row < std::min(first + rowsPerPage_, table_.rowCount()); ++row)
      drawRow(row, columns, top += step_);
  }

 private:
  std::size_t stretches() const {
    const std::size_t rows = table_.rowCount() - 1;
    return std::max<std::size_t>(1, (rows + rowsPerPage_ - 1) / rowsPerPage_);
  }

  void measure() {
    constexpr std::size_t rowsMeasured = 1000;
    for (std::size_t column = 0; column < table_.columnCount(); ++column) {
      double width = 0;
      for (std::size_t row = 0; row < std::min(table_.rowCount(), rowsMeasured); ++row)
        width = std::max(width, metrics_.horizontalAdvance(toQt(table_.text(row, column))));
      widths_.push_back(std::min(width + 2 * pad_ + 1, page_.width() * widestShare));
    }
  }

  // Which columns stand on a page; the first of them, which says what a record is of, on each.
  void share() {
    double used = 0;
    for (std::size_t column = 0; column < widths_.size(); ++column) {
      if (groups_.empty() || (used + widths_[column] > page_.width() && groups_.back().size() > 1)) {
        groups_.emplace_back();
        used = 0;
        if (column > 0) {
          groups_.back().push_back(0);
          used = widths_[0];
        }
      }
      groups_.back().push_back(column);
      used += widths_[column];
    }
    if (groups_.empty()) groups_.emplace_back();
  }

  void drawRow(std::size_t row, const std::vector<std::size_t>& columns, double top) {
    double left = 0;
    for (const std::size_t column : columns) {
      const QRectF cell(left, top, widths_[column], step_);
      if (row == 0)
        painter_.fillRect(cell, QColor(224, 224, 224));
      else if (const std::uint32_t colour = table_.backColour(row, column); colour != Grid::noColour)
        painter_.fillRect(cell, toQt(colour));
      painter_.setPen(QPen(QColor(160, 160, 160), step_ / 40));
      painter_.drawRect(cell);
      painter_.setPen(row == 0 ? QColor(Qt::black) : toQt(table_.textColour(row, column)));
      const QString text = toQt(table_.text(row, column)).simplified();
      painter_.drawText(cell.adjusted(pad_, 0, -pad_, 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                        metrics_.elidedText(text, Qt::ElideRight, cell.width() - 2 * pad_));
      left += widths_[column];
    }
  }

  QPainter& painter_;
  const Grid& table_;
  QString title_;
  QFontMetricsF metrics_;
  QSizeF page_;
  double pad_ = 0, step_ = 0;
  std::size_t rowsPerPage_ = 1;
  std::vector<double> widths_;
  std::vector<std::vector<std::size_t>> groups_;
};

}  // namespace

int printTable(QPrinter& printer, const Grid& table, const QString& title) {
  QPainter painter;
  beginPrinting(painter, printer, title);
  QFont font = painter.font();
  font.setPointSizeF(cellPointSize);
  painter.setFont(font);
  Sheets sheets(painter, printer, table, title);
  for (std::size_t page = 0; page < sheets.count(); ++page) {
    if (page > 0) printer.newPage();
    sheets.draw(page);
  }
  return static_cast<int>(sheets.count());
}

void connectPrinting(ReportControl& report, QWidget& view) {
  // Made when it is needed: asking for the printers of a network takes its time.
  const auto kept = std::make_shared<std::unique_ptr<QPrinter>>();
  const auto printer = [kept]() -> QPrinter& {
    if (!*kept) {
      *kept = std::make_unique<QPrinter>(QPrinter::HighResolution);
      setUsualMargins(**kept);
      (*kept)->setPageOrientation(QPageLayout::Landscape);
    }
    return **kept;
  };
  const QPointer<QWidget> owner(&view);
  report.onPrint = [&report, owner, printer](const std::string& title) {
    if (!owner) return;
    const QString name = fileNameOf(title);
    const bool chosen = choosePrinter(printer(), [&] {
      return fromQt(QFileDialog::getSaveFileName(owner, QStringLiteral("Print to a PDF file"),
                                                 name + QStringLiteral(".pdf"), QStringLiteral("PDF (*.pdf)")));
    });
    if (chosen) printTable(printer(), report, toQt(title));
  };
  report.onPrintPreview = [&report, owner, printer](const std::string& title) {
    if (!owner) return;
    QPrintPreviewDialog preview(&printer(), owner->window());
    QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview,
                     [&](QPrinter* paper) { printTable(*paper, report, toQt(title)); });
    preview.exec();
  };
  report.onPageSetup = [owner, printer] {
    if (owner) QPageSetupDialog(&printer(), owner->window()).exec();
  };
}

}  // namespace qrel
