// Rows of a result held by column: eight bytes a cell, with all texts in one arena of large blocks. Nothing is
// allocated per cell.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/data/largePages.h"
#include "platform/data/provider.h"
#include "platform/data/value.h"
#include "platform/textBlocks.h"

namespace qrel {

// Filled row by row: each row gets one cell per column, in column order, and counts once its last column has its cell.
// A column of type Empty takes the type of its first value. A column that gets a value of another type becomes Text,
// and the values that it holds are rewritten in their text form.
class ColumnStore {
 public:
  explicit ColumnStore(const std::vector<ColumnInfo>& columns);
  explicit ColumnStore(const std::vector<DataType>& types);

  void appendNull(std::size_t column);
  // `type` is Integer or Boolean.
  void appendInteger(std::size_t column, std::int64_t value, DataType type = DataType::Integer);
  void appendDouble(std::size_t column, double value);
  // Decimal, Date and Guid come in their text form (value.h), Binary as raw bytes. The bytes are copied.
  void appendText(std::size_t column, DataType type, std::string_view bytes);

  std::size_t columnCount() const { return columns_.size(); }
  std::size_t rowCount() const { return columns_.empty() ? 0 : columns_.back().cells.size(); }
  // What the column holds now; Empty while it has had Nulls only.
  DataType type(std::size_t column) const { return columns_[column].type; }
  // Column and row are 0-based and must exist. The text stays where it is until clear or the end of the store, except
  // in a column that becomes Text.
  Cell cell(std::size_t column, std::size_t row) const;
  bool isNull(std::size_t column, std::size_t row) const;

  // Drops all rows, goes back to the types given at first and keeps the memory for the next rows.
  void clear();
  // Bytes held for cells and texts.
  std::size_t memoryUsed() const;

 private:
  union Slot {
    std::int64_t integer;
    double real;
    const char* text;  // its length and its bytes, in the arena
  };
  // Slots in pieces, so that a long column is never copied to grow. The first piece grows like a vector: most results
  // are short.
  class Slots {
   public:
    std::size_t size() const { return size_; }
    Slot& operator[](std::size_t row) { return pieces_[row / pieceLength][row % pieceLength]; }
    const Slot& operator[](std::size_t row) const { return pieces_[row / pieceLength][row % pieceLength]; }
    void push_back(Slot slot) {
      if (size_ % pieceLength == 0 && size_ / pieceLength == pieces_.size()) {
        pieces_.emplace_back();
        if (size_ > 0) pieces_.back().reserve(pieceLength);
      }
      pieces_[size_ / pieceLength].push_back(slot);
      ++size_;
    }
    // Keeps the memory.
    void clear() {
      for (Piece& piece : pieces_) piece.clear();
      size_ = 0;
    }
    std::size_t capacity() const {
      std::size_t cells = 0;
      for (const Piece& piece : pieces_) cells += piece.capacity();
      return cells;
    }

   private:
    using Piece = std::vector<Slot, LargePages<Slot>>;
    static constexpr std::size_t pieceLength = std::size_t{1} << 18;
    std::vector<Piece> pieces_;
    std::size_t size_ = 0;
  };
  struct Column {
    DataType declared = DataType::Empty;
    DataType type = DataType::Empty;
    Slots cells;
    std::vector<bool> nulls;       // no longer than up to the last Null
    const char* latest = nullptr;  // the last text: the next row often has the same
  };

  void becomeText(Column& column);
  void pushText(Column& column, std::string_view bytes);
  static Cell cellOf(const Column& column, std::size_t row);

  std::vector<Column> columns_;
  TextBlocks texts_;
};

}  // namespace qrel
