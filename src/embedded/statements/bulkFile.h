// The rows of a text file as BULK INSERT reads them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qrel::tsql {

struct BulkFormat {
  std::string fieldTerminator = "\t";
  std::string rowTerminator = "\n";
  // A line end of either kind: what '\n' means.
  bool anyLineEnd = true;
  bool csv = false;
  std::string quote = "\"";  // of csv
  bool wide = false;         // UTF-16
  std::string codePage;      // in upper case; empty: told by the file itself
};

// "\t", "\n", "\r", "\\", "\0" and "0x0A" as the bytes that they stand for.
std::string terminatorText(std::string_view written);

// A file's bytes as UTF-8.
std::string decodeBulkFile(const std::string& bytes, const BulkFormat& format);

class BulkRows {
 public:
  // `text` must outlive it.
  BulkRows(std::string_view text, BulkFormat format);
  // Reads the next row; false behind the last one. With `columns` fields at most, the last one takes the rest of the
  // row in, terminators and all, as on a server; rows of csv have as many as they have.
  bool next(std::size_t columns, std::vector<std::string>& fields);
  std::int64_t row() const { return row_; }  // 1-based, of the row that was read last

 private:
  std::size_t rowEnd(std::size_t from, std::size_t& behind) const;
  void readQuoted(std::vector<std::string>& fields);

  std::string_view text_;
  BulkFormat format_;
  std::size_t at_ = 0;
  std::int64_t row_ = 0;
};

}  // namespace qrel::tsql
