// The settings' tree of keys and values in one file, with the operations of a registry.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/fileLock.h"
#include "platform/store/keyTree.h"
#include "platform/system.h"

namespace qrel {

// Keys are paths such as "Software\Qrel\Servers"; keys and value names compare without case and keep the spelling of
// their first writing. The file (keyTree.h has its text) is read anew at each operation when it has changed on disk,
// and written whole and atomically, a new one readable by its owner alone. A file that is there and can't be read in
// full is never written: its values are those of the lines that can be read. A store without a file lives in memory.
//
// What changes the store raises RuntimeError, with a sentence for the user, when the change can't be kept; everything
// is then as it was before. Values that are there already are not written again.
class KeyStore {
 public:
  KeyStore() = default;
  // `file` need not exist yet.
  explicit KeyStore(std::filesystem::path file);

  using Value = KeyTree::Value;

  // Raises RuntimeError when the file is there and can't be read in full.
  void check();

  // Empty when key or value is missing.
  std::optional<Value> get(std::string_view key, std::string_view name);
  // The names of the keys directly below a key, each once.
  std::vector<std::string> subkeys(std::string_view key);

  void set(std::string_view key, std::string_view name, Value value);
  void createKey(std::string_view key);
  // False when there is no such key or it has subkeys.
  bool deleteKey(std::string_view key);

  // Values set here win over those of the file and are never written: for one run's options.
  void setOverride(std::string_view key, std::string_view name, Value value);

  // Everything that is set, created and deleted from here to commit() is one change: written at once or not at all,
  // with the changes of other processes before it or behind it. Scopes nest, and the outermost writes; one that ends
  // without commit() takes its own part back. Not for long: other processes wait for its end.
  class Change {
   public:
    // Raises RuntimeError when the file can't be changed.
    explicit Change(KeyStore& store);
    ~Change();
    void commit();
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

   private:
    KeyStore& store_;
    KeyTree before_;
    bool dirtyBefore_;
    bool committed_ = false;
  };

  // Several values read as they stood together at one moment: while it lives, what other processes write isn't seen.
  class Reading {
   public:
    explicit Reading(KeyStore& store) : store_(store) {
      store.refresh();
      ++store.readings_;
    }
    ~Reading() { --store_.readings_; }
    Reading(const Reading&) = delete;
    Reading& operator=(const Reading&) = delete;

   private:
    KeyStore& store_;
  };

 private:
  void refresh();
  // Reads the file if it isn't the one that was read last.
  void look(bool always);
  void readFile(const system::FileFacts& facts);
  void write();

  std::filesystem::path file_;
  KeyTree tree_;
  std::optional<system::FileFacts> read_;  // which file was read, and in which state
  std::string damage_;                     // why the file that is there can't be read in full: a sentence
  bool tidied_ = false;
  int readings_ = 0;
  int changes_ = 0;
  bool dirty_ = false;
  std::optional<FileLock> lock_;
  std::map<std::pair<std::string, std::string>, Value> overrides_;
};

}  // namespace qrel
