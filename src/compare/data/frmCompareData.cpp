#include "compare/data/frmCompareData.h"

#include <algorithm>
#include <vector>

#include "app/modArrays.h"
#include "app/modStrings.h"
#include "app/trap.h"
#include "compare/data/oneTable.h"
#include "compare/structure/modIgnoreColumns.h"
#include "db/mdlQueryCode.h"
#include "platform/controls/menu.h"
#include "process/frmSaveComparison.h"
#include "process/modSavedProcess.h"
#include "report/frmExport.h"

namespace qrel {

namespace {

constexpr long menuSortColumns = 1;
constexpr int rightButton = 2;

struct Swatch {
  std::uint32_t colour;
  const char* text;
};
constexpr std::array<Swatch, 4> legend{{
    {COLOR_DIFF_SOURCE, "Data in Source Table"},
    {COLOR_DIFF_TARGET, "Data in Target Table"},
    {COLOR_SOURCE_ONLY, "Records present in Source Table but not in Target Table"},
    {COLOR_TARGET_ONLY, "Records present in Target Table but not in Source Table"},
}};

// "a, b, c" of the keys up to the first that is none; the first stands in any case.
std::string keyList(const std::array<std::string, 3>& keys) {
  std::string text = keys[0];
  for (std::size_t level = 1; level < keys.size() && NamesKey(keys[level]); ++level) text += ", " + keys[level];
  return text;
}

}  // namespace

frmCompareData::frmCompareData(Program& program) : Form("frmCompareData"), program_(program) {
  for (Label& label : lblTableName) add(label);
  for (Label& label : lblStats) add(label);
  for (Label* label : {&lblGen0, &lblGen1, &lblGen11, &lblMaxRows}) add(*label);
  for (std::size_t i = 0; i < legend.size(); ++i) {
    add(lblColor[i]);
    add(lblColorDesc[i]);
    lblColor[i].backColour = legend[i].colour;
    lblColorDesc[i].setText(legend[i].text);
  }
  add(VSFlexGrid1);
  for (Button* button : {&cmdExport, &cmdSave, &cmdExit}) add(*button);
  setTexts();
  lblGen0.setVisible(false);
  lblMaxRows.setVisible(false);
  VSFlexGrid1.onMouseUp = [this](int button) {
    if (button == rightButton) popUpMenu();
  };
  cmdExit.isCancel = true;
  cmdExit.onClick = [this] { close(); };
  cmdExport.onClick = [this] { exportTable({"", exportNone, request_.blnWrap, false}); };
  cmdSave.onClick = [this] { save(); };
}

void frmCompareData::setTexts() {
  lblStats[0].setText("Number of records in  in Source Table:");
  lblStats[1].setText("Number of records in  in Target Table:");
  lblStats[2].setText("Number of different records:");
  lblGen1.setText("Fields for which data differs are printed in red.");
  cmdExit.setText("E&xit");
  cmdExit.setToolTip("Close this form (Alt + X)");
  cmdSave.setText("&Save");
  cmdSave.setToolTip("Save comparison's process parameters so it can be re-run later (Alt + S)");
  cmdExport.setText("&Export");
  cmdExport.setToolTip("Export data differences (Alt + E)");
}

void frmCompareData::LoadData(const Workspace& frmOwner) {
  trap(program_, "frmCompareData", "LoadData", [&] {
    std::array<std::string, 2> dbs, tables;
    for (const std::size_t side : {0u, 1u}) {
      const CheckList& list = frmOwner.pvlSqlObj[side];
      const std::string& server = servers_[side] = program_.main.gtypSelServ[side].Name;
      dbs[side] = Workspace::selectedText(frmOwner.pvlDb[side]);
      tables[side] = Workspace::selectedText(list);
      objectIds_[side] = Workspace::selectedId(list);
      lblTableName[side].setText((side == 0 ? "Source Table: " : "Target Table: ") +
                                 LongTableName(tables[side], dbs[side], server));
      dottedNames_[side] = GetFullObjectName(server, dbs[side], tables[side]);
    }
    program_.state<GridRefreshState>().glngGridRefreshMode = 0;
    caption = "Differences between data in tables '" + tables[0] + "' and '" + tables[1] + "'";

    tTableStructure table;
    GetTableStructure(program_, program_.main.gtypSelServ[0], {dbs[0], tables[0], objectIds_[0], ignoredColsData},
                      table);
    SetGridColumnHeaders(VSFlexGrid1, table.arrColumns);
  });
}

void frmCompareData::ShowUp(const tDataCompRequest& request, std::int32_t lngIgnored, const std::string& strIgnored) {
  request_ = request;
  ignored_ = lngIgnored;
  ignoredText_ = strIgnored;
  showMethod();
  showIgnored();
  program_.host.showModal(*this);
}

void frmCompareData::showMethod() {
  std::string strMethod = CompMethodToString(request_.lngCompMethod);
  if (request_.lngCompMethod == compPrimaryKey)
    strMethod +=
        " \r\nSource PK: " + keyList(request_.arrCompKeys[0]) + "\r\nTarget PK: " + keyList(request_.arrCompKeys[1]);
  lblGen11.setText("Comparison method: " + strMethod);
}

void frmCompareData::showIgnored() {
  const auto arrIgnored = IgnoredDataColumns(program_, request_);
  const std::size_t count = arrIgnored[0].size() + arrIgnored[1].size();
  lblGen0.setVisible(count > 0);
  if (count > 1) lblGen0.setText("NOTE: " + std::to_string(count) + " columns were ignored.");
  if (count == 1) lblGen0.setText("Ignored Column: " + (arrIgnored[0].empty() ? arrIgnored[1] : arrIgnored[0]).front());
}

void frmCompareData::activate() {
  if (activated_) return;
  if (cmdExit.enabled()) cmdExit.setFocus();
  if (request_.lngExportFormat != 0 && !request_.strExportFile.empty())
    exportTable({request_.strExportFile, request_.lngExportFormat, request_.blnWrap, request_.blnAuto});
  activated_ = true;
  if (program_.main.gblnCloseAfterRun) close();
}

void frmCompareData::unload() { activated_ = false; }

void frmCompareData::popUpMenu() {
  if (busy_) return;
  MenuItem sortColumns;
  sortColumns.id = menuSortColumns;
  sortColumns.caption = "Sort Columns";
  if (program_.host.popUpMenu({sortColumns}) == menuSortColumns) mnuPopUpSortColumns_Click();
}

void frmCompareData::mnuPopUpSortColumns_Click() {
  const std::size_t count = VSFlexGrid1.columnCount();
  std::vector<std::string> names;
  for (std::size_t column = 0; column < count; ++column) names.emplace_back(VSFlexGrid1.text(0, column));
  if (count > 0) QuickSortStringArray(program_.host, names, 0, static_cast<long>(count) - 1);
  VSFlexGrid1.setRedraw(false);
  for (std::size_t place = 0; place < count; ++place)
    for (std::size_t column = 0; column < count; ++column) {
      if (VSFlexGrid1.text(0, column) != names[place]) continue;
      VSFlexGrid1.moveColumn(column, place);
      break;
    }
  VSFlexGrid1.setRedraw(true);
}

void frmCompareData::exportTable(tDataExport file) {
  if (busy_) return;
  busy_ = true;
  trap(program_, "frmCompareData", "cmdExport_Click", [&] {
    const bool blnByHand = file.lngFormat == 0;
    if (!runExport(file) || !blnByHand || !saved_) return;
    if (!savedName_.empty())
      RecordExportingResultsToTxtFile(program_, savedName_, file.strFile, file.lngFormat, file.blnWrap, compData);
    saved_ = false;
  });
  busy_ = false;
}

tExportSource frmCompareData::exportSource() const {
  tExportSource source;
  source.strCaption = caption;
  for (std::size_t i = 0; i < lblTableName.size(); ++i) source.lblTableName[i] = lblTableName[i].text();
  for (std::size_t i = 0; i < lblStats.size(); ++i) source.lblStats[i] = lblStats[i].text();
  source.VSFlexGrid1 = &VSFlexGrid1;
  return source;
}

// False: not written. The file becomes the one that was.
bool frmCompareData::runExport(tDataExport& file) {
  frmExport window(program_);
  window.mlngMode = exportFromCompareData;
  const tExportResult result =
      window.ShowUp(exportSource(), {file.strFile, file.lngFormat, ignored_, ignoredText_, file.blnAuto, file.blnWrap});
  request_.blnWrap = result.blnWrapInQuot;
  file = {result.strPath, result.lngType, result.blnWrapInQuot, file.blnAuto};
  return result.blnOK;
}

void frmCompareData::save() {
  trapAlone(program_, busy_, "frmCompareData", "cmdSave_Click", [&] {
    tSavedProcess process;
    process.lngCompType = compData;
    process.lngCompSubType = compDataSingle;
    process.lngCompMethod = request_.lngCompMethod;
    process.strServer1 = servers_[0];
    process.strServer2 = servers_[1];
    process.strDb1 = request_.arrDbs[0];
    process.strDb2 = request_.arrDbs[1];
    process.strTable1 = request_.arrTables[0];
    process.strTable2 = request_.arrTables[1];
    process.lngObjId1 = static_cast<std::int32_t>(objectIds_[0]);
    process.lngObjId2 = static_cast<std::int32_t>(objectIds_[1]);
    process.blnCSVWrapInQuot = request_.blnWrap;
    frmSaveComparison(program_).ShowUp(process, saved_, savedName_);
  });
}

}  // namespace qrel
