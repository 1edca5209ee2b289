// Pages of text on a printer or in a PDF file.
#pragma once

#include <QStringList>
#include <functional>
#include <string>

class QPainter;
class QPrinter;

namespace qrel {

struct PrintJob;

// A page with margins of 15 mm; whoever prints may choose others before.
void setUsualMargins(QPrinter& printer);

// A text as the name of a file, without what systems don't take in names; never empty.
QString fileNameOf(const std::string& text);

// Makes ready to print on the default printer or, where there is none, into the PDF file that `askForFile` names; false
// when it names none.
bool choosePrinter(QPrinter& printer, const std::function<std::string()>& askForFile);
// Begins a document of that title. Raises RuntimeError when the printer can't be started.
void beginPrinting(QPainter& painter, QPrinter& printer, const QString& title);

// Prints the job's text with the colours of its lines, its header on each page and "Page: x of y" at the foot if it
// asks for that. Lines that are too long are broken. Raises RuntimeError when the printer can't be started.
void printPages(QPrinter& printer, const PrintJob& job);

// The text's lines as they go on paper: none of more than `widest` UTF-16 units, no character cut in two.
QStringList linesOnPaper(const std::string& text, qsizetype widest);

}  // namespace qrel
