#include "platform/data/connectionString.h"

#include "platform/text.h"

namespace qrel {
namespace {

bool isSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view trimSpace(std::string_view text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  while (!text.empty() && isSpace(text.back())) text.remove_suffix(1);
  return text;
}

// Takes a value off the front of `text`, up to and with the semicolon that ends it.
std::string takeValue(std::string_view& text) {
  while (!text.empty() && isSpace(text.front())) text.remove_prefix(1);
  std::string value;
  const char quote = text.starts_with('"') || text.starts_with('\'') ? text.front() : '\0';
  if (quote != '\0') {
    text.remove_prefix(1);
    while (!text.empty()) {
      const char c = text.front();
      text.remove_prefix(1);
      if (c == quote) {
        if (!text.starts_with(quote)) break;
        text.remove_prefix(1);
      }
      value += c;
    }
  }
  const std::size_t end = text.find(';');
  if (quote == '\0') value = trimSpace(text.substr(0, end));
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return value;
}

}  // namespace

ConnectionString ConnectionString::parse(std::string_view text) {
  ConnectionString result;
  while (!text.empty()) {
    const std::size_t end = text.find_first_of("=;");
    const std::string_view key = trimSpace(text.substr(0, end));
    const bool hasValue = end != std::string_view::npos && text[end] == '=';
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (!hasValue) continue;
    std::string value = takeValue(text);
    if (!key.empty()) result.pairs.emplace_back(key, std::move(value));
  }
  return result;
}

std::string ConnectionString::quoted(const std::string& value) {
  if (trimSpace(value).size() == value.size() && value.find_first_of(";={}'\"") == std::string::npos) return value;
  return '"' + replaceAll(value, "\"", "\"\"") + '"';
}

std::string ConnectionString::get(std::string_view key) const {
  for (auto pair = pairs.rbegin(); pair != pairs.rend(); ++pair) {
    if (equalNoCase(pair->first, key)) return pair->second;
  }
  return {};
}

bool ConnectionString::has(std::string_view key) const {
  for (const auto& pair : pairs) {
    if (equalNoCase(pair.first, key)) return true;
  }
  return false;
}

std::string ConnectionString::provider() const { return get("Provider"); }
std::string ConnectionString::server() const { return has("Data Source") ? get("Data Source") : get("Server"); }
std::string ConnectionString::database() const {
  return has("Initial Catalog") ? get("Initial Catalog") : get("Database");
}

}  // namespace qrel
