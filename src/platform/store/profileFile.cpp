#include "platform/store/profileFile.h"

#include <algorithm>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/store/fileChange.h"
#include "platform/text.h"

namespace qrel {

namespace {

std::string_view withoutWhiteSpace(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// One line's worth of text with the characters that the code page has.
std::string storable(std::string_view text) {
  text = text.substr(0, text.find_first_of(std::string_view("\r\n\0", 3)));
  return fromCodePage(toCodePage(withoutWhiteSpace(text)));
}

struct KeyLine {
  std::string_view key, value;
};

// The two parts of a line; none when it isn't a key's.
std::optional<KeyLine> keyOf(std::string_view line) {
  line = withoutWhiteSpace(line);
  const std::size_t equals = line.find('=');
  if (line.starts_with(';') || equals == std::string_view::npos) return std::nullopt;
  return KeyLine{withoutWhiteSpace(line.substr(0, equals)), withoutWhiteSpace(line.substr(equals + 1))};
}

std::string_view unquoted(std::string_view value) {
  const bool quoted =
      value.size() >= 2 && value.front() == value.back() && (value.front() == '"' || value.front() == '\'');
  return quoted ? value.substr(1, value.size() - 2) : value;
}

// The place of a key's line among them; the end when there is none.
template <class Lines>
auto findKey(Lines& lines, const std::string& key) {
  return std::find_if(lines.begin(), lines.end(), [&](const std::string& line) {
    const auto parts = keyOf(line);
    return parts && equalNoCase(parts->key, key);
  });
}

std::string_view nextLine(std::string_view& rest) {
  const std::size_t end = rest.find('\n');
  std::string_view line = rest.substr(0, end);
  rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
  if (line.ends_with('\r')) line.remove_suffix(1);
  return line;
}

// What is wrong with the bytes of a file that isn't one of the code page's.
[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& reason) {
  throw RuntimeError(errorNumber::pathAccess,
                     "'" + path.string() + "' cannot be read: " + reason + ". Mend it or move it away, and try again.");
}

std::string readBytes(const std::filesystem::path& path) {
  std::string bytes = files::readWholeFile(path, mostStoreBytes);
  for (const char* mark : {"\xEF\xBB\xBF", "\xFF\xFE", "\xFE\xFF"})
    if (bytes.starts_with(mark)) refuse(path, "it is encoded as Unicode, not in the 8-bit code page");
  if (const std::size_t zero = bytes.find('\0'); zero != std::string::npos)
    refuse(path, "line " +
                     std::to_string(std::count(bytes.begin(), bytes.begin() + static_cast<long>(zero), '\n') + 1) +
                     " holds zero bytes");
  return bytes;
}

}  // namespace

ProfileFile ProfileFile::read(const std::filesystem::path& path) {
  ProfileFile file;
  std::string text;
  try {
    text = fromCodePage(readBytes(path));
  } catch (const RuntimeError& error) {
    if (error.number != files::fileNotFound) throw;
    return file;
  }
  std::size_t number = 0;
  for (std::string_view rest = text; !rest.empty();) {
    const std::string_view line = nextLine(rest);
    const std::string_view bare = withoutWhiteSpace(line);
    const std::size_t close = bare.rfind(']');
    ++number;
    // What follows half a header would be taken for the section's before it.
    if (bare.starts_with('[') && close == std::string_view::npos)
      refuse(path, "line " + std::to_string(number) + " is half a section's header");
    const bool half = rest.empty() && !text.ends_with('\n') && !bare.empty() && bare.find_first_of("=;]") == bare.npos;
    if (half) refuse(path, "line " + std::to_string(number) + ", the last one, is incomplete");
    if (bare.starts_with('[')) {
      file.sections_.push_back({std::string(line), std::string(withoutWhiteSpace(bare.substr(1, close - 1))), {}});
    } else {
      if (file.sections_.empty()) file.sections_.emplace_back();
      file.sections_.back().lines.emplace_back(line);
    }
  }
  return file;
}

std::string ProfileFile::format() const {
  std::string text;
  for (const Section& section : sections_) {
    if (!section.header.empty()) text += section.header + "\r\n";
    for (const std::string& line : section.lines) text += line + "\r\n";
  }
  return text;
}

void ProfileFile::write(const std::filesystem::path& path) const {
  const std::string text = format();
  if (text.size() > mostStoreBytes)
    throw RuntimeError(errorNumber::pathAccess, "'" + path.string() + "' cannot be written: it would be too large.");
  files::makeFolder(path.parent_path());
  files::writeAtomically(path, toCodePage(text));
}

std::size_t ProfileFile::indexOf(std::string_view section) const {
  const std::string name = storable(section);
  const auto found = std::find_if(sections_.begin(), sections_.end(), [&](const Section& each) {
    return !each.header.empty() && equalNoCase(each.name, name);
  });
  return static_cast<std::size_t>(found - sections_.begin());
}

ProfileFile::Section& ProfileFile::findOrAdd(std::string_view section) {
  const std::size_t index = indexOf(section);
  if (index < sections_.size()) return sections_[index];
  const std::string name = storable(section);
  return sections_.emplace_back(Section{"[" + name + "]", name, {}});
}

std::optional<std::string> ProfileFile::value(std::string_view section, std::string_view key) const {
  const std::size_t index = indexOf(section);
  if (index == sections_.size()) return std::nullopt;
  const std::vector<std::string>& all = sections_[index].lines;
  const auto line = findKey(all, storable(key));
  if (line == all.end()) return std::nullopt;
  return std::string(unquoted(keyOf(*line)->value));
}

std::vector<std::string> ProfileFile::sectionNames() const {
  std::vector<std::string> names;
  for (const Section& section : sections_)
    if (!section.header.empty()) names.push_back(section.name);
  return names;
}

std::vector<std::string> ProfileFile::lines(std::string_view section) const {
  std::vector<std::string> result;
  const std::size_t index = indexOf(section);
  if (index == sections_.size()) return result;
  for (const std::string& line : sections_[index].lines)
    if (const auto parts = keyOf(line)) result.push_back(std::string(parts->key) + "=" + std::string(parts->value));
  return result;
}

void ProfileFile::setValue(std::string_view section, std::string_view key, std::string_view text) {
  Section& target = findOrAdd(section);
  const std::string name = storable(key);
  const auto line = findKey(target.lines, name);
  if (line != target.lines.end()) {
    *line = std::string(keyOf(*line)->key) + "=" + storable(text);
    return;
  }
  // Empty lines at the section's end stay between it and the next one.
  auto end = target.lines.end();
  while (end != target.lines.begin() && withoutWhiteSpace(*(end - 1)).empty()) --end;
  target.lines.insert(end, name + "=" + storable(text));
}

void ProfileFile::setLines(std::string_view section, const std::vector<std::string>& lines) {
  Section& target = findOrAdd(section);
  target.lines.clear();
  for (const std::string& line : lines) target.lines.push_back(storable(line));
}

bool ProfileFile::removeKey(std::string_view section, std::string_view key) {
  const std::size_t index = indexOf(section);
  if (index == sections_.size()) return false;
  std::vector<std::string>& all = sections_[index].lines;
  const auto line = findKey(all, storable(key));
  if (line == all.end()) return false;
  all.erase(line);
  return true;
}

bool ProfileFile::removeSection(std::string_view section) {
  const std::size_t index = indexOf(section);
  if (index == sections_.size()) return false;
  sections_.erase(sections_.begin() + static_cast<std::ptrdiff_t>(index));
  return true;
}

ProfileChange::ProfileChange(std::filesystem::path path)
    : path_(std::move(path)), lock_(lockForChange(path_, files::Access::Usual)) {
  file = ProfileFile::read(path_);
  before_ = file.format();
}

void ProfileChange::commit() {
  if (file.format() != before_) file.write(path_);
}

}  // namespace qrel
