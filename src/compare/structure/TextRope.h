// A text put together from pieces of others, which it shares with them: longer than memory, quick to cut, join and
// compare.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace qrel {

class TextRope {
 public:
  enum class Mark : std::uint8_t { BlockBegin, BlockEnd, Line, CrLf, Lf };  // "/*", "*/", "--", CR LF, LF

  TextRope() = default;
  explicit TextRope(std::string text);

  std::uint64_t size() const;  // bytes
  // The first `bytes` bytes, and what follows them.
  TextRope front(std::uint64_t bytes) const;
  TextRope behind(std::uint64_t bytes) const;
  // Raises error 7 when the two together are longer than can be counted.
  friend TextRope operator+(const TextRope& a, const TextRope& b);

  // Offset of the first such mark that begins at `from` or later.
  std::optional<std::uint64_t> find(Mark mark, std::uint64_t from = 0) const;
  char at(std::uint64_t offset) const;
  // At most the first `most` bytes, as a string.
  std::string head(std::size_t most) const;
  // Number of blanks (U+0020) at the start.
  std::uint64_t leadingBlanks() const;
  TextRope withoutBlanksAtEnds() const;

  // Both decide by fingerprints of 127 bits to a base drawn anew for each program: two texts that differ pass for the
  // same with a probability of less than 1 to 2 to the power of 64.
  bool same(const TextRope& other) const;
  // The same with every run of blanks, tabs, line ends, vertical tabs and zero characters taken as one blank.
  bool sameWords(const TextRope& other) const;

 private:
  struct Node;
  using Ptr = std::shared_ptr<const Node>;
  explicit TextRope(Ptr root) : root_(std::move(root)) {}

  static Ptr leaf(std::shared_ptr<const std::string> owner, std::string_view text);
  static Ptr node(const Ptr& left, const Ptr& right);
  static Ptr balanced(const Ptr& left, const Ptr& right);
  static Ptr join(const Ptr& left, const Ptr& right);
  static Ptr ofLeaves(const std::shared_ptr<const std::string>& owner, std::size_t begin, std::size_t end);
  static Ptr frontOf(const Ptr& of, std::uint64_t bytes);
  static Ptr behindOf(const Ptr& of, std::uint64_t bytes);
  static std::optional<std::uint64_t> findIn(const Node& in, Mark mark, std::uint64_t from);
  static void appendHead(std::string& text, const Node& of, std::size_t most);

  Ptr root_;
};

}  // namespace qrel
