#include "process/cInifile.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include "platform/error.h"
#include "platform/store/profileFile.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t valueCharacters = 254;
constexpr std::size_t listCharacters = 8191;
constexpr std::int32_t marginPixels = 4;

std::string zeroSeparated(const std::vector<std::string>& pieces) {
  std::string text;
  for (const std::string& piece : pieces) text.append(piece).push_back('\0');
  return std::string(leftCharacters(text, listCharacters));
}

void split(const std::string& strText, OneBased<std::string>& arrPieces, long& lngCount) {
  arrPieces.clear();
  for (std::string& piece : splitAt(strText, '\0'))
    if (!piece.empty()) arrPieces.add(std::move(piece));
  lngCount = arrPieces.count();
}

// One direction of a window's place: brought within the screen less the margin, and cut where it doesn't fit.
void fitToScreen(std::int32_t& place, std::int32_t& size, std::int32_t screen, std::int32_t margin) {
  const std::int64_t end = std::int64_t{screen} - margin;
  place = std::max(place, margin);
  if (std::int64_t{place} + size <= end) return;
  place = static_cast<std::int32_t>(std::max<std::int64_t>(end - size, margin));
  if (std::int64_t{place} + size > end) size = static_cast<std::int32_t>(end - place);
}

}  // namespace

cInifile::Change::Change(cInifile& ini) : ini_(ini) {
  if (ini.change_) {
    before_ = std::make_unique<ProfileFile>(ini.change_->file);
    return;
  }
  own_ = std::make_unique<ProfileChange>(ini.Path);
  before_ = std::make_unique<ProfileFile>(own_->file);
  ini.change_ = own_.get();
  ini.open_ = &own_->file;
}

cInifile::Change::~Change() {
  if (own_) {
    ini_.change_ = nullptr;
    ini_.open_ = nullptr;
  } else if (before_) {
    ini_.change_->file = std::move(*before_);
  }
}

void cInifile::Change::commit() {
  if (own_) own_->commit();
  before_.reset();
}

cInifile::Reading::Reading(cInifile& ini) : ini_(ini) {
  if (ini.open_) return;
  own_ = std::make_unique<ProfileFile>(ProfileFile::read(ini.Path));
  ini.open_ = own_.get();
}

cInifile::Reading::~Reading() {
  if (own_) ini_.open_ = nullptr;
}

void cInifile::change(const std::function<void(ProfileFile&)>& edit) {
  lastReturnCode_ = 0;
  strFailure_.clear();
  if (change_) {
    edit(change_->file);
    lastReturnCode_ = 1;
    return;
  }
  try {
    ProfileChange change(Path);
    edit(change.file);
    change.commit();
    lastReturnCode_ = 1;
  } catch (const std::exception& error) {
    strFailure_ = describeError(error).description;
  }
}

std::shared_ptr<const ProfileFile> cInifile::content() const {
  if (open_) return {std::shared_ptr<void>(), open_};  // the scope owns it
  return std::make_shared<const ProfileFile>(ProfileFile::read(Path));
}

std::string cInifile::Value() const {
  const std::string text = content()->value(Section, Key).value_or(Default);
  return std::string(leftCharacters(text, valueCharacters));
}

void cInifile::SetValue(std::string_view strText) {
  std::string text(strText);
  std::erase(text, '\0');
  change([&](ProfileFile& file) { file.setValue(Section, Key, text); });
}

void cInifile::DeleteKey() {
  change([&](ProfileFile& file) { file.removeKey(Section, Key); });
}

void cInifile::DeleteSection() {
  change([&](ProfileFile& file) { file.removeSection(Section); });
}

std::string cInifile::INISection() const { return zeroSeparated(content()->lines(Section)); }

void cInifile::SetINISection(std::string_view strLines) {
  OneBased<std::string> lines;
  long lngCount = 0;
  split(std::string(strLines), lines, lngCount);
  change([&](ProfileFile& file) { file.setLines(Section, {lines.begin(), lines.end()}); });
}

std::string cInifile::Sections() const { return zeroSeparated(content()->sectionNames()); }

void cInifile::EnumerateCurrentSection(OneBased<std::string>& arrLines, long& lngCount) const {
  split(INISection(), arrLines, lngCount);
}

void cInifile::EnumerateAllSections(OneBased<std::string>& arrNames, long& lngCount) const {
  split(Sections(), arrNames, lngCount);
}

void cInifile::writeNumber(const char* strKey, std::int32_t lngValue) {
  const std::string strBefore = std::exchange(Key, strKey);
  SetValue(std::to_string(lngValue));
  Key = strBefore;
}

std::int32_t cInifile::readNumber(const char* strKey, std::int32_t lngDefault) const {
  cInifile reader = *this;
  reader.Key = strKey;
  reader.Default = "FAIL";
  return CLngDefault(reader.Value(), lngDefault);
}

void cInifile::SaveFormPosition(const FormPosition& form) {
  if (form.blnMinimised) return;
  writeNumber("Maximised", form.blnMaximised ? 1 : 0);
  if (form.blnMaximised) return;
  writeNumber("Left", form.Left);
  writeNumber("Top", form.Top);
  writeNumber("Width", form.Width);
  writeNumber("Height", form.Height);
}

void cInifile::LoadFormPosition(FormPosition& form, std::int32_t lMinWidth, std::int32_t lMinHeight,
                                const ScreenSize& screen) const {
  std::int32_t left = readNumber("Left", form.Left);
  std::int32_t top = readNumber("Top", form.Top);
  std::int32_t width = std::max(readNumber("Width", form.Width), lMinWidth);
  std::int32_t height = std::max(readNumber("Height", form.Height), lMinHeight);
  fitToScreen(left, width, screen.Width, marginPixels * screen.UnitsPerPixelX);
  fitToScreen(top, height, screen.Height, marginPixels * screen.UnitsPerPixelY);
  if (width >= lMinWidth && height >= lMinHeight) {
    form.Left = left;
    form.Top = top;
    form.Width = width;
    form.Height = height;
  }
  if (readNumber("Maximised", 0) != 0) form.blnMaximised = true;
}

std::int32_t cInifile::CLngDefault(std::string_view strText, std::int32_t lngDefault) {
  std::string digits(trimBlanks(strText));
  std::erase(digits, ',');
  std::string_view number = digits;
  if (number.starts_with('+') && !number.starts_with("+-")) number.remove_prefix(1);
  double value = 0;
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), value);
  const bool whole = !number.empty() && error == std::errc() && end == number.data() + number.size();
  if (!whole || !std::isfinite(value)) return lngDefault;
  value = std::nearbyint(value);
  using Limits = std::numeric_limits<std::int32_t>;
  if (value < Limits::min() || value > Limits::max()) return lngDefault;
  return static_cast<std::int32_t>(value);
}

}  // namespace qrel
