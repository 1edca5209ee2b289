// Tables on a printer or in a PDF file.
#pragma once

#include <QPrinter>
#include <QWidget>
#include <memory>

#include "platform/controls/reportControl.h"

namespace qrel {

// Prints all rows under the header, with the cells' colours, the title on each page and "Page: x of y" at its foot.
// Columns that don't fit beside the others stand on further pages, each with the first column. Returns the number of
// pages. Raises RuntimeError when the printer can't be started.
int printTable(QPrinter& printer, const Grid& table, const QString& title);

// Gives the control what it prints itself with; `view` is what shows it. The set-up of its pages is kept as long.
void connectPrinting(ReportControl& report, QWidget& view);

}  // namespace qrel
