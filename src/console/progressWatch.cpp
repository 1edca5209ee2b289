#include "console/progressWatch.h"

#include <ostream>
#include <utility>

#include "compare/data/frmCompareStatus.h"
#include "platform/visibleText.h"

namespace qrel {

ProgressWatch::ProgressWatch(Console& console, std::function<void(bool)> look, std::function<std::string()> where)
    : console_(console), look_(std::move(look)), where_(std::move(where)) {
  console_.host.onDoEvents = [this] { yielded(); };
}

ProgressWatch::~ProgressWatch() {
  console_.host.onDoEvents = nullptr;
  console_.clearProgress();
}

void ProgressWatch::yielded() {
  look_(stopRequested());
  if (!console_.progress) return;
  constexpr std::int64_t millisecondsBetween = 100;
  const std::int64_t now = console_.host.ticks();
  if (now - told_ < millisecondsBetween) return;
  const std::string text = where_();
  if (text.empty()) return;
  told_ = now;
  console_.err << '\r' << visibleText(text) << "\033[K" << std::flush;
}

std::string whereIn(const frmCompareStatus& status) {
  return status.lblStatus.visible() ? status.lblStatus.text()
                                    : status.lblTime.text() + " record " + status.lblCurRec.text();
}

}  // namespace qrel
