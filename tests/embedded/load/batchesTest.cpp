#include <gtest/gtest.h>

#include "embedded/language/scan.h"
#include "embedded/load/loader.h"

namespace qrel {
namespace {

// "line*count:text" of every batch, parted by "~".
std::string batchesOf(std::string_view script) {
  std::string text;
  for (const Batch& batch : splitBatches(script)) {
    text += std::to_string(batch.firstLine) + "*" + std::to_string(batch.count) + ":" + std::string(batch.text) + "~";
  }
  return text;
}

TEST(SplitBatches, CutsAtGoLinesOnly) {
  const struct {
    const char* script;
    const char* batches;
  } cases[] = {
      {"", ""},
      {"GO\nGO\n", ""},
      {"a", "1*1:a~"},
      {"a\nGO\nb\n", "1*1:a\n~3*1:b\n~"},
      {"a\r\n  go ; -- next\r\nb", "1*1:a\r\n~3*1:b~"},
      {"a\rGo\rb", "1*1:a\r~3*1:b~"},
      {"a\nGO 3\nb\ngo 0\nc", "1*3:a\n~3*0:b\n~5*1:c~"},
      {"a\nGOTO x\nGO x\nGO5\nb", "1*1:a\nGOTO x\nGO x\nGO5\nb~"},
      {"'x\nGO\ny'\nGO\nb", "1*1:'x\nGO\ny'\n~5*1:b~"},
      {"[x\nGO\ny]]\nGO\n]\nGO\nb", "1*1:[x\nGO\ny]]\nGO\n]\n~7*1:b~"},
      {"/* /* */\nGO\n*/\nGO\nb", "1*1:/* /* */\nGO\n*/\n~5*1:b~"},
      {"-- it's\nGO\nb -- \"\nGO\nc", "1*1:-- it's\n~3*1:b -- \"\n~5*1:c~"},
      // What is never closed costs the part up to the next GO line alone, wherever the marks behind it stand.
      {"a\nGO\n'open\nGO\n", "1*1:a\n~3*1:'open\n~"},
      {"a\nGO\n/* open\nGO\nb", "1*1:a\n~3*1:/* open\n~5*1:b~"},
      {"/*\nGO\n*/\nGO\nb [\nGO\n'c'\nGO\nd", "1*1:/*\nGO\n*/\n~5*1:b [\n~7*1:'c'\n~9*1:d~"},
      {"it's\nGO\n'b'\nGO\n'c'\nGO\nd", "1*1:it's\n~3*1:'b'\n~5*1:'c'\n~7*1:d~"},
      {"a\nGO\n/* /* */\nGO\n-- '\nb /* c */", "1*1:a\n~3*1:/* /* */\n~5*1:-- '\nb /* c */~"},
      {"a\nGO\nb 'open", "1*1:a\n~3*1:b 'open~"},
  };
  for (const auto& each : cases) EXPECT_EQ(batchesOf(each.script), each.batches) << each.script;
}

// Long batches are read in pieces; a piece must never part what belongs together.
TEST(FindCut, OnlyBetweenWholeInserts) {
  const struct {
    const char* text;  // "|" marks where the cut is to be
  } cases[] = {
      {"INSERT a VALUES (1)\n|INSERT b VALUES (2)"},
      {"INSERT a VALUES (1), (2);\n  |INSERT b VALUES (2)"},
      {"INSERT a SELECT 1 FROM (b)\nINSERT b VALUES (2)\n|INSERT c VALUES (3)"},
      {"IF x = (1)\nINSERT a VALUES (1)\nELSE\nINSERT b VALUES (2);\n|INSERT c VALUES (3)"},
      {"BEGIN\nINSERT a VALUES (1);\nINSERT b VALUES (2);\nEND;\n|INSERT c VALUES (3)"},
      {"BEGIN TRAN;\n|INSERT b VALUES (2)"},
      {"SELECT CASE WHEN 1 THEN 2 END;\n|INSERT b VALUES (2)"},
      {"INSERT a VALUES ('\nINSERT'); -- ;\n/*;\nINSERT */\n|INSERT b VALUES (2)"},
      {"MERGE a USING b ON (c) WHEN NOT MATCHED THEN\nINSERT (x) VALUES (1);\n|INSERT b VALUES (2)"},
  };
  for (const auto& each : cases) {
    std::string text = each.text;
    const std::size_t wanted = text.find('|');
    text.erase(wanted, 1);
    EXPECT_EQ(tsql::findCut(text, 1), wanted) << each.text;
  }
}

}  // namespace
}  // namespace qrel
