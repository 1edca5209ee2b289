#include "console/tables/exportTable.h"

#include "console/stopWatch.h"
#include "platform/files.h"

namespace qrel {

void exportTable(const ExportArguments& arguments, const TableWriter& html, const TableWriter& csv) {
  if (arguments.path().empty()) return;
  const auto step = [](std::int32_t) { return !stopRequested(); };
  files::AtomicFile file(arguments.path());
  if (!(arguments.html.empty() ? csv : html)(file, step))
    throw CommandFailure{ExitCode::Stopped, "Operation cancelled by the user."};
  file.finish();
}

tCsvForm csvForm(const ExportArguments& arguments) { return {arguments.quote, arguments.rfc4180}; }

}  // namespace qrel
