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
                                  const std::string& strFilePath) {
  return trapWithBox(program.host, "INIGetSettingInteger", std::int16_t{0}, [&] {
    const auto value = ProfileFile::read(strFilePath).value(strSection, strKey);
    return value ? toInt16(numericPrefix(*value)) : std::int16_t{0};
  });
}

std::string INIGetSettingString(Program& program, const std::string& strSection, const std::string& strKey,
                                const std::string& strFilePath) {
  return trapWithBox(program.host, "INIGetSettingString", std::string(), [&] {
    const std::string text = ProfileFile::read(strFilePath).value(strSection, strKey).value_or("");
    return std::string(leftCharacters(text, stringCharacters));
  });
}

bool INIWriteSetting(Program& program, const std::string& strSection, const std::string& strKey,
                     const std::string& strValue, const std::string& strFilePath) {
  return trapWithBox(program.host, "INIWriteSetting", false, [&] {
    ProfileFile file = ProfileFile::read(strFilePath);
    file.setValue(strSection, strKey, strValue);
    file.write(strFilePath);
    return true;
  });
}

}  // namespace qrel
