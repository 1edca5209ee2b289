// Writing the table of a command to the file that was asked for.
#pragma once

#include <functional>

#include "console/commands.h"
#include "report/exportFiles.h"

namespace qrel {

// A writer returns false when a step ended it.
using TableWriter = std::function<bool(files::AtomicFile& file, const ExportStep& step)>;

// Writes the file, if any is asked for, with the writer of its kind. Throws CommandFailure when a signal stops it, and
// RuntimeError when it can't be written; what was there before stays then.
void exportTable(const ExportArguments& arguments, const TableWriter& html, const TableWriter& csv);

// How a CSV file is written.
tCsvForm csvForm(const ExportArguments& arguments);

}  // namespace qrel
