// The registry's operations on the program's key store: a missing value always reads as its default, and nothing here
// shows a message. What can't be written raises RuntimeError; several writes that belong together stand in one
// KeyStore::Change.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "platform/store/keyStore.h"

namespace qrel {

inline constexpr std::uint32_t HKEY_CURRENT_USER = 0x80000001U;
inline constexpr const char* productKey = "Software\\Qrel";

// The value if it is there and a number; else the default.
std::int32_t GetSettingDWord(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                             const std::string& strValue, std::int32_t lngDefault);
// The value if it is there and a text, cut at its first zero character; else the default.
std::string GetSettingString(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                             const std::string& strValue, const std::string& strDefault);
// "Success"; deleting a key that isn't there or that has subkeys gives "No! Key to Delete Or Key Not Found".
std::string SaveSettingDWord(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                             const std::string& strValue, std::int32_t lngNumber);
std::string SaveSettingString(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                              const std::string& strValue, const std::string& strText);
void CreateNewKey(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey);
std::string DeleteRegKey(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey);

// The numbers n of the keys named strPrefix and n that are directly below strKey, ascending. What is stored as their
// count is believed no further than these.
std::vector<std::int32_t> NumberedRegKeys(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                                          const std::string& strPrefix);

// The value, unless it is Null or empty; then the default.
std::string NullToDefault(const struct Cell& value, const std::string& strDefault);

}  // namespace qrel
