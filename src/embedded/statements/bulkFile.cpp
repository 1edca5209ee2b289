#include "embedded/statements/bulkFile.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  const char lower = static_cast<char>(c | 0x20);
  return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

}  // namespace

std::string terminatorText(std::string_view written) {
  std::string text;
  if (written.size() > 2 && equalNoCase(written.substr(0, 2), "0x") && written.size() % 2 == 0) {
    for (std::size_t i = 2; i < written.size(); i += 2) {
      const int high = hexDigit(written[i]), low = hexDigit(written[i + 1]);
      if (high < 0 || low < 0) return std::string(written);
      text += static_cast<char>(high * 16 + low);
    }
    return text;
  }
  for (std::size_t i = 0; i < written.size(); ++i) {
    static constexpr std::string_view letters = "tnr\\0";
    const std::size_t found =
        written[i] == '\\' && i + 1 < written.size() ? letters.find(written[i + 1]) : std::string_view::npos;
    if (found == std::string_view::npos) {
      text += written[i];
    } else {
      text += std::string_view("\t\n\r\\\0", 5)[found];
      ++i;
    }
  }
  return text;
}

std::string decodeBulkFile(const std::string& bytes, const BulkFormat& format) {
  if (format.wide && !bytes.starts_with("\xFF\xFE") && !bytes.starts_with("\xFE\xFF"))
    return decodeText("\xFF\xFE" + bytes);
  const bool marked =
      bytes.starts_with("\xEF\xBB\xBF") || bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
  const bool western = format.codePage == "ACP" || format.codePage == "1252";
  return western && !marked ? fromCodePage(bytes) : decodeText(bytes);
}

BulkRows::BulkRows(std::string_view text, BulkFormat format) : text_(text), format_(std::move(format)) {
  // A file that has lost its carriage returns on its way.
  if (format_.rowTerminator == "\r\n" && text_.find("\r\n") == std::string_view::npos) format_.anyLineEnd = true;
}

std::size_t BulkRows::rowEnd(std::size_t from, std::size_t& behind) const {
  const std::string_view mark = format_.anyLineEnd ? "\n" : std::string_view(format_.rowTerminator);
  const std::size_t found = text_.find(mark, from);
  if (found == std::string_view::npos) return behind = text_.size();
  behind = found + mark.size();
  return format_.anyLineEnd && found > from && text_[found - 1] == '\r' ? found - 1 : found;
}

bool BulkRows::next(std::size_t columns, std::vector<std::string>& fields) {
  fields.clear();
  if (at_ >= text_.size()) return false;
  ++row_;
  if (format_.csv) {
    readQuoted(fields);
    return true;
  }
  std::size_t behind = 0;
  const std::size_t end = rowEnd(at_, behind);
  std::string_view row = text_.substr(at_, end - at_);
  at_ = behind;
  while (fields.size() + 1 < columns) {
    const std::size_t found = row.find(format_.fieldTerminator);
    if (found == std::string_view::npos) break;
    fields.emplace_back(row.substr(0, found));
    row.remove_prefix(found + format_.fieldTerminator.size());
  }
  fields.emplace_back(row);
  return true;
}

// A quoted field may hold terminators and, doubled, its quotes.
void BulkRows::readQuoted(std::vector<std::string>& fields) {
  for (;;) {
    std::string field;
    if (text_.substr(at_).starts_with(format_.quote)) {
      at_ += format_.quote.size();
      while (at_ < text_.size()) {
        const std::size_t found = std::min(text_.find(format_.quote, at_), text_.size());
        field += text_.substr(at_, found - at_);
        at_ = std::min(found + format_.quote.size(), text_.size());
        if (!text_.substr(at_).starts_with(format_.quote)) break;
        field += format_.quote;
        at_ += format_.quote.size();
      }
    }
    std::size_t behind = 0;
    const std::size_t end = rowEnd(at_, behind);
    const std::size_t found = text_.substr(at_, end - at_).find(format_.fieldTerminator);
    const std::size_t fieldEnd = found == std::string_view::npos ? end : at_ + found;
    field += text_.substr(at_, fieldEnd - at_);
    fields.push_back(std::move(field));
    at_ = found == std::string_view::npos ? behind : fieldEnd + format_.fieldTerminator.size();
    if (found == std::string_view::npos) return;
  }
}

}  // namespace qrel::tsql
