#include "compare/data/dataCompSettings.h"

#include <vector>

#include "app/trap.h"
#include "platform/store/profileFile.h"
#include "process/modIniFile.h"

namespace qrel {

namespace {

constexpr const char* inDataCompSettings = "frmCompareDataOptions";

std::string sectionOf(const Program& program, bool blnSource, const std::string& strDb, const std::string& strTable) {
  return program.main.gtypSelServ[blnSource ? 0 : 1].Name + "." + strDb + "." + strTable;
}

}  // namespace

void ReadDataCompSettings(Program& program, bool blnSource, const std::string& strDb, const std::string& strTable,
                          tDataCompSide& side, std::int32_t& lngCompMethod) {
  side = {};
  lngCompMethod = 0;
  trap(program, inDataCompSettings, "ReadDataCompSettings", [&] {
    const std::string strSection = sectionOf(program, blnSource, strDb, strTable);
    const ProfileFile file = ProfileFile::read(program.main.gstrTablesCompsIni);
    const auto text = [&](const char* strKey) { return INIGetSettingString(program, strSection, strKey, file); };
    const auto number = [&](const char* strKey) { return INIGetSettingInteger(program, strSection, strKey, file); };
    side.strPrimarySort = text("PrimarySortKey");
    side.strSecondarySort = text("SecondarySortKey");
    side.strTertiarySort = text("TertiarySortKey");
    side.lngOffset = number("OffsetStartRec");
    side.strCompKey = text("CompKey");
    side.strSecondaryCompKey = text("SecondaryCompKey");
    side.strTertiaryCompKey = text("TertiaryCompKey");
    lngCompMethod = number("CompMethod");
  });
}

bool SaveDataCompSettings(Program& program, const std::array<std::string, 2>& arrDbs,
                          const std::array<std::string, 2>& arrTables, const tDataCompSettings& settings) {
  return trap(program, inDataCompSettings, "SaveDataCompSettings", false, [&] {
    std::vector<tIniSetting> arrWrite;
    for (const std::size_t index : {0u, 1u}) {
      const tDataCompSide& side = settings.arrSides[index];
      const std::string strSection = sectionOf(program, index == 0, arrDbs[index], arrTables[index]);
      const auto add = [&](const char* strKey, const std::string& strValue) {
        arrWrite.push_back({strSection, strKey, strValue});
      };
      add("PrimarySortKey", side.strPrimarySort);
      add("SecondarySortKey", side.strSecondarySort);
      add("TertiarySortKey", side.strTertiarySort);
      add("OffsetStartRec", std::to_string(side.lngOffset));
      add("DbType", "SQL Server");
      add("CompMethod", std::to_string(settings.lngCompMethod));
      add("CompKey", side.strCompKey);
      add("SecondaryCompKey", side.strSecondaryCompKey);
      add("TertiaryCompKey", side.strTertiaryCompKey);
      // The lists of ignored columns have a file of their own.
      if (index == 0) add("IgnoreColumn", "");
    }
    return INIWriteSettings(program, arrWrite, program.main.gstrTablesCompsIni);
  });
}

}  // namespace qrel
