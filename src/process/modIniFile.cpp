#include "process/modIniFile.h"

#include "app/trap.h"
#include "platform/error.h"
#include "platform/store/profileFile.h"
#include "platform/text.h"

namespace qrel {

namespace {
constexpr std::size_t stringCharacters = 255;
}

std::int16_t INIGetSettingInteger(Program& program, const std::string& strSection, const std::string& strKey,
                                  const ProfileFile& file) {
  return trapWithBox(program.host, "INIGetSettingInteger", std::int16_t{0}, [&] {
    const auto value = file.value(strSection, strKey);
    return value ? toInt16(numericPrefix(*value)) : std::int16_t{0};
  });
}

std::int16_t INIGetSettingInteger(Program& program, const std::string& strSection, const std::string& strKey,
                                  const std::string& strFilePath) {
  return trapWithBox(program.host, "INIGetSettingInteger", std::int16_t{0},
                     [&] { return INIGetSettingInteger(program, strSection, strKey, ProfileFile::read(strFilePath)); });
}

std::string INIGetSettingString(Program&, const std::string& strSection, const std::string& strKey,
                                const ProfileFile& file) {
  const std::string text = file.value(strSection, strKey).value_or("");
  return std::string(leftCharacters(text, stringCharacters));
}

std::string INIGetSettingString(Program& program, const std::string& strSection, const std::string& strKey,
                                const std::string& strFilePath) {
  return trapWithBox(program.host, "INIGetSettingString", std::string(),
                     [&] { return INIGetSettingString(program, strSection, strKey, ProfileFile::read(strFilePath)); });
}

bool INIWriteSetting(Program& program, const std::string& strSection, const std::string& strKey,
                     const std::string& strValue, const std::string& strFilePath) {
  return INIWriteSettings(program, {{strSection, strKey, strValue}}, strFilePath);
}

bool INIWriteSettings(Program& program, const std::vector<tIniSetting>& arrSettings, const std::string& strFilePath) {
  return trapWithBox(program.host, "INIWriteSetting", false, [&] {
    ProfileChange change(strFilePath);
    for (const tIniSetting& setting : arrSettings)
      change.file.setValue(setting.strSection, setting.strKey, setting.strValue);
    change.commit();
    return true;
  });
}

}  // namespace qrel
