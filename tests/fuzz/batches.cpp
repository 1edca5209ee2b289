// The lexer, the structure of a text and a script's batches: nothing is run. What sqlcmd's commands do
// to it belongs to scripts.cpp, since they read files.
#include "embedded/load/batches.h"
#include "embedded/language/structure.h"
#include "embedded/translate/translator.h"
#include "tests/fuzz/fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qrel;
  fuzzed([&] {
    for (const Batch& batch : splitBatches(textOf(data, size))) {
      const auto tokens = tsql::lex(batch.text);
      const tsql::Structure structure(tokens);
      for (std::size_t at = 0; at + 1 < tokens.size();)
        at = std::max(structure.guessEnd(at, tokens.size() - 1), at + 1);
      if (batch.text.size() < 4096) (void)tsql::storedExpression(batch.text, 11);
    }
  });
  return 0;
}
