// Reading indexes and what belongs to them.
#include <algorithm>
#include <array>
#include <charconv>

#include "embedded/language/words.h"
#include "embedded/statements/tableReader.h"
#include "embedded/translate/translator.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// What an index option of a script is called in the views, and the value that is a server's own: such a one isn't kept.
struct IndexOption {
  std::string_view word, property, usual;
};
constexpr std::array indexOptions = std::to_array<IndexOption>({
    {"FILLFACTOR", "fill_factor", "0"},
    {"PAD_INDEX", "is_padded", "0"},
    {"IGNORE_DUP_KEY", "ignore_dup_key", "0"},
    {"ALLOW_ROW_LOCKS", "allow_row_locks", "1"},
    {"ALLOW_PAGE_LOCKS", "allow_page_locks", "1"},
    {"STATISTICS_NORECOMPUTE", "no_recompute", "0"},
    {"DATA_COMPRESSION", "data_compression_desc", "NONE"},
    {"OPTIMIZE_FOR_SEQUENTIAL_KEY", "optimize_for_sequential_key", "0"},
    {"STATISTICS_INCREMENTAL", "is_incremental", "0"},
    {"COMPRESSION_DELAY", "compression_delay", "0"},
    {"BUCKET_COUNT", "bucket_count", "0"},
    {"CELLS_PER_OBJECT", "cells_per_object", "0"},
});

// Those that say how the work is to be done, and leave nothing behind.
constexpr std::array workOptions = std::to_array<std::string_view>(
    {"DROP_EXISTING", "SORT_IN_TEMPDB", "ONLINE", "MAXDOP", "RESUMABLE", "MAX_DURATION", "LOB_COMPACTION"});

// False: it isn't kept.
bool keepIndexOption(IndexDef& index, const Token& word, const std::string& value) {
  if (word.is("DROP_EXISTING")) index.dropExisting = value == "1";
  for (const IndexOption& option : indexOptions) {
    if (!word.is(option.word)) continue;
    index.properties.push_back({std::string(option.property), value == option.usual ? std::string() : value});
    return true;
  }
  return std::any_of(workOptions.begin(), workOptions.end(), [&](std::string_view each) { return word.is(each); });
}

// "ON" and "OFF" are "1" and "0", as in the views; a word without "=" is on.
std::string optionValue(TokenReader& reader) {
  if (!reader.acceptSymbol("=")) return "1";
  const Token& value = reader.next();
  return value.is("ON") ? "1" : value.is("OFF") ? "0" : upperCase(value.raw);
}

}  // namespace

void DdlReader::clusteredWords(IndexDef& index) {
  for (;;) {
    if (reader_.acceptWord("UNIQUE")) {
      index.unique = true;
    } else if (reader_.acceptWord("CLUSTERED")) {
      index.clustered = true;
    } else if (reader_.acceptWord("NONCLUSTERED")) {
      index.clustered = false;
    } else if (reader_.acceptWord("HASH")) {
      index.properties.push_back({"is_hash", "1"});
    } else {
      return;
    }
  }
}

void DdlReader::keyColumns(IndexDef& index) {
  reader_.expectSymbol("(");
  do {
    index.columns.push_back(reader_.expectIdentifier());
    index.descending.push_back(reader_.acceptWord("DESC"));
    if (!index.descending.back()) reader_.acceptWord("ASC");
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
}

void DdlReader::inlineIndex(TableDef& table, const ColumnDef* column) {
  reader_.expectWord("INDEX");
  IndexDef index;
  index.name = reader_.expectIdentifier();
  clusteredWords(index);
  if (reader_.acceptWord("COLUMNSTORE")) index.kind = KeyKind::Columnstore;
  if (index.kind == KeyKind::Columnstore && !reader_.peek().isSymbol("(")) {
    // all columns
  } else if (!column || reader_.peek().isSymbol("(")) {
    keyColumns(index);
  } else {
    index.columns = {column->name};
    index.descending = {false};
  }
  indexTail(index);
  table.indexes.push_back(std::move(index));
}

void DdlReader::filterOf(IndexDef& index) {
  if (!reader_.peek().is("WHERE")) return;
  reader_.next();
  const std::size_t begin = reader_.position();
  for (;;) {
    const Token& part = reader_.peek();
    if (part.isSymbol("(")) {
      reader_.skipParentheses();
      continue;
    }
    if (part.kind == TokenKind::End || part.isSymbol(";") || part.isSymbol(",") || part.isSymbol(")") ||
        part.is("WITH") || part.is("ON") || startsStatement(part))
      break;
    reader_.next();
  }
  index.filter = storedExpression(reader_.sourceBetween(begin, reader_.position()), catalogue_.serverMajor(), true);
}

void DdlReader::indexTail(IndexDef& index) {
  for (;;) {
    const Token& token = reader_.peek();
    if (token.is("INCLUDE")) {
      reader_.next();
      index.included = nameList();
    } else if (token.is("WHERE")) {
      filterOf(index);
    } else if (token.is("WITH") && !reader_.peek(1).is("VALUES") && !reader_.peek(1).is("CHECK") &&
               !reader_.peek(1).is("NOCHECK")) {
      reader_.next();
      readIndexOptions(index);
    } else if (token.is("ON") && !reader_.peek(1).is("DELETE") && !reader_.peek(1).is("UPDATE")) {
      reader_.next();
      index.placement = placement();
    } else if (token.is("FILESTREAM_ON")) {
      reader_.next();
      placement();
      tellNotKept("FILESTREAM_ON of an index isn't kept");
    } else if (token.is("ORDER") && index.kind == KeyKind::Columnstore) {
      reader_.next();
      nameList();
      tellNotKept("the order of a columnstore index isn't kept");
    } else {
      return;
    }
  }
}

// A list in brackets, or the old form "FILLFACTOR = 80, PAD_INDEX".
void DdlReader::readIndexOptions(IndexDef& index) {
  const bool list = reader_.acceptSymbol("(");
  do {
    const Token& word = reader_.peek();
    reader_.expectIdentifier();
    if (specialOption(index, word)) continue;
    const std::string value = optionValue(reader_);
    if (word.is("DATA_COMPRESSION") && reader_.peek().is("ON") && reader_.peek(1).is("PARTITIONS")) {
      for (Property& each : partitionCompression(value)) index.properties.push_back(std::move(each));
    } else if (!keepIndexOption(index, word, value)) {
      tellNotKept("the index's option " + upperCase(word.raw) + " isn't kept");
    }
    while (list && !reader_.peek().isSymbol(",") &&
           !reader_.peek().isSymbol(")")) {  // (WAIT_AT_LOW_PRIORITY ...), 5 MINUTES
      if (reader_.peek().isSymbol("(")) {
        reader_.skipParentheses();
      } else if (reader_.next().kind == TokenKind::End) {
        return;
      }
    }
  } while (reader_.acceptSymbol(","));
  if (list) reader_.expectSymbol(")");
}

// "ON PARTITIONS (1, 3 TO 5)": a property for each.
Properties DdlReader::partitionCompression(const std::string& value) {
  constexpr int mostPartitions = 15000;
  Properties properties;
  for (const char* word : {"ON", "PARTITIONS"}) reader_.expectWord(word);
  const auto number = [&] {
    const Token& token = reader_.next();
    int found = 0;
    std::from_chars(token.raw.data(), token.raw.data() + token.raw.size(), found);
    if (token.kind != TokenKind::Number || found < 1 || found > mostPartitions)
      throw NotUnderstood{"a partition's number is expected", token.line};
    return found;
  };
  reader_.expectSymbol("(");
  do {
    const int first = number();
    const int last = reader_.acceptWord("TO") ? number() : first;
    for (int i = first; i <= last; ++i) properties.push_back({"partition_compression_" + std::to_string(i), value});
  } while (reader_.acceptSymbol(","));
  reader_.expectSymbol(")");
  return properties;
}

// BOUNDING_BOX = (...) and GRIDS = (...) of a spatial index.
bool DdlReader::specialOption(IndexDef& index, const Token& word) {
  if (!word.is("BOUNDING_BOX") && !word.is("GRIDS")) return false;
  reader_.expectSymbol("=");
  reader_.expectSymbol("(");
  if (word.is("GRIDS")) {
    spatialGrids(index);
  } else {
    spatialNumbers(index);
  }
  reader_.expectSymbol(")");
  return true;
}

// By place or by name: XMIN, YMIN, XMAX, YMAX.
void DdlReader::spatialNumbers(IndexDef& index) {
  static constexpr std::array<std::string_view, 4> names{"xmin", "ymin", "xmax", "ymax"};
  std::size_t place = 0;
  do {
    std::string name(names[std::min<std::size_t>(place++, 3)]);
    if (reader_.peek().kind == TokenKind::Word) {
      name = lowerCase(reader_.next().raw);
      reader_.expectSymbol("=");
    }
    std::string number = reader_.acceptSymbol("-") ? "-" : "";
    number += reader_.next().raw;
    index.properties.push_back({"bounding_box_" + name, number});
  } while (reader_.acceptSymbol(","));
}

// LOW, MEDIUM, HIGH by place or by name: LEVEL_1 = LOW.
void DdlReader::spatialGrids(IndexDef& index) {
  int place = 1;
  do {
    std::string name = "level_" + std::to_string(place++);
    if (reader_.peek(1).isSymbol("=")) {
      name = lowerCase(reader_.next().raw);
      reader_.next();
    }
    index.properties.push_back({name + "_grid_desc", upperCase(reader_.next().raw)});
  } while (reader_.acceptSymbol(","));
}

// USING XML INDEX primary FOR VALUE | PATH | PROPERTY, of a secondary one.
void DdlReader::xmlIndex(IndexDef& index) {
  if (!reader_.acceptWord("USING")) return;
  for (const char* word : {"XML", "INDEX"}) reader_.expectWord(word);
  index.primaryXml = reader_.expectIdentifier();
  reader_.expectWord("FOR");
  const Token& use = reader_.next();
  index.properties.push_back({"secondary_type", use.is("VALUE") ? "V" : use.is("PATH") ? "P" : "R"});
}

void DdlReader::spatialIndex(IndexDef& index) {
  const bool written = reader_.acceptWord("USING");
  const std::string scheme = written ? upperCase(reader_.next().raw) : "GEOMETRY_AUTO_GRID";
  index.properties.push_back({"tessellation_scheme", scheme});
}

IndexDef DdlReader::createIndex(ObjectName& table) {
  IndexDef index;
  clusteredWords(index);
  if (reader_.acceptWord("COLUMNSTORE")) {
    index.kind = KeyKind::Columnstore;
  } else if (reader_.acceptWord("SPATIAL")) {
    index.kind = KeyKind::Spatial;
  } else if (reader_.peek().is("XML") || (reader_.peek().is("PRIMARY") && reader_.peek(1).is("XML"))) {
    reader_.acceptWord("PRIMARY");
    reader_.next();
    index.kind = KeyKind::Xml;
  }
  if (!reader_.peek().is("INDEX")) throw NotUnderstood{"this kind of index isn't kept", reader_.peek().line};
  reader_.next();
  index.name = reader_.expectIdentifier();
  reader_.expectWord("ON");
  table = readObjectName(reader_);
  if (index.kind != KeyKind::Columnstore || reader_.peek().isSymbol("(")) keyColumns(index);
  if (index.kind == KeyKind::Xml) xmlIndex(index);
  if (index.kind == KeyKind::Spatial) spatialIndex(index);
  indexTail(index);
  return index;
}

}  // namespace qrel::tsql
