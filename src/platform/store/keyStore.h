// The settings' tree of keys and values in one file, with the operations of a registry.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace qrel {

// Keys are paths such as "Software\Qrel\Servers"; keys and value names compare without case and keep the spelling of
// their first writing. The file is text: a line "[key]", then a line `name = number` or `name = "text"` per value, with
// \\, \", \n, \r, \0 and \xHH escaped; a name that would be misread stands in quotes too. It is read anew at each
// operation when it has changed on disk and written whole and atomically, readable by its owner alone. A store without
// a file lives in memory.
class KeyStore {
 public:
  KeyStore() = default;
  // `file` need not exist yet. Lines that can't be read are left out of the tree, and kept in the file's next writing
  // as they stand.
  explicit KeyStore(std::filesystem::path file);

  using Value = std::variant<std::int32_t, std::string>;

  // Empty when key or value is missing.
  std::optional<Value> get(std::string_view key, std::string_view name);
  // False when the file can't be written; the tree then holds the value for this run.
  bool set(std::string_view key, std::string_view name, Value value);
  bool createKey(std::string_view key);
  // False when there is no such key or it has subkeys.
  bool deleteKey(std::string_view key);

  // Values set here win over those of the file and are never written: for one run's options.
  void setOverride(std::string_view key, std::string_view name, Value value);

 private:
  struct Key {
    std::string spelling;
    std::map<std::string, std::pair<std::string, Value>> values;  // by lower-case name: spelling and value
  };
  void refresh();
  bool write();
  void parse(std::string_view text);
  bool parseValue(std::string_view line, Key& key);
  std::string format() const;
  Key& keyOf(std::string_view key);

  std::filesystem::path file_;
  std::filesystem::file_time_type readTime_{};
  std::uintmax_t readSize_ = 0;
  bool wasThere_ = false;            // the file, when it was last looked at
  bool blocked_ = false;             // it is there and can't be read: it isn't written either
  std::map<std::string, Key> keys_;  // by lower-case path
  std::vector<std::string> unreadable_;
  std::map<std::pair<std::string, std::string>, Value> overrides_;
};

}  // namespace qrel
