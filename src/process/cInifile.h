// One section and key at a time of a profile file. Nothing is kept open or in memory: each call goes to the file.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "app/OneBased.h"

namespace qrel {

class ProfileFile;
class ProfileChange;

// Where a window stands and how large it is, in the window's own units.
struct FormPosition {
  bool blnMinimised = false;
  bool blnMaximised = false;
  std::int32_t Left = 0, Top = 0, Width = 0, Height = 0;
};
// The screen in the same units, and how many of them make a pixel.
struct ScreenSize {
  std::int32_t Width = 0, Height = 0;
  std::int32_t UnitsPerPixelX = 1, UnitsPerPixelY = 1;
};

// No call shows a message, and no write outside a Change raises an error. A file or section that isn't there reads as
// empty and is made by the first write; reading a file that is there and can't be read raises RuntimeError, so that
// nobody takes it for an empty one.
class cInifile {
 public:
  std::string Path;     // of the file
  std::string Section;  // the current one
  std::string Key;      // the current one
  std::string Default;  // what Value gives when the key isn't there

  // Of the last write or deletion; 0 means that it failed. Deleting what isn't there succeeds.
  std::int32_t LastReturnCode() const { return lastReturnCode_; }
  bool Success() const { return lastReturnCode_ != 0; }
  // Why it failed: a sentence that names the file and what to do. Empty after a success.
  const std::string& Failure() const { return strFailure_; }

  // All that is written through the object from here to commit() is one change of the file, which is locked against
  // other processes: written at once or not at all. What is read through the object sees it. Scopes nest, and the
  // outermost writes; one that ends without commit() takes its own part back. Beginning and commit() raise
  // RuntimeError.
  class Change {
   public:
    explicit Change(cInifile& ini);
    ~Change();
    void commit();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

   private:
    cInifile& ini_;
    std::unique_ptr<ProfileChange> own_;  // null: part of an outer one
    std::unique_ptr<ProfileFile> before_;
  };

  // While it lives, all that is read through the object is of the file as it stood at its beginning, which raises
  // RuntimeError when the file can't be read.
  class Reading {
   public:
    explicit Reading(cInifile& ini);
    ~Reading();
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

   private:
    cInifile& ini_;
    std::unique_ptr<ProfileFile> own_;  // null: within a Change or another Reading
  };

  // At most the first 254 characters.
  std::string Value() const;
  // Writes the text without its zero characters.
  void SetValue(std::string_view strText);
  void DeleteKey();
  void DeleteSection();

  // The section's "key=value" lines, each with a zero character behind it; what lies beyond 8191 characters is cut.
  std::string INISection() const;
  // Replaces them by lines with zero characters between.
  void SetINISection(std::string_view strLines);
  // The names of all sections in the same form, with the same cut.
  std::string Sections() const;
  // The pieces of INISection and of Sections that aren't empty; lngCount is their number.
  void EnumerateCurrentSection(OneBased<std::string>& arrLines, long& lngCount) const;
  void EnumerateAllSections(OneBased<std::string>& arrNames, long& lngCount) const;

  // Keeps a window's place under "Maximised" and, unless it is maximised, "Left", "Top", "Width" and "Height". Nothing
  // is written of a minimised one.
  void SaveFormPosition(const FormPosition& form);
  // Moves the window to the place kept, within the screen with a margin of 4 pixels; what isn't kept stays as it is. A
  // window that can't have its least size there stays where it is.
  void LoadFormPosition(FormPosition& form, std::int32_t lMinWidth, std::int32_t lMinHeight,
                        const ScreenSize& screen) const;

  // The text as a 32-bit integer, rounded; the default when it isn't a number of that range.
  static std::int32_t CLngDefault(std::string_view strText, std::int32_t lngDefault);

 private:
  void change(const std::function<void(ProfileFile&)>& edit);
  // What reads are of: the file of the scope that is open, else the one on the disk.
  std::shared_ptr<const ProfileFile> content() const;
  void writeNumber(const char* strKey, std::int32_t lngValue);
  std::int32_t readNumber(const char* strKey, std::int32_t lngDefault) const;

  std::int32_t lastReturnCode_ = 0;
  std::string strFailure_;
  ProfileFile* open_ = nullptr;      // of the Change or the Reading
  ProfileChange* change_ = nullptr;  // of the Change
};

}  // namespace qrel
