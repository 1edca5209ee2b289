// A run over whole databases without a person: its window, what happens while it yields, and what becomes of its
// report.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "compare/all/modCompareAll.h"
#include "console/console.h"
#include "console/forms/runForms.h"

namespace qrel {

class BulkRun {
 public:
  explicit BulkRun(Console& console) : console_(console), controls_(window_) {}

  CompareAllControls& controls() { return controls_; }
  CompareAllInput input;
  RunForms forms;

  // Takes the objects of these names, as the two sides list them, and no others.
  void select(std::array<std::vector<std::string>, 2> names);

  // Runs `compare`, which tells whether it came to its end, over both sides; prints the report, writes it to
  // reportFile unless that is empty, names what couldn't be compared and gives the exit code. Reads that failed since
  // this object was made count too. Throws CommandFailure when the run is stopped.
  ExitCode run(const std::array<const Side*, 2>& sides, const std::string& reportFile,
               const std::function<bool(CompareAllControls& controls, const CompareAllInput& input)>& compare);

 private:
  // It has the controls and nothing to show them.
  class Window : public Form {
   public:
    Window() : Form("frmCompareAll") {}
  };

  ExitCode verdict(bool complete) const;

  Console& console_;
  Window window_;
  CompareAllControls controls_;
  const ReadWatch reads_{console_.program};
  const std::size_t reports_ = console_.host.errorReports();
};

}  // namespace qrel
