#include "platform/store/keyStore.h"

#include <charconv>
#include <system_error>
#include <utility>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/text.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

std::string_view withoutEndSlashes(std::string_view key) {
  while (key.starts_with('\\')) key.remove_prefix(1);
  while (key.ends_with('\\')) key.remove_suffix(1);
  return key;
}

std::string folded(std::string_view key) { return lowerCase(withoutEndSlashes(key)); }

// A key stands between brackets as it is, so that it can't hold what ends a line.
bool isWritableKey(std::string_view key) {
  return !withoutEndSlashes(key).empty() && key.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos;
}

void appendQuoted(std::string& out, std::string_view text) {
  constexpr char hex[] = "0123456789ABCDEF";
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '\\':
        out += "\\\\";
        break;
      case '"':
        out += "\\\"";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\0':
        out += "\\0";
        break;
      default:
        if (byte < 0x20 || byte == 0x7F) {
          out.append("\\x").append(1, hex[byte >> 4]).append(1, hex[byte & 15]);
        } else {
          out += c;
        }
    }
  }
  out += '"';
}

// Takes a quoted text off the front of the line; empty when it isn't whole.
std::optional<std::string> takeQuoted(std::string_view& line) {
  std::string text;
  for (std::size_t i = 1; i < line.size(); ++i) {
    if (line[i] == '"') {
      line.remove_prefix(i + 1);
      return text;
    }
    if (line[i] != '\\') {
      text += line[i];
      continue;
    }
    if (++i == line.size()) break;
    switch (line[i]) {
      case '\\':
      case '"':
        text += line[i];
        break;
      case 'n':
        text += '\n';
        break;
      case 'r':
        text += '\r';
        break;
      case '0':
        text += '\0';
        break;
      case 'x': {
        unsigned byte = 0;
        const std::string_view digits = line.substr(i + 1, 2);
        const char* end = digits.data() + digits.size();
        if (digits.size() != 2 || std::from_chars(digits.data(), end, byte, 16).ptr != end) return std::nullopt;
        text += static_cast<char>(byte);
        i += 2;
        break;
      }
      default:
        return std::nullopt;
    }
  }
  return std::nullopt;
}

bool needsQuotes(std::string_view name) {
  if (name.empty() || name != trimBlanks(name) || name.starts_with('[') || name.starts_with('"')) return true;
  for (const char c : name) {
    if (c == '=' || static_cast<unsigned char>(c) < 0x20) return true;
  }
  return false;
}

}  // namespace

KeyStore::KeyStore(fs::path file) : file_(std::move(file)) {}

std::optional<KeyStore::Value> KeyStore::get(std::string_view key, std::string_view name) {
  refresh();
  const std::string path = folded(key);
  const std::string valueName = lowerCase(name);
  if (const auto found = overrides_.find({path, valueName}); found != overrides_.end()) return found->second;
  const auto holder = keys_.find(path);
  if (holder == keys_.end()) return std::nullopt;
  const auto found = holder->second.values.find(valueName);
  if (found == holder->second.values.end()) return std::nullopt;
  return found->second.second;
}

bool KeyStore::set(std::string_view key, std::string_view name, Value value) {
  if (!isWritableKey(key)) return false;
  refresh();
  std::pair<std::string, Value>& entry = keyOf(key).values[lowerCase(name)];
  if (entry.first.empty()) entry.first = name;
  entry.second = std::move(value);
  return write();
}

bool KeyStore::createKey(std::string_view key) {
  if (!isWritableKey(key)) return false;
  refresh();
  keyOf(key);
  return write();
}

bool KeyStore::deleteKey(std::string_view key) {
  refresh();
  const std::string path = folded(key);
  if (!keys_.contains(path)) return false;
  const auto below = keys_.lower_bound(path + "\\");
  if (below != keys_.end() && below->first.starts_with(path + "\\")) return false;
  keys_.erase(path);
  return write();
}

void KeyStore::setOverride(std::string_view key, std::string_view name, Value value) {
  overrides_[{folded(key), lowerCase(name)}] = std::move(value);
}

KeyStore::Key& KeyStore::keyOf(std::string_view key) {
  Key& found = keys_[folded(key)];
  if (found.spelling.empty()) found.spelling = withoutEndSlashes(key);
  return found;
}

void KeyStore::refresh() {
  if (file_.empty()) return;
  std::error_code error;
  const fs::file_time_type time = fs::last_write_time(file_, error);
  const std::uintmax_t size = error ? 0 : fs::file_size(file_, error);
  if (error) {
    blocked_ = error != std::errc::no_such_file_or_directory && error != std::errc::not_a_directory;
    // A file that has been taken away takes its values along; what could never be written stays.
    if (!blocked_ && std::exchange(wasThere_, false)) {
      keys_.clear();
      unreadable_.clear();
    }
    return;
  }
  if (wasThere_ && time == readTime_ && size == readSize_) return;
  std::string text;
  try {
    text = files::readWholeFile(file_);
  } catch (const RuntimeError&) {
    blocked_ = true;
    return;
  }
  blocked_ = false;
  wasThere_ = true;
  readTime_ = time;
  readSize_ = size;
  parse(text);
}

bool KeyStore::write() {
  if (file_.empty()) return true;
  if (blocked_) return false;
  try {
    files::makeFolder(file_.parent_path(), files::Access::OwnerOnly);
    files::writeAtomically(file_, format(), files::Access::OwnerOnly);
  } catch (const RuntimeError&) {
    return false;
  }
  std::error_code error;
  readTime_ = fs::last_write_time(file_, error);
  readSize_ = fs::file_size(file_, error);
  wasThere_ = !error;
  return true;
}

void KeyStore::parse(std::string_view text) {
  keys_.clear();
  unreadable_.clear();
  Key* current = nullptr;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::string_view whole = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    const std::string_view line = trimBlanks(whole.ends_with('\r') ? whole.substr(0, whole.size() - 1) : whole);
    if (line.empty()) continue;
    if (line.starts_with('[')) {
      // The values behind a broken head belong to no other key.
      const bool isHead = line.ends_with(']') && isWritableKey(line.substr(1, line.size() - 2));
      current = isHead ? &keyOf(line.substr(1, line.size() - 2)) : nullptr;
      if (isHead) continue;
    } else if (current && parseValue(line, *current)) {
      continue;
    }
    unreadable_.emplace_back(whole);
  }
}

bool KeyStore::parseValue(std::string_view line, Key& key) {
  std::string name;
  if (line.starts_with('"')) {
    std::optional<std::string> quoted = takeQuoted(line);
    line = trimLeftBlanks(line);
    if (!quoted || !line.starts_with('=')) return false;
    name = std::move(*quoted);
  } else {
    const std::size_t mark = line.find('=');
    if (mark == std::string_view::npos) return false;
    name = trimBlanks(line.substr(0, mark));
    line.remove_prefix(mark);
    if (name.empty()) return false;
  }
  line = trimBlanks(line.substr(1));
  Value value;
  if (line.starts_with('"')) {
    std::optional<std::string> quoted = takeQuoted(line);
    if (!quoted || !line.empty()) return false;
    value = std::move(*quoted);
  } else {
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(line.data(), line.data() + line.size(), number);
    if (line.empty() || error != std::errc() || end != line.data() + line.size()) return false;
    value = number;
  }
  std::pair<std::string, Value>& entry = key.values[lowerCase(name)];
  if (entry.first.empty()) entry.first = name;
  entry.second = std::move(value);
  return true;
}

// Lines that couldn't be read stand in front of all keys, where they don't become values by accident.
std::string KeyStore::format() const {
  std::string text;
  for (const std::string& line : unreadable_) text.append(line).append(1, '\n');
  for (const auto& [path, key] : keys_) {
    text.append(text.empty() ? "" : "\n").append("[").append(key.spelling).append("]\n");
    for (const auto& [folded, entry] : key.values) {
      const auto& [name, value] = entry;
      if (needsQuotes(name)) {
        appendQuoted(text, name);
      } else {
        text += name;
      }
      text += " = ";
      if (const std::int32_t* number = std::get_if<std::int32_t>(&value)) {
        text += std::to_string(*number);
      } else {
        appendQuoted(text, std::get<std::string>(value));
      }
      text += '\n';
    }
  }
  return text;
}

}  // namespace qrel
