// Pages of text on a printer or in a PDF file.
#pragma once

#include <QStringList>
#include <string>

class QPrinter;

namespace qrel {

struct PrintJob;

// Prints the job's text with its header on each page and "Page: x of y" at the foot if it asks for that. Lines that are
// too long are broken. Raises RuntimeError when the printer can't be started.
void printPages(QPrinter& printer, const PrintJob& job);

// The text's lines as they go on paper: none of more than `widest` UTF-16 units, no character cut in two.
QStringList linesOnPaper(const std::string& text, qsizetype widest);

}  // namespace qrel
