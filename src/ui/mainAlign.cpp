// Two marked panes with their lines side by side.
#include "app/settings.h"
#include "app/trap.h"
#include "compare/structure/alignedTexts.h"
#include "compare/structure/modMarkDifferences.h"
#include "ui/frmMain.h"

namespace qrel {

namespace {

std::uint32_t colourOfRow(RowKind kind) {
  constexpr std::uint32_t leftOut = 0xF0F0F0;
  switch (kind) {
    case RowKind::Same:
      return GetMarkColor(markUnchanged);
    case RowKind::LeftOut:
      return leftOut;
    case RowKind::Changed:
      return GetMarkColor(markChanged);
    case RowKind::OnlyInSource:
      return GetMarkColor(markOnlyInSource);
    case RowKind::OnlyInTarget:
      return GetMarkColor(markOnlyInTarget);
  }
  return GetMarkColor(markNone);
}

std::vector<TextPane::Row> rowsOf(const std::vector<AlignedRow>& aligned, std::size_t side) {
  std::vector<TextPane::Row> rows;
  rows.reserve(aligned.size());
  for (const AlignedRow& each : aligned) {
    TextPane::Row row{each.lines[side], colourOfRow(each.kind)};
    for (const AlignedStretch& change : each.changes[side]) row.stronger.push_back({change.start, change.length});
    rows.push_back(std::move(row));
  }
  return rows;
}

}  // namespace

void frmMain::AlignPanes() {
  auto& [paneSource, paneTarget] = workspace.txtTXProc;
  const bool marked = !paneSource.backgrounds().empty() && !paneTarget.backgrounds().empty();
  if (!chkAligned.checked() || !marked) {
    for (TextPane& pane : workspace.txtTXProc) pane.setRows({});
    return;
  }
  const std::vector<AlignedRow> aligned = AlignTexts(paneSource.text(), paneTarget.text(), AlignOptionsOf(program_));
  for (const std::size_t side : {0U, 1U}) workspace.txtTXProc[side].setRows(rowsOf(aligned, side));
}

void frmMain::wireAlignment() {
  // The one pane's empty places are for the lines of the other one.
  for (const std::size_t side : {0U, 1U})
    workspace.txtTXProc[side].onNewText = [this, side] { workspace.txtTXProc[1 - side].setRows({}); };
  chkAligned.onClick = [this] {
    AlignPanes();
    trap(program_, "frmMain", "chkAligned_Click",
         [this] { SaveSetting(program_, *findSetting("AlignedView"), chkAligned.checked() ? 1 : 0); });
  };
}

}  // namespace qrel
