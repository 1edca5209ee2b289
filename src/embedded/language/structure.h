// How the tokens of a text hang together, told by its words alone: which END closes which BEGIN or CASE, where labels
// stand, where a statement ends that can't be read.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/language/lexer.h"

namespace qrel::tsql {

class Structure {
 public:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);
  struct Label {
    std::string name;          // in lower case
    std::size_t at = 0;        // its token
    std::size_t block = none;  // the BEGIN of the block that it stands in
  };

  Structure() = default;
  // `tokens` must outlive it.
  explicit Structure(const std::vector<Token>& tokens);

  // The END that closes the BEGIN or CASE at a token; none when nothing does.
  std::size_t endOf(std::size_t opening) const { return ends_[opening]; }
  bool opensBlockAt(std::size_t at) const;
  const Label* label(std::string_view lowerName) const;
  // The BEGIN of the CATCH that follows the END of a TRY; none when there is none, or nothing closes it.
  std::size_t catchBehind(std::size_t close) const;
  // Whether CREATE or ALTER of a procedure, view, function or trigger begins at a token.
  bool isModuleAt(std::size_t at) const;
  // How deep brackets, CASE and runs of signs and NOTs go between two tokens.
  int nestingOf(std::size_t begin, std::size_t end) const;

  // Where the statement at `start` ends that can't be read: at a semicolon, at a line that begins with another
  // statement's word, at `limit` at the latest.
  std::size_t guessEnd(std::size_t start, std::size_t limit) const;
  // The same for a statement that holds no other statement's words: the first of them ends it, wherever it stands.
  std::size_t plainEnd(std::size_t start, std::size_t limit) const;
  // The first CREATE, ALTER or DROP behind the first token of [start, end), outside brackets; none when there is none.
  std::size_t buriedChange(std::size_t start, std::size_t end) const;

 private:
  bool closes(std::size_t at) const;

  const std::vector<Token>* tokens_ = nullptr;
  std::vector<std::size_t> ends_;
  std::vector<Label> labels_;
};

}  // namespace qrel::tsql
