// A text that statements are read from.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "embedded/language/lexer.h"
#include "embedded/language/structure.h"

namespace qrel::tsql {

// A batch, or a text that a batch runs by EXEC, of which a piece lies ready as tokens: most often the whole. Positions
// are those of the piece's tokens.
struct BatchText {
  BatchText() : tokens(1), reader({}, tokens) {}
  BatchText(const BatchText&) = delete;
  BatchText& operator=(const BatchText&) = delete;

  void readPiece(std::string_view piece) {
    tokens = lex(piece);
    reader = TokenReader(piece, tokens);
    structure = Structure(tokens);
  }
  // The token behind the piece's last one.
  std::size_t end() const { return tokens.size() - 1; }
  // The line that a token is told with, 1-based in the batch.
  std::size_t lineOf(std::size_t token) const { return fixedLine != 0 ? fixedLine : tokens[token].line + linesBefore; }

  std::string_view batch;  // the whole
  std::vector<Token> tokens;
  TokenReader reader;
  Structure structure;
  std::size_t pieceStart = 0;   // offset of the piece in the batch
  std::size_t linesBefore = 0;  // the piece
  std::size_t fixedLine = 0;    // not 0: that of the EXEC which runs this text; its own lines stand in no file
};

}  // namespace qrel::tsql
