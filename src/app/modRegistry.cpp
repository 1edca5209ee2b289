#include "app/modRegistry.h"

#include "platform/data/value.h"

namespace qrel {

namespace {
constexpr const char* keyNotFound = "No! Key to Delete Or Key Not Found";
}

std::int32_t GetSettingDWord(KeyStore& store, std::uint32_t, const std::string& strKey, const std::string& strValue,
                             std::int32_t lngDefault) {
  const auto value = store.get(strKey, strValue);
  if (!value || !std::holds_alternative<std::int32_t>(*value)) return lngDefault;
  return std::get<std::int32_t>(*value);
}

std::string GetSettingString(KeyStore& store, std::uint32_t, const std::string& strKey, const std::string& strValue,
                             const std::string& strDefault) {
  const auto value = store.get(strKey, strValue);
  if (!value || !std::holds_alternative<std::string>(*value)) return strDefault;
  const std::string& text = std::get<std::string>(*value);
  return text.substr(0, text.find('\0'));
}

std::string SaveSettingDWord(KeyStore& store, std::uint32_t, const std::string& strKey, const std::string& strValue,
                             std::int32_t lngNumber) {
  return store.set(strKey, strValue, lngNumber) ? "Success" : "No! Failed to save Value";
}

std::string SaveSettingString(KeyStore& store, std::uint32_t, const std::string& strKey, const std::string& strValue,
                              const std::string& strText) {
  return store.set(strKey, strValue, strText) ? "Success" : keyNotFound;
}

void CreateNewKey(KeyStore& store, std::uint32_t, const std::string& strKey) { store.createKey(strKey); }

std::string DeleteRegKey(KeyStore& store, std::uint32_t, const std::string& strKey) {
  return store.deleteKey(strKey) ? "Success" : keyNotFound;
}

std::string NullToDefault(const Cell& value, const std::string& strDefault) {
  if (value.null) return strDefault;
  std::string text = textOf(value);
  return text.empty() ? strDefault : text;
}

}  // namespace qrel
