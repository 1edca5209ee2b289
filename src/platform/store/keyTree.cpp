#include "platform/store/keyTree.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <system_error>

#include "platform/text.h"

namespace qrel {
namespace {

std::string_view withoutEndSlashes(std::string_view key) {
  while (key.starts_with('\\')) key.remove_prefix(1);
  while (key.ends_with('\\')) key.remove_suffix(1);
  return key;
}

// The bytes of the character at `offset`; 0 when they aren't UTF-8.
std::size_t validLength(std::string_view text, std::size_t offset) {
  std::size_t end = offset;
  const char32_t read = nextCodePoint(text, end);
  std::string again;
  appendUtf8(again, read);
  return text.substr(offset, end - offset) == again ? end - offset : 0;
}

bool isUtf8(std::string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = static_cast<unsigned char>(text[i]) < 0x80 ? 1 : validLength(text, i);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

void appendHex(std::string& out, unsigned char byte) {
  constexpr char hex[] = "0123456789ABCDEF";
  out.append("\\x").append(1, hex[byte >> 4]).append(1, hex[byte & 15]);
}

void appendQuoted(std::string& out, std::string_view text) {
  out += '"';
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) {
      const std::size_t length = validLength(text, i);
      if (length == 0)
        appendHex(out, byte);
      else
        out.append(text.substr(i, length));
      i += std::max<std::size_t>(length, 1) - 1;
      continue;
    }
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
          appendHex(out, byte);
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

bool isNote(std::string_view line) { return line.starts_with('#') || line.starts_with(';'); }

bool needsQuotes(std::string_view name) {
  if (name.empty() || name != trimBlanks(name) || name.starts_with('[') || name.starts_with('"') || isNote(name) ||
      !isUtf8(name))
    return true;
  for (const char c : name) {
    if (c == '=' || static_cast<unsigned char>(c) < 0x20) return true;
  }
  return false;
}

bool parseValue(std::string_view line, KeyTree::Key& key) {
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
  KeyTree::Value value;
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
  std::pair<std::string, KeyTree::Value>& entry = key.values[lowerCase(name)];
  if (entry.first.empty()) entry.first = name;
  entry.second = std::move(value);
  return true;
}

// What is wrong with a line that isn't one of the text's; the line itself may hold a password and isn't shown.
std::string describeDamage(std::size_t number, std::string_view line, bool endsText) {
  std::string text = "line " + std::to_string(number);
  if (line.find('\0') != std::string_view::npos) return text + " holds zero bytes";
  if (!isUtf8(line)) return text + " is not UTF-8";
  if (endsText) return text + ", the last one, is incomplete";
  if (line.starts_with('[')) return text + " is no key in brackets";
  return text + " is neither a key in brackets nor a value";
}

}  // namespace

std::string KeyTree::folded(std::string_view key) { return lowerCase(withoutEndSlashes(key)); }

// A key stands between brackets as it is, so that it can't hold what ends a line.
bool KeyTree::isWritable(std::string_view key) {
  return !withoutEndSlashes(key).empty() &&
         key.find_first_of(std::string_view("\r\n\0", 3)) == std::string_view::npos && isUtf8(key);
}

KeyTree::Key& KeyTree::keyOf(std::string_view key) {
  Key& found = keys[folded(key)];
  if (found.spelling.empty()) found.spelling = withoutEndSlashes(key);
  return found;
}

KeyTree KeyTree::parse(std::string_view text, std::string& damage) {
  KeyTree tree;
  damage.clear();
  if (text.starts_with("\xEF\xBB\xBF")) text.remove_prefix(3);
  Key* current = nullptr;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = text.find('\n');
    std::string_view whole = text.substr(0, end);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    if (whole.ends_with('\r')) whole.remove_suffix(1);
    const std::string_view line = trimBlanks(whole);
    if (line.empty()) continue;
    if (whole.find('\0') == std::string_view::npos && isUtf8(whole)) {
      if (isNote(line)) {
        (current ? current->notes : tree.notes).emplace_back(whole);
        continue;
      }
      if (line.starts_with('[')) {
        const bool isHead = line.ends_with(']') && isWritable(line.substr(1, line.size() - 2));
        // The values behind a broken head belong to no other key.
        current = isHead ? &tree.keyOf(line.substr(1, line.size() - 2)) : nullptr;
        if (isHead) continue;
      } else if (current && parseValue(line, *current)) {
        continue;
      }
    }
    if (damage.empty()) damage = describeDamage(number, whole, end == std::string_view::npos);
  }
  return tree;
}

std::string KeyTree::format() const {
  std::string text;
  for (const std::string& note : notes) text.append(note).append(1, '\n');
  for (const auto& [path, key] : keys) {
    text.append(text.empty() ? "" : "\n").append("[").append(key.spelling).append("]\n");
    for (const std::string& note : key.notes) text.append(note).append(1, '\n');
    for (const auto& [foldedName, entry] : key.values) {
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
