// The registry's operations on the program's key store: a missing value always reads as its default, and nothing here
// raises an error or shows a message.
#pragma once

#include <cstdint>
#include <string>

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
// "Success", or a status text that callers are free to ignore.
std::string SaveSettingDWord(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                             const std::string& strValue, std::int32_t lngNumber);
std::string SaveSettingString(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey,
                              const std::string& strValue, const std::string& strText);
void CreateNewKey(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey);
std::string DeleteRegKey(KeyStore& store, std::uint32_t lngRoot, const std::string& strKey);

// The value, unless it is Null or empty; then the default.
std::string NullToDefault(const struct Cell& value, const std::string& strDefault);

}  // namespace qrel
