// Keys and values, and the text that they are kept in.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace qrel {

// The text is UTF-8: a line "[key]", then a line `name = number` or `name = "text"` per value, with \\, \", \n, \r, \0
// and \xHH escaped; a name that would be misread stands in quotes too. Lines that begin with # or ; are notes, and stay
// with their key.
struct KeyTree {
  using Value = std::variant<std::int32_t, std::string>;
  struct Key {
    std::string spelling;
    std::vector<std::string> notes;
    std::map<std::string, std::pair<std::string, Value>> values;  // by lower-case name: spelling and value
  };

  std::vector<std::string> notes;   // above all keys
  std::map<std::string, Key> keys;  // by lower-case path

  // The path under which a key is found: lower case, without backslashes at its ends.
  static std::string folded(std::string_view key);
  // Whether a key's path can stand in the text.
  static bool isWritable(std::string_view key);
  // The key, made when it isn't there.
  Key& keyOf(std::string_view key);

  // Reads a text. `damage` receives what is wrong with its first line that can't be read, with the line's number; the
  // lines that can be read are in the tree then too. Empty: the whole text was read.
  static KeyTree parse(std::string_view text, std::string& damage);
  std::string format() const;
};

}  // namespace qrel
