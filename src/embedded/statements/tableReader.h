// Reading the parts of CREATE TABLE, ALTER TABLE and CREATE INDEX.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "embedded/catalogue/catalogue.h"
#include "embedded/language/lexer.h"

namespace qrel::tsql {

class DdlReader {
 public:
  // `ansiPadding`: what SET ANSI_PADDING says to new columns.
  DdlReader(TokenReader& reader, const Catalogue& catalogue, bool ansiPadding = true)
      : reader_(reader), catalogue_(catalogue), ansiPadding_(ansiPadding) {}

  // The list between CREATE TABLE's brackets, both included, and what follows: ON, TEXTIMAGE_ON, WITH.
  void tableBody(TableDef& table);
  // One column or constraint: an element of that list, and of ALTER TABLE ADD's.
  void tableElement(TableDef& table);
  // A column's name, type and options; its constraints go into the table.
  ColumnDef column(TableDef& table);
  // Refuses a primary key over a column that was read with NULL behind it.
  void checkPrimaryKey(const TableDef& table) const;
  // Gives the computed columns that were read their types; tableBody does so itself.
  void deriveTypes(TableDef& table);
  // PERIOD FOR SYSTEM_TIME (start, end)
  void period(TableDef& table);
  // The list behind WITH of a table and behind ALTER TABLE's SET and REBUILD WITH, brackets included.
  void tableOptions(TableDef& table);
  // From the word CREATE's next one on: [UNIQUE] [CLUSTERED] INDEX name ON table (...) ..., and those of columnstore,
  // XML and spatial indexes.
  IndexDef createIndex(ObjectName& table);
  // One option behind a column's type; false where none stands.
  bool columnOption(TableDef& table, ColumnDef& column);
  // What stands behind an index's WITH, and behind ALTER INDEX's SET.
  void readIndexOptions(IndexDef& index);
  // WHERE and its condition, where they stand next.
  void filterOf(IndexDef& index);
  // Skips an expression by its shape and returns it as written.
  std::string_view expression();

  // DEFAULT ... FOR column, which only ALTER TABLE knows.
  struct DefaultFor {
    std::string name, text, column;
  };
  std::vector<DefaultFor> defaultsFor;
  bool withValues = false;  // DEFAULT ... WITH VALUES was read

  // What was read and isn't kept, by the token behind it.
  struct NotKept {
    std::size_t token = 0;
    std::string reason;
  };
  std::vector<NotKept> notKept;

 private:
  void constraint(TableDef& table, ColumnDef* column);
  void computedColumn(TableDef& table, ColumnDef& column);
  void identity(ColumnDef& column);
  void keyConstraint(TableDef& table, const std::string& name, bool primary, const ColumnDef* column);
  void foreignKey(TableDef& table, const std::string& name, const ColumnDef* column);
  void check(TableDef& table, const std::string& name, const ColumnDef* column);
  void defaultValue(const std::string& name, ColumnDef* column);
  void inlineIndex(TableDef& table, const ColumnDef* column);
  void clusteredWords(IndexDef& index);
  void keyColumns(IndexDef& index);
  void indexTail(IndexDef& index);
  void storageOptions(TableDef& table);
  void versioningOption(TableDef& table);
  void generated(ColumnDef& column);
  Placement placement();
  void tellNotKept(std::string reason);
  bool specialOption(IndexDef& index, const Token& word);
  Properties partitionCompression(const std::string& value);
  void xmlIndex(IndexDef& index);
  void spatialIndex(IndexDef& index);
  void spatialNumbers(IndexDef& index);
  void spatialGrids(IndexDef& index);
  void notForReplication();
  int referentialAction();
  std::vector<std::string> nameList();
  void operand();

  TokenReader& reader_;
  const Catalogue& catalogue_;
  bool ansiPadding_;
  std::vector<std::string> nullWritten_;  // columns
  struct Computed {
    std::string column, text;
  };
  std::vector<Computed> computed_;  // whose types are still to be told
};

}  // namespace qrel::tsql
