#include "platform/store/keyStore.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/store/fileChange.h"
#include "platform/text.h"

namespace qrel {

KeyStore::KeyStore(std::filesystem::path file) : file_(std::move(file)) {}

void KeyStore::check() {
  refresh();
  if (!damage_.empty()) throw RuntimeError(errorNumber::pathAccess, damage_);
}

std::optional<KeyStore::Value> KeyStore::get(std::string_view key, std::string_view name) {
  refresh();
  const std::string path = KeyTree::folded(key);
  const std::string valueName = lowerCase(name);
  if (const auto found = overrides_.find({path, valueName}); found != overrides_.end()) return found->second;
  const auto holder = tree_.keys.find(path);
  if (holder == tree_.keys.end()) return std::nullopt;
  const auto found = holder->second.values.find(valueName);
  if (found == holder->second.values.end()) return std::nullopt;
  return found->second.second;
}

std::vector<std::string> KeyStore::subkeys(std::string_view key) {
  refresh();
  const std::string prefix = KeyTree::folded(key) + "\\";
  std::vector<std::string> names;
  for (auto each = tree_.keys.lower_bound(prefix); each != tree_.keys.end() && each->first.starts_with(prefix);
       ++each) {
    // A spelling has as many backslashes as the path, at other places where folding changed a letter's length.
    std::string_view name = each->second.spelling;
    for (const char c : prefix)
      if (c == '\\') name.remove_prefix(name.find('\\') + 1);
    names.emplace_back(name.substr(0, name.find('\\')));
  }
  std::sort(names.begin(), names.end());
  names.erase(std::unique(names.begin(), names.end()), names.end());
  return names;
}

void KeyStore::set(std::string_view key, std::string_view name, Value value) {
  if (!KeyTree::isWritable(key)) throw RuntimeError(errorNumber::typeMismatch, "That is no name of a settings' key.");
  const std::string valueName = lowerCase(name);
  const auto isThere = [&] {
    const auto holder = tree_.keys.find(KeyTree::folded(key));
    if (holder == tree_.keys.end()) return false;
    const auto found = holder->second.values.find(valueName);
    return found != holder->second.values.end() && found->second.second == value;
  };
  refresh();
  if (damage_.empty() && isThere()) return;
  Change change(*this);
  if (!isThere()) {
    std::pair<std::string, Value>& entry = tree_.keyOf(key).values[valueName];
    if (entry.first.empty()) entry.first = name;
    entry.second = std::move(value);
    dirty_ = true;
  }
  change.commit();
}

void KeyStore::createKey(std::string_view key) {
  if (!KeyTree::isWritable(key)) throw RuntimeError(errorNumber::typeMismatch, "That is no name of a settings' key.");
  Change change(*this);
  if (!tree_.keys.contains(KeyTree::folded(key))) {
    tree_.keyOf(key);
    dirty_ = true;
  }
  change.commit();
}

bool KeyStore::deleteKey(std::string_view key) {
  const std::string path = KeyTree::folded(key);
  const auto canGo = [&] {
    if (!tree_.keys.contains(path)) return false;
    const auto below = tree_.keys.lower_bound(path + "\\");
    return below == tree_.keys.end() || !below->first.starts_with(path + "\\");
  };
  refresh();
  if (!canGo()) return false;
  Change change(*this);
  if (!canGo()) return false;
  tree_.keys.erase(path);
  dirty_ = true;
  change.commit();
  return true;
}

void KeyStore::setOverride(std::string_view key, std::string_view name, Value value) {
  overrides_[{KeyTree::folded(key), lowerCase(name)}] = std::move(value);
}

KeyStore::Change::Change(KeyStore& store) : store_(store), dirtyBefore_(store.dirty_) {
  if (store.changes_ == 0 && !store.file_.empty()) {
    FileLock lock = lockForChange(store.file_, files::Access::OwnerOnly);
    // Whatever the file's times say: nothing of what others wrote is lost by what is written now.
    store.look(true);
    if (!store.damage_.empty())
      throw RuntimeError(errorNumber::pathAccess, store.damage_ + " Until then nothing is written to it.");
    before_ = store.tree_;
    store.lock_ = std::move(lock);
  } else {
    before_ = store.tree_;
  }
  ++store.changes_;
}

KeyStore::Change::~Change() {
  if (!committed_) {
    store_.tree_ = std::move(before_);
    store_.dirty_ = dirtyBefore_;
  }
  if (--store_.changes_ > 0) return;
  store_.dirty_ = false;
  store_.lock_.reset();
}

void KeyStore::Change::commit() {
  if (store_.changes_ == 1 && store_.dirty_) store_.write();
  committed_ = true;
}

void KeyStore::refresh() {
  if (file_.empty() || readings_ > 0 || changes_ > 0) return;
  if (!std::exchange(tidied_, true)) removeLeftovers(file_);
  look(false);
}

void KeyStore::look(bool always) {
  system::FileFacts facts;
  if (const system::Error error = system::look(file_, facts); error != 0) {
    const bool missing = error == ENOENT || error == ENOTDIR;
    damage_ = missing ? ""
                      : "'" + file_.string() + "' cannot be read: " + std::generic_category().message(error) +
                            ". Make it readable and try again.";
    // A file that has been taken away takes its values along.
    if (missing) tree_ = {};
    read_.reset();
    return;
  }
  if (always || read_ != facts) readFile(facts);
}

void KeyStore::readFile(const system::FileFacts& facts) {
  read_.reset();
  std::string text;
  try {
    text = files::readWholeFile(file_, mostStoreBytes);
  } catch (const RuntimeError& error) {
    damage_ = error.number == files::fileNotFound ? "" : error.description;
    if (damage_.empty()) tree_ = {};
    return;
  }
  std::string damage;
  tree_ = KeyTree::parse(text, damage);
  damage_ = damage.empty() ? ""
                           : "'" + file_.string() + "' cannot be read: " + damage +
                                 ". Mend that line, or move the file away to begin with new settings.";
  read_ = facts;
}

void KeyStore::write() {
  if (file_.empty()) return;
  const std::string text = tree_.format();
  if (text.size() > mostStoreBytes)
    throw RuntimeError(errorNumber::pathAccess, "'" + file_.string() + "' cannot be written: it would be too large.");
  // Whether it comes to the old file or the new one, it is looked at again.
  read_.reset();
  files::writeAtomically(file_, text, files::Access::OwnerOnly);
}

}  // namespace qrel
