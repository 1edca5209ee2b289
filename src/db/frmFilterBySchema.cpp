#include "db/frmFilterBySchema.h"

#include "db/modSchema.h"

namespace qrel {

frmFilterBySchema::frmFilterBySchema(Program& program) : Form("frmFilterBySchema"), program_(program) {
  for (Control* control : std::initializer_list<Control*>{&lblInfo, &grdNames, &cmdOK, &cmdCancel}) add(*control);
  grdNames.onTick = [this](std::size_t row) { ticked(row); };
  cmdOK.setText("OK");
  cmdOK.isDefault = true;
  cmdOK.onClick = [this] {
    saved_ = true;
    close();
  };
  cmdCancel.setText("Cancel");
  cmdCancel.isCancel = true;
  cmdCancel.onClick = [this] { close(); };
}

void frmFilterBySchema::ShowUp(const std::vector<std::string>& arrNames, long lngCount, int side, bool& blnFilter,
                               std::string& strFilter, long kind, bool& changed) {
  saved_ = false;
  describe(kind);
  fill(arrNames, lngCount, side);
  program_.host.showModal(*this);
  changed = saved_;
  if (!saved_) return;
  const std::size_t count = tickedNames();
  blnFilter = count > 0 && count + 1 < grdNames.count();
  strFilter.clear();
  if (!blnFilter) return;
  for (std::size_t row = 1; row < grdNames.count(); ++row) {
    if (!grdNames.ticked(row)) continue;
    if (!strFilter.empty()) strFilter += ',';
    strFilter += grdNames.cell(row, 0);
  }
}

void frmFilterBySchema::describe(long kind) {
  if (kind != 1 && kind != 2) {
    program_.host.messageBox("Wrong Filter parameter");
    return;
  }
  const std::string word = kind == 1 ? "Schema" : "Owner";
  caption = "Filter by " + word;
  lblInfo.setText("Only objects belonging to selected " + word + "s will be analyzed/compared.");
}

void frmFilterBySchema::fill(const std::vector<std::string>& arrNames, long lngCount, int side) {
  const auto& state = program_.state<modSchemaState>();
  const auto index = static_cast<std::size_t>(side);
  const bool blnFilter = state.gblnSchemaFilter.at(index);
  grdNames.clear();
  grdNames.add("(Select All)");
  for (long i = 0; i < lngCount; ++i) {
    const std::string& strName = arrNames[static_cast<std::size_t>(i)];
    const std::size_t row = grdNames.add(strName);
    // Any part of the text counts: with "sales2" chosen, "sales" starts checked too.
    grdNames.setTicked(row, !blnFilter || state.gstrSchemaFilter[index].find(strName) != std::string::npos);
  }
  grdNames.setTicked(0, tickedNames() + 1 == grdNames.count());
}

void frmFilterBySchema::ticked(std::size_t row) {
  if (row > 0) return grdNames.setTicked(0, tickedNames() + 1 == grdNames.count());
  for (std::size_t each = 1; each < grdNames.count(); ++each) grdNames.setTicked(each, grdNames.ticked(0));
}

std::size_t frmFilterBySchema::tickedNames() const {
  std::size_t count = 0;
  for (std::size_t row = 1; row < grdNames.count(); ++row) count += grdNames.ticked(row) ? 1U : 0U;
  return count;
}

}  // namespace qrel
