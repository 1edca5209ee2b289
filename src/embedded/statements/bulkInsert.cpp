#include "embedded/statements/bulkInsert.h"

#include <algorithm>
#include <charconv>
#include <filesystem>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "embedded/language/refusal.h"
#include "embedded/statements/bulkFile.h"
#include "embedded/statements/columnValues.h"
#include "embedded/statements/insertPlan.h"
#include "platform/system.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

struct BulkOptions {
  BulkFormat format;
  bool fieldTerminatorGiven = false, rowTerminatorGiven = false;
  std::int64_t firstRow = 1, lastRow = 0, mostErrors = 10;
  bool keepNulls = false, keepIdentity = false;
};

std::int64_t optionNumber(StatementRun& run, const std::string& name, const std::string& value) {
  std::int64_t number = 0;
  const auto read = std::from_chars(value.data(), value.data() + value.size(), number);
  if (read.ec != std::errc() || read.ptr != value.data() + value.size() || number < 0)
    run.notUnderstood("BULK INSERT with " + name + " = " + value);
  return number;
}

void applyOption(StatementRun& run, BulkOptions& options, const std::string& name, const std::string& value) {
  static constexpr std::string_view harmless[] = {"TABLOCK",       "BATCHSIZE",           "ROWS_PER_BATCH",   "ORDER",
                                                  "FIRE_TRIGGERS", "KILOBYTES_PER_BATCH", "CHECK_CONSTRAINTS"};
  const auto only = [&](std::initializer_list<std::string_view> known) {
    if (std::none_of(known.begin(), known.end(), [&](auto each) { return equalNoCase(each, value); }))
      run.notUnderstood("BULK INSERT with " + name + " = '" + value + "' isn't carried out");
  };
  if (name == "FIELDTERMINATOR") {
    options.format.fieldTerminator = terminatorText(value);
    options.fieldTerminatorGiven = true;
  } else if (name == "ROWTERMINATOR") {
    options.format.rowTerminator = terminatorText(value);
    options.format.anyLineEnd = value == "\\n";
    options.rowTerminatorGiven = true;
  } else if (name == "FIRSTROW") {
    options.firstRow = optionNumber(run, name, value);
  } else if (name == "LASTROW") {
    options.lastRow = optionNumber(run, name, value);
  } else if (name == "MAXERRORS") {
    options.mostErrors = optionNumber(run, name, value);
  } else if (name == "KEEPNULLS") {
    options.keepNulls = true;
  } else if (name == "KEEPIDENTITY") {
    options.keepIdentity = true;
  } else if (name == "FORMAT") {
    only({"CSV"});
    options.format.csv = true;
  } else if (name == "FIELDQUOTE") {
    options.format.quote = terminatorText(value);
  } else if (name == "DATAFILETYPE") {
    only({"char", "widechar"});
    options.format.wide = equalNoCase(value, "widechar");
  } else if (name == "CODEPAGE") {
    only({"ACP", "OEM", "RAW", "1252", "65001"});
    options.format.codePage = upperCase(value);
  } else if (std::find(std::begin(harmless), std::end(harmless), name) == std::end(harmless)) {
    run.notUnderstood("BULK INSERT with " + name + " isn't carried out");
  }
}

// WITH ( name [= value] [(...)], ... )
BulkOptions readOptions(StatementRun& run) {
  TokenReader& reader = run.reader;
  BulkOptions options;
  if (!reader.acceptWord("WITH")) return options;
  reader.expectSymbol("(");
  do {
    const std::string name = upperCase(reader.expectIdentifier());
    std::string value;
    if (reader.acceptSymbol("=")) value = reader.next().name();
    if (reader.peek().isSymbol("(")) reader.skipParentheses();
    applyOption(run, options, name, value);
  } while (reader.acceptSymbol(","));
  reader.expectSymbol(")");
  if (options.format.csv && !options.fieldTerminatorGiven) options.format.fieldTerminator = ",";
  if (options.format.fieldTerminator.empty() || options.format.rowTerminator.empty() || options.format.quote.empty())
    run.notUnderstood("BULK INSERT with an empty terminator");
  return options;
}

std::string readFile(const std::filesystem::path& path, std::string_view written) {
  system::OpenFile file;
  system::FileFacts facts;
  system::Error why = file.open(path, system::Open::ReadAtOnce);
  if (why == 0) why = file.facts(facts);
  std::string bytes(why == 0 ? static_cast<std::size_t>(facts.size) : 0, '\0');
  for (std::size_t had = 0; why == 0 && had < bytes.size();) {
    std::size_t got = 0;
    why = file.read(bytes.data() + had, bytes.size() - had, got);
    if (got == 0) bytes.resize(had);
    had += got;
  }
  if (why != 0)
    refuse("Cannot bulk load because the file \"" + std::string(written) +
           "\" could not be read: " + std::generic_category().message(why) + ".");
  return bytes;
}

// One run over a file's rows.
class BulkLoad {
 public:
  BulkLoad(StatementRun& run, std::shared_ptr<const TableInfo> table, const BulkOptions& options)
      : run_(run), table_(std::move(table)), options_(options) {
    std::vector<std::string> names;
    for (const auto& column : table_->columns) {
      const bool kept = !column.computed && !isVersionColumn(column) && (!column.identity || options.keepIdentity);
      if (kept) names.push_back(column.name);
      kept_.push_back(kept);
    }
    const std::string before = std::exchange(run.memory.identityInsert, options.keepIdentity ? table_->storage : "");
    try {
      plan_ = makePlan(run, table_, &names);
    } catch (...) {
      run.memory.identityInsert = before;
      throw;
    }
    run.memory.identityInsert = before;
    for (std::size_t i = 0; i < plan_.given; ++i) defaults_.push_back(defaultFor(run, *plan_.columns[i].column));
  }

  void rows(std::string_view text) {
    BulkRows rows(text, options_.format);
    std::vector<std::string> fields;
    while (rows.next(kept_.size(), fields)) {
      if (rows.row() < options_.firstRow) continue;
      if (options_.lastRow > 0 && rows.row() > options_.lastRow) break;
      run_.checkStop();
      if (!readRow(rows.row(), fields)) continue;
      insertRow(run_, plan_, plan_.row);
      ++count;
    }
  }

  std::int64_t count = 0, errors = 0;
  std::string firstError;

 private:
  bool readRow(std::int64_t number, const std::vector<std::string>& fields) {
    if (fields.size() != kept_.size())
      return error("Bulk load data conversion error for row " + std::to_string(number) + ": it has " +
                   std::to_string(fields.size()) + " fields, and the table has " + std::to_string(kept_.size()) +
                   " columns.");
    plan_.row.clear();
    for (std::size_t i = 0; i < fields.size(); ++i) {
      if (!kept_[i]) continue;
      const std::size_t place = plan_.row.size();
      const TableInfo::Column& column = *plan_.columns[place].column;
      try {
        plan_.row.push_back(valueOf(column, defaults_[place], fields[i]));
      } catch (const DataError& why) {
        if (why.number == errorNumber::cannotConnect || why.number == errorNumber::cancelled) throw;
        const bool cut = why.description.find("truncated") != std::string::npos;
        return error("Bulk load data conversion error (" +
                     std::string(cut ? "truncation" : "type mismatch or invalid character for the specified codepage") +
                     ") for row " + std::to_string(number) + ", column " + std::to_string(i + 1) + " (" + column.name +
                     ").");
      }
    }
    return true;
  }

  Value valueOf(const TableInfo::Column& column, const InsertPlan::Column& fallback, const std::string& field) {
    if (field.empty()) return options_.keepNulls || column.identity ? Value() : defaultOf(run_, fallback);
    if (field.size() == 1 && field[0] == '\0') return convertTo(column.type, Value::ofText(""));
    const std::string& base = column.type.baseName;
    const bool binary = base == "binary" || base == "varbinary" || base == "image";
    return convertTo(column.type, Value::ofText(binary && !field.starts_with("0x") ? "0x" + field : field));
  }

  bool error(std::string text) {
    if (errors++ == 0) firstError = std::move(text);
    if (errors > options_.mostErrors)
      refuse(firstError + " Cannot bulk load: the maximum number of errors (" + std::to_string(options_.mostErrors) +
             ") was reached, and no row is loaded.");
    return false;
  }

  StatementRun& run_;
  std::shared_ptr<const TableInfo> table_;
  const BulkOptions& options_;
  InsertPlan plan_;
  std::vector<bool> kept_;  // of the file's fields, which go into a column
  std::vector<InsertPlan::Column> defaults_;
};

}  // namespace

void bulkInsertStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  reader.next();
  reader.expectWord("INSERT");
  const ObjectName name = run.localName(readObjectName(reader));
  reader.expectWord("FROM");
  const Token& path = reader.next();
  if (path.kind != TokenKind::String && path.kind != TokenKind::Name) run.notUnderstood("a file's name is expected");
  const std::string written(path.name());
  const BulkOptions options = readOptions(run);
  if (!run.act()) return;
  const auto table = run.requireTable(name);
  if (!run.session.dataFile) run.notUnderstood("files can be read by a load alone");
  const std::string text = decodeBulkFile(readFile(run.session.dataFile(written), written), options.format);
  BulkLoad load(run, table, options);
  run.atomically([&] { load.rows(text); });
  run.result.rows = load.count;
  run.memory.inserted += load.count;
  run.countRows(load.count);
  if (load.errors > 0)
    run.fail(StatementRun::Kind::Failed, load.firstError + " " + std::to_string(load.errors) +
                                             (load.errors == 1 ? " row is" : " rows are") + " not loaded, " +
                                             std::to_string(load.count) + " are.");
}

}  // namespace qrel::tsql
