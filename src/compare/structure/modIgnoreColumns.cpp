#include "compare/structure/modIgnoreColumns.h"

#include <optional>

#include "app/modStrings.h"
#include "app/trap.h"
#include "platform/error.h"
#include "platform/text.h"
#include "process/cInifile.h"

namespace qrel {

namespace {

constexpr const char* inModIgnoreColumns = "modIgnoreColumns";

// The values of the file's current section, read while a Reading is open.
std::vector<std::string> valuesOf(cInifile& ini) {
  OneBased<std::string> arrLines;
  long lngCount = 0;
  ini.EnumerateCurrentSection(arrLines, lngCount);
  std::vector<std::string> values;
  for (const std::string& strLine : arrLines) {
    ini.Key = strLine.substr(0, strLine.find('='));
    values.push_back(ini.Value());
  }
  return values;
}

}  // namespace

void ConnectIgnoredColumns(Program& program) {
  program.state<IgnoredColumnsSource>().lookUp = [&program](IgnoredList enmList, const tServer& server,
                                                            const std::string& strDb, const std::string& strTable) {
    return IgnoredColumnsOfTable(program, enmList, server.Name, strDb, strTable);
  };
}

std::vector<std::string> IgnoredColumnsOfTable(Program& program, long enmList, const std::string& strServer,
                                               const std::string& strDatabase, const std::string& strTable) {
  std::string strRest;
  std::vector<std::string> arrColumns;
  for (const std::string& strName : {strTable, GetLastWord(strTable, strRest, ".")})
    if (GetIgnoredColumns(program, enmList, GetFullObjectName(strServer, strDatabase, strName), arrColumns) > 0) break;
  return arrColumns;
}

std::string GetFullObjectName(const std::string& strServer, const std::string& strDatabase,
                              const std::string& strTable) {
  return strServer + "." + strDatabase + "." + strTable;
}

std::string GetIgnoredColsFilePath(const Program& program, long enmList) {
  switch (enmList) {
    case ignoredColsData:
      return program.main.gstrIgnoredColsDataIni;
    case ignoredColsStruct:
      return program.main.gstrIgnoredColsStructIni;
    case ignoredColsDataAnalysis:
      return program.main.gstrIgnoredColsDataAnalysisIni;
    default:
      return {};
  }
}

std::int32_t GetIgnoredColumns(Program& program, long enmList, const std::string& strFullName,
                               std::vector<std::string>& arrColumns) {
  arrColumns.clear();
  return trap(program, inModIgnoreColumns, "GetIgnoredColumns", std::int32_t{0}, [&] {
    cInifile ini;
    ini.Path = GetIgnoredColsFilePath(program, enmList);
    const cInifile::Reading reading(ini);
    ini.Section = strFullName;
    arrColumns = valuesOf(ini);
    return static_cast<std::int32_t>(arrColumns.size());
  });
}

bool SaveIgnoredColumns(Program& program, long enmList, const std::string& strFullName,
                        const std::vector<std::string>& arrColumns, std::int32_t lngCount) {
  return trap(program, inModIgnoreColumns, "SaveIgnoredColumns", false, [&] {
    if (lngCount < 0 || static_cast<std::size_t>(lngCount) > arrColumns.size())
      throw RuntimeError(errorNumber::subscript, "Subscript out of range");
    return SaveIgnoredLists(program, enmList, {{strFullName, {arrColumns.begin(), arrColumns.begin() + lngCount}}});
  });
}

bool SaveIgnoredLists(Program& program, long enmList, const std::vector<tIgnoredList>& arrLists) {
  return trap(program, inModIgnoreColumns, "SaveIgnoredColumns", false, [&] {
    cInifile ini;
    ini.Path = GetIgnoredColsFilePath(program, enmList);
    std::optional<cInifile::Change> change;
    try {
      change.emplace(ini);
    } catch (const std::exception&) {
      program.host.messageBox("Saving list of ignored columns - delete section failed.", Icon::Information);
      throw;
    }
    for (const tIgnoredList& list : arrLists) {
      ini.Section = list.strFullName;
      ini.DeleteSection();
      for (std::size_t i = 0; i < list.arrColumns.size(); ++i) {
        ini.Key = std::to_string(i);
        ini.SetValue(list.arrColumns[i]);
      }
    }
    change->commit();
    return true;
  });
}

std::int32_t GetAllIgnoredColumns(Program& program, long enmList, std::string& strListing,
                                  std::vector<tIgnoredColumn>& arrRecords) {
  strListing.clear();
  arrRecords.clear();
  return trap(program, inModIgnoreColumns, "GetAllIgnoredColumns", std::int32_t{0}, [&] {
    cInifile ini;
    ini.Path = GetIgnoredColsFilePath(program, enmList);
    const cInifile::Reading reading(ini);
    OneBased<std::string> arrSections;
    long lngSections = 0;
    ini.EnumerateAllSections(arrSections, lngSections);
    for (const std::string& strSection : arrSections) {
      tIgnoredColumn record;
      SplitIgnoredColsSection(strSection, record.strServer, record.strDatabase, record.strTable);
      ini.Section = strSection;
      for (std::string& strColumn : valuesOf(ini)) {
        record.strColumn = std::move(strColumn);
        strListing.append(record.strServer).append(", ").append(record.strDatabase).append(", ");
        strListing.append(record.strTable).append(", ").append(record.strColumn).append("\r\n");
        arrRecords.push_back(record);
      }
    }
    return static_cast<std::int32_t>(arrRecords.size());
  });
}

void SplitIgnoredColsSection(const std::string& strSection, std::string& strServer, std::string& strDatabase,
                             std::string& strTable) {
  std::vector<std::string> arrParts = splitAt(strSection, '.');
  arrParts.resize(3);
  strServer = arrParts[0];
  strDatabase = arrParts[1];
  strTable = arrParts[2];
}

void ScreenWriteAllIgnoredCols(Program& program, Grid& grid, Label& lblCount,
                               const std::vector<tIgnoredColumn>& arrRecords, std::int32_t lngCount) {
  try {
    const auto rows = static_cast<std::size_t>(lngCount);
    grid.setRedraw(false);
    grid.setRowCount(rows + 1);
    for (std::size_t row = 0; row < rows; ++row) {
      const tIgnoredColumn& record = arrRecords.at(row);
      grid.setText(row + 1, 0, record.strServer);
      grid.setText(row + 1, 1, record.strDatabase);
      grid.setText(row + 1, 2, record.strTable);
      grid.setText(row + 1, 3, record.strColumn);
    }
    lblCount.setText("Number of columns listed: " + std::to_string(lngCount));
  } catch (const std::exception& error) {
    program.host.messageBox("Error in Sub ScreenWriteAllIgnoredCols, error nr " +
                            std::to_string(describeError(error).number));
  }
  grid.setRedraw(true);
}

void ListBox_DeselectIgnored(CheckList& lstColumns, const std::vector<std::string>& arrIgnored) {
  lstColumns.setRedraw(false);
  for (std::size_t row = 0; row < lstColumns.count(); ++row) lstColumns.setTicked(row, true);
  for (const std::string& strColumn : arrIgnored) {
    std::size_t row = 0;
    while (row < lstColumns.count() && lstColumns.cell(row, 0) != strColumn) ++row;
    if (row < lstColumns.count()) lstColumns.setTicked(row, false);
  }
  lstColumns.setRedraw(true);
}

}  // namespace qrel
