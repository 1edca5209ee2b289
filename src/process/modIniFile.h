// Single settings of a profile file. An error is told in a box titled with the procedure's name, and the result is then
// what a missing key gives.
#pragma once

#include <cstdint>
#include <string>

#include "app/Program.h"

namespace qrel {

// The integer that the value starts with; 0 for a missing key and for a text. A number beyond 16 bits is error 6.
std::int16_t INIGetSettingInteger(Program& program, const std::string& strSection, const std::string& strKey,
                                  const std::string& strFilePath);
// At most the value's first 255 characters; empty for a missing key.
std::string INIGetSettingString(Program& program, const std::string& strSection, const std::string& strKey,
                                const std::string& strFilePath);
// False when the file could not be written.
bool INIWriteSetting(Program& program, const std::string& strSection, const std::string& strKey,
                     const std::string& strValue, const std::string& strFilePath);

}  // namespace qrel
