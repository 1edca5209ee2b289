// The main window's schema and owner filters.
#include "app/trap.h"
#include "db/frmFilterBySchema.h"
#include "db/modSchema.h"
#include "ui/flagScope.h"
#include "ui/frmMain.h"

namespace qrel {

void frmMain::clearPanelFilters(int Index) {
  ClearFilters(program_, Index);
  srtFiltering[static_cast<std::size_t>(Index)].setVisible(false);
}

void frmMain::srtFiltering_Click(int Index) {
  clearPanelFilters(Index);
  RefreshDisplayForPanel(Index);
}

void frmMain::Filtering_UpdateDisplay(long penmFilterType) {
  if (penmFilterType != filterSchema && penmFilterType != filterOwner) {
    program_.host.messageBox("Sub Filtering_UpdateDisplay - wrong parameter passed (penmFilterType = " +
                                 std::to_string(penmFilterType) + ").",
                             Icon::Warning);
    return;
  }
  const std::string strBase =
      std::string("Click to remove ") + (penmFilterType == filterSchema ? "Schema" : "Owner") + " filter";
  const auto& state = program_.state<modSchemaState>();
  for (std::size_t side = 0; side < 2; ++side) {
    // Target's words come without the blank.
    const std::string strApplied = side == 0 ? " (applied filter: " : "(applied filter: ";
    std::string strTip = strBase;
    if (state.gblnSchemaFilter[side])
      strTip += strApplied + state.gstrSchemaFilter[side] + ")";
    else if (state.gblnOwnerFilter[side])
      strTip += strApplied + state.gstrOwnerFilter[side] + ")";
    srtFiltering[side].setToolTip(strTip);
    srtFiltering[side].setVisible(state.gblnSchemaFilter[side] || state.gblnOwnerFilter[side]);
  }
}

void frmMain::cmdFilterBySchema_Click(int Index) {
  trap(program_, "frmMain", "cmdFilterBySchema_Click", [&] { filterCommand(Index, filterSchema); });
}

void frmMain::cmdFilterByOwner_Click(int Index) {
  trap(program_, "frmMain", "cmdFilterByOwner_Click", [&] { filterCommand(Index, filterOwner); });
}

// What both commands choose goes into the schema filter; the owner filter stays as empty as it always was.
void frmMain::filterCommand(int Index, long penmFilterType) {
  if (filtering_) return;
  const FlagScope running(filtering_);
  CheckedObject found;
  if (!CanFilter(Index, penmFilterType, found)) return;
  const auto side = static_cast<std::size_t>(Index);
  const bool blnSchemas = penmFilterType == filterSchema;
  const tServer& server = program_.main.gtypSelServ[side];
  std::vector<std::string> arrNames;
  const long lngCount = blnSchemas ? GetAllSchemas(program_, server, found.strDb, arrNames)
                                   : GetAllOwnersIntoArray(program_, server, found.strDb, arrNames);
  if (lngCount < 1) {
    program_.host.messageBox(blnSchemas ? "There are no schemas in this database."
                                        : "There are no owners in this database.");
    return;
  }
  auto& state = program_.state<modSchemaState>();
  bool blnFilter = state.gblnSchemaFilter[side];
  std::string strFilter = state.gstrSchemaFilter[side];
  bool changed = false;
  frmFilterBySchema form(program_);
  form.ShowUp(arrNames, lngCount, Index, blnFilter, strFilter, penmFilterType, changed);
  if (!changed || (blnFilter == state.gblnSchemaFilter[side] && strFilter == state.gstrSchemaFilter[side])) return;
  state.gblnSchemaFilter[side] = blnFilter;
  state.gstrSchemaFilter[side] = strFilter;
  if (blnSchemas && blnFilter) {
    state.gblnOwnerFilter[side] = false;
    state.gstrOwnerFilter[side].clear();
  } else if (!blnSchemas && state.gblnOwnerFilter[side]) {
    state.gblnSchemaFilter[side] = false;
    state.gstrSchemaFilter[side].clear();
  }
  RefreshDisplayForPanel(Index);
  Filtering_UpdateDisplay(penmFilterType);
}

}  // namespace qrel
