#include "compare/data/dataCompSettings.h"

#include <vector>

#include "app/trap.h"
#include "process/modIniFile.h"

namespace qrel {

namespace {

constexpr const char* moduleName = "frmCompareDataOptions";

std::string sectionOf(const Program& program, bool blnSource, const std::string& strDb, const std::string& strTable) {
  return program.main.gtypSelServ[blnSource ? 0 : 1].Name + "." + strDb + "." + strTable;
}

}  // namespace

void ReadDataCompSettings(Program& program, bool blnSource, const std::string& strDb, const std::string& strTable,
                          tDataCompSide& side, std::int32_t& lngCompMethod) {
  side = {};
  lngCompMethod = 0;
  trap(program, moduleName, "ReadDataCompSettings", [&] {
    const std::string strSection = sectionOf(program, blnSource, strDb, strTable);
    const std::string& strFile = program.main.gstrTablesCompsIni;
    const auto text = [&](const char* strKey) { return INIGetSettingString(program, strSection, strKey, strFile); };
    const auto number = [&](const char* strKey) { return INIGetSettingInteger(program, strSection, strKey, strFile); };
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

void SaveDataCompSettings(Program& program, bool blnSource, const std::string& strDb, const std::string& strTable,
                          const tDataCompSide& side, std::int32_t lngCompMethod) {
  trap(program, moduleName, "SaveDataCompSettings", [&] {
    const std::string strSection = sectionOf(program, blnSource, strDb, strTable);
    struct Setting {
      const char* strKey;
      std::string strValue;
    };
    std::vector<Setting> settings = {{"PrimarySortKey", side.strPrimarySort},
                                     {"SecondarySortKey", side.strSecondarySort},
                                     {"TertiarySortKey", side.strTertiarySort},
                                     {"OffsetStartRec", std::to_string(side.lngOffset)},
                                     {"DbType", "SQL Server"},
                                     {"CompMethod", std::to_string(lngCompMethod)},
                                     {"CompKey", side.strCompKey},
                                     {"SecondaryCompKey", side.strSecondaryCompKey},
                                     {"TertiaryCompKey", side.strTertiaryCompKey}};
    // The lists of ignored columns have a file of their own.
    if (blnSource) settings.push_back({"IgnoreColumn", ""});
    for (const Setting& setting : settings)
      if (!INIWriteSetting(program, strSection, setting.strKey, setting.strValue, program.main.gstrTablesCompsIni))
        return;
  });
}

}  // namespace qrel
