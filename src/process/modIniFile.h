// Single settings of a profile file. An error is told in a box titled with the procedure's name, and the result is then
// what a missing key gives.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"

namespace qrel {

class ProfileFile;

// The integer that the value starts with; 0 for a missing key and for a text. A number beyond 16 bits is error 6.
std::int16_t INIGetSettingInteger(Program& program, const std::string& strSection, const std::string& strKey,
                                  const std::string& strFilePath);
// At most the value's first 255 characters; empty for a missing key.
std::string INIGetSettingString(Program& program, const std::string& strSection, const std::string& strKey,
                                const std::string& strFilePath);
// The same of a file that has been read, so that several settings are read as they stood together.
std::int16_t INIGetSettingInteger(Program& program, const std::string& strSection, const std::string& strKey,
                                  const ProfileFile& file);
std::string INIGetSettingString(Program& program, const std::string& strSection, const std::string& strKey,
                                const ProfileFile& file);

// False when the file could not be written.
bool INIWriteSetting(Program& program, const std::string& strSection, const std::string& strKey,
                     const std::string& strValue, const std::string& strFilePath);

// Several settings, written together or not at all.
struct tIniSetting {
  std::string strSection, strKey, strValue;
};
bool INIWriteSettings(Program& program, const std::vector<tIniSetting>& arrSettings, const std::string& strFilePath);

}  // namespace qrel
