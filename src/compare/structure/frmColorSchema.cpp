#include "compare/structure/frmColorSchema.h"

#include <utility>

#include "app/Program.h"
#include "compare/structure/modMarkDifferences.h"

namespace qrel {

namespace {

constexpr std::array<std::pair<std::int32_t, const char*>, 5> legend{{
    {markOnlyInTarget, "Inserted (exists only in target)"},
    {markOnlyInSource, "Deleted (exists only in source)"},
    {markChanged, "Changed"},
    {markUnchanged, "Not Changed"},
    {markNone, "NA"},
}};

}  // namespace

frmColorSchema::frmColorSchema() : Form("frmColorSchema") {
  caption = "Color Schema";
  add(lblIntro);
  lblIntro.setText("Following colors are used to mark differences in structure of compared objects.");
  for (std::size_t row = 0; row < legend.size(); ++row) {
    add(lblCol[row]);
    add(lblText[row]);
    lblCol[row].backColour = GetMarkColor(legend[row].first);
    lblText[row].setText(legend[row].second);
  }
  add(cmdCancel);
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void ShowColorSchema(Program& program) {
  frmColorSchema form;
  program.host.showModal(form);
}

}  // namespace qrel
