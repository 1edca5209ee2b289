#include "app/modRegistry.h"

#include <algorithm>
#include <charconv>
#include <system_error>

#include "platform/data/value.h"
#include "platform/text.h"

namespace qrel {

namespace {
constexpr const char* success = "Success";
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
  store.set(strKey, strValue, lngNumber);
  return success;
}

std::string SaveSettingString(KeyStore& store, std::uint32_t, const std::string& strKey, const std::string& strValue,
                              const std::string& strText) {
  store.set(strKey, strValue, strText);
  return success;
}

void CreateNewKey(KeyStore& store, std::uint32_t, const std::string& strKey) { store.createKey(strKey); }

std::string DeleteRegKey(KeyStore& store, std::uint32_t, const std::string& strKey) {
  return store.deleteKey(strKey) ? success : "No! Key to Delete Or Key Not Found";
}

std::vector<std::int32_t> NumberedRegKeys(KeyStore& store, std::uint32_t, const std::string& strKey,
                                          const std::string& strPrefix) {
  std::vector<std::int32_t> numbers;
  for (const std::string& strName : store.subkeys(strKey)) {
    if (!equalNoCase(strName.substr(0, strPrefix.size()), strPrefix)) continue;
    const std::string_view digits = std::string_view(strName).substr(strPrefix.size());
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    // "Server01" is another key than the one that is looked up under 1.
    if (error == std::errc() && number > 0 && std::to_string(number) == digits) numbers.push_back(number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::string NullToDefault(const Cell& value, const std::string& strDefault) {
  if (value.null) return strDefault;
  std::string text = textOf(value);
  return text.empty() ? strDefault : text;
}

}  // namespace qrel
