// The temporary tables of a session and the table variables of a batch. Their rows lie in temporary tables of SQLite's;
// what they are is kept here and in no catalogue, so that nothing of them is left when the session ends.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/catalogue/catalogue.h"

namespace qrel::tsql {

struct TemporaryTable {
  TableDef def;
  std::shared_ptr<const TableInfo> info;
  int level = 0;
};

// Whether a name is one of theirs: #t, ##t, or @t with variableMark in front.
bool isTemporaryName(std::string_view name);

class TemporaryTables {
 public:
  // Null when there is none of this name. A rollback takes a table away, or brings one back, without a word: what
  // counts is whether SQLite has it.
  const TemporaryTable* find(sqlite::Database& database, std::string_view name) const;
  // Notes one that was made, or one that stands for another of its name from now on.
  void add(TemporaryTable table);
  // A name under which SQLite keeps the next one.
  std::string freshStorage(std::string_view name);
  // A text that is run within a batch sees the tables around it but not the table variables, and takes its own along.
  void enter() { ++level_; }
  void leave(sqlite::Database& database);
  void endBatch(sqlite::Database& database);
  int level() const { return level_; }

 private:
  template <typename Ends>
  void drop(sqlite::Database& database, Ends ends);

  std::vector<TemporaryTable> tables_;  // also those that were dropped
  int level_ = 0;
};

}  // namespace qrel::tsql
