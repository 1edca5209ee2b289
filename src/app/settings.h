// Every setting of the program in one table, and the ways to read and write them by name.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "app/Program.h"

namespace qrel {

enum class SettingKind : std::uint8_t {
  Flag,    // true if the stored number is 1
  Number,  // the stored number as it stands
  Text,    // the stored text; empty without one
};

// One row of the table. `global` or `globalNumber` is the working copy that ReadOptions fills at start; a row with
// neither is read from the store at each use.
struct Setting {
  const char* name;
  const char* subkey;  // below the product key: "", "\\Servers", "\\Comparisons", "\\TXText"
  SettingKind kind;
  std::int32_t standard;
  bool SettingsState::*global;
  std::int32_t SettingsState::*globalNumber;
  const char* meaning;  // one line for a person
};

const std::vector<Setting>& settingsTable();
// By name without case; null when there is none.
const Setting* findSetting(std::string_view strName);

// The full path of a setting's key.
std::string settingKey(const Setting& setting);

// The stored number, or the default: for a flag test it with ReadFlag. The name must be one of the table.
std::int32_t ReadNumber(Program& program, std::string_view strName);
bool ReadFlag(Program& program, std::string_view strName);
std::string ReadText(Program& program, std::string_view strName);

// Writes a setting to the store and to its working copy. Raises RuntimeError when it can't be kept.
void SaveSetting(Program& program, const Setting& setting, std::int32_t lngValue);

// Fills a setting's working copy from a number; CursorConnectionUseServer becomes the cursor location 2 or 3.
void applySetting(Program& program, const Setting& setting, std::int32_t lngValue);

// Runs a write that is made by the way, such as that of the database used last. When it fails, what it goes along with
// goes on: the failure is told in a box, once in a program's life.
void SaveByTheWay(Program& program, const std::function<void()>& write);
struct SaveByTheWayState {
  bool blnTold = false;  // set beforehand: never told
};

}  // namespace qrel
