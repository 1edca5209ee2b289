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
  DdlReader(TokenReader& reader, const Catalogue& catalogue) : reader_(reader), catalogue_(catalogue) {}

  // The list between CREATE TABLE's brackets, both included, and what follows: ON, TEXTIMAGE_ON, WITH.
  void tableBody(TableDef& table);
  // One column or constraint: an element of that list, and of ALTER TABLE ADD's.
  void tableElement(TableDef& table);
  // A column's name, type and options; its constraints go into the table.
  ColumnDef column(TableDef& table);
  // Refuses a primary key over a column that was read with NULL behind it.
  void checkPrimaryKey(const TableDef& table) const;
  // From the word CREATE's next one on: [UNIQUE] [CLUSTERED] INDEX name ON table (...) ...
  IndexDef createIndex(ObjectName& table);
  // One option behind a column's type; false where none stands.
  bool columnOption(TableDef& table, ColumnDef& column);
  // What stands behind an index's WITH, and behind ALTER INDEX's SET.
  void readIndexOptions(IndexDef& index);
  // Skips an expression by its shape and returns it as written.
  std::string_view expression();

  // DEFAULT ... FOR column, which only ALTER TABLE knows.
  struct DefaultFor {
    std::string name, text, column;
  };
  std::vector<DefaultFor> defaultsFor;
  bool withValues = false;  // DEFAULT ... WITH VALUES was read
  std::string notKept;      // what of the table was read and isn't kept; empty: nothing

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
  void storageOptions();
  void notForReplication();
  int referentialAction();
  std::vector<std::string> nameList();
  void operand();
  TypeRef inferType(std::size_t begin, std::size_t end, const TableDef& table) const;

  TokenReader& reader_;
  const Catalogue& catalogue_;
  std::vector<std::string> nullWritten_;  // columns
};

}  // namespace qrel::tsql
