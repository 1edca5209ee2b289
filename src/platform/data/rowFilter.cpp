#include "platform/data/rowFilter.h"

#include <optional>
#include <utility>

#include "platform/data/dateText.h"
#include "platform/data/matchKey.h"
#include "platform/data/numberText.h"
#include "platform/data/rowStore.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel {
namespace {

[[noreturn]] void refuse() {
  throw RuntimeError(
      errorNumber::argumentsOutOfRange,
      "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one another.");
}

bool isNameCharacter(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z') ||
         c == '_' || c == '@' || c == '#' || c == '$';
}

struct Literal {
  bool quoted = false;
  std::string text;
};

class ConditionReader {
 public:
  explicit ConditionReader(std::string_view text) : text_(text) { skipBlanks(); }

  bool atEnd() const { return text_.empty(); }
  bool take(std::string_view mark) {
    if (!text_.starts_with(mark)) return false;
    text_.remove_prefix(mark.size());
    skipBlanks();
    return true;
  }
  bool takeWord(std::string_view word) {
    if (!equalNoCase(text_.substr(0, word.size()), word)) return false;
    if (text_.size() > word.size() && isNameCharacter(text_[word.size()])) return false;
    text_.remove_prefix(word.size());
    skipBlanks();
    return true;
  }

  // A column's name, bare or in brackets with "]" doubled.
  std::string takeName() {
    std::string name;
    if (text_.starts_with('[')) {
      name = takeDelimited(']');
    } else {
      while (!text_.empty() && isNameCharacter(text_.front())) takeCharacter(name);
    }
    if (name.empty()) refuse();
    skipBlanks();
    return name;
  }

  ConditionOperator takeOperator() {
    if (take("<>")) return ConditionOperator::NotEqual;
    if (take("<=")) return ConditionOperator::LessOrEqual;
    if (take(">=")) return ConditionOperator::GreaterOrEqual;
    if (take("<")) return ConditionOperator::Less;
    if (take(">")) return ConditionOperator::Greater;
    if (take("=")) return ConditionOperator::Equal;
    if (takeWord("LIKE")) return ConditionOperator::Like;
    refuse();
  }

  Literal takeLiteral() {
    Literal literal;
    if (text_.starts_with('\'') || text_.starts_with('#')) {
      literal.quoted = true;
      literal.text = takeDelimited(text_.front());
    } else {
      // Up to the word AND: a bare date may hold a blank.
      while (!text_.empty() && !startsAnd()) takeCharacter(literal.text);
      literal.text = trimBlanks(literal.text);
      if (literal.text.empty()) refuse();
    }
    skipBlanks();
    return literal;
  }

 private:
  void skipBlanks() {
    const std::size_t count = text_.find_first_not_of(" \t\r\n");
    text_.remove_prefix(count == std::string_view::npos ? text_.size() : count);
  }
  void takeCharacter(std::string& out) {
    out += text_.front();
    text_.remove_prefix(1);
  }
  bool startsAnd() const { return text_.front() == ' ' && ConditionReader(text_).takeWord("AND"); }
  // What stands between the first character and `close`, which counts once where it is doubled.
  std::string takeDelimited(char close) {
    std::string out;
    text_.remove_prefix(1);
    while (!text_.empty()) {
      if (text_.front() == close) {
        text_.remove_prefix(1);
        if (!text_.starts_with(close)) return out;
      }
      takeCharacter(out);
    }
    refuse();
  }

  std::string_view text_;
};

std::size_t columnNamed(std::string_view name, const RowStore& store) {
  for (std::size_t i = 0; i < store.columns().size(); ++i) {
    if (equalNoCase(store.columns()[i].name, name)) return i;
  }
  throw RuntimeError(errorNumber::itemNotFound,
                     "Item cannot be found in the collection corresponding to the requested name or ordinal.");
}

Value textValue(DataType type, std::string text) {
  Value value = Value::ofText(std::move(text));
  value.type = type;
  return value;
}

std::optional<Value> booleanValue(const Literal& literal) {
  if (equalNoCase(literal.text, "True")) return Value::ofBoolean(true);
  if (equalNoCase(literal.text, "False")) return Value::ofBoolean(false);
  const std::optional<std::string> number = plainDecimal(literal.text);
  if (!number) return std::nullopt;
  return Value::ofBoolean(*number != "0");
}

std::optional<Value> integerValue(const Literal& literal) {
  std::optional<std::string> plain = plainDecimal(literal.text);
  if (!plain) return std::nullopt;
  if (const std::optional<std::int64_t> number = wholeNumber(*plain)) return Value::ofInteger(*number);
  return textValue(DataType::Decimal, std::move(*plain));
}

// A number that no double tells, such as one with too many digits, is none of the column's values.
std::optional<Value> doubleValue(const Literal& literal) {
  std::optional<std::string> plain = plainDecimal(literal.text);
  if (!plain) return std::nullopt;
  const std::optional<double> number = doubleOf(literal.text);
  if (number && plainDecimal(textOf(Value::ofDouble(*number).cell())) == plain) return Value::ofDouble(*number);
  return textValue(DataType::Decimal, std::move(*plain));
}

std::optional<Value> guidValue(const Literal& literal) {
  std::string_view digits = trimBlanks(literal.text);
  if (digits.starts_with('{') && digits.ends_with('}')) digits = digits.substr(1, digits.size() - 2);
  if (digits.size() != 36) return std::nullopt;
  for (std::size_t i = 0; i < digits.size(); ++i) {
    const bool dash = i == 8 || i == 13 || i == 18 || i == 23;
    const bool isHex = std::string_view("0123456789abcdefABCDEF").find(digits[i]) != std::string_view::npos;
    if (dash ? digits[i] != '-' : !isHex) return std::nullopt;
  }
  return textValue(DataType::Guid, "{" + upperCase(digits) + "}");
}

std::optional<Value> binaryValue(const Literal& literal) {
  constexpr std::string_view hex = "0123456789ABCDEF";
  const std::string text = upperCase(trimBlanks(literal.text));
  if (!text.starts_with("0X") || text.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (std::size_t i = 2; i < text.size(); i += 2) {
    const std::size_t high = hex.find(text[i]);
    const std::size_t low = hex.find(text[i + 1]);
    if (high == std::string_view::npos || low == std::string_view::npos) return std::nullopt;
    bytes += static_cast<char>(high * 16 + low);
  }
  return textValue(DataType::Binary, std::move(bytes));
}

// The literal as a value of the column's type; empty when it can't be one.
std::optional<Value> valueOf(const Literal& literal, DataType type) {
  switch (type) {
    case DataType::Boolean:
      return booleanValue(literal);
    case DataType::Integer:
      return integerValue(literal);
    case DataType::Double:
      return doubleValue(literal);
    case DataType::Decimal:
      if (std::optional<std::string> plain = plainDecimal(literal.text)) {
        return textValue(DataType::Decimal, std::move(*plain));
      }
      return std::nullopt;
    case DataType::Date:
      if (!dateTicks(literal.text)) return std::nullopt;
      return textValue(DataType::Date, literal.text);
    case DataType::Guid:
      return guidValue(literal);
    case DataType::Binary:
      return binaryValue(literal);
    case DataType::Text:
    case DataType::Empty:
      break;
  }
  if (!literal.quoted && !plainDecimal(literal.text) && !dateTicks(literal.text)) return std::nullopt;
  return Value::ofText(literal.text);
}

Condition takeCondition(ConditionReader& reader, const RowStore& store) {
  Condition condition;
  const std::string name = reader.takeName();
  condition.op = reader.takeOperator();
  const Literal literal = reader.takeLiteral();
  condition.column = columnNamed(name, store);
  const DataType type = store.type(condition.column);
  if (!literal.quoted && equalNoCase(literal.text, "NULL")) {
    if (condition.op != ConditionOperator::Equal && condition.op != ConditionOperator::NotEqual) refuse();
    condition.value.type = type;
    return condition;
  }
  if (condition.op == ConditionOperator::Like) {
    if (!literal.quoted || (type != DataType::Text && type != DataType::Empty)) refuse();
    condition.value = Value::ofText(lowerCase(literal.text));
    return condition;
  }
  std::optional<Value> value = valueOf(literal, type);
  if (!value) refuse();
  condition.value = std::move(*value);
  return condition;
}

// `pattern` may hold "*" and "%", each for any run of characters; both sides are in lower case.
bool isLike(std::string_view text, std::string_view pattern) {
  std::size_t at = 0;
  std::size_t inPattern = 0;
  std::size_t afterWildcard = std::string_view::npos;
  std::size_t resume = 0;
  while (at < text.size()) {
    if (inPattern < pattern.size() && (pattern[inPattern] == '*' || pattern[inPattern] == '%')) {
      afterWildcard = ++inPattern;
      resume = at;
    } else if (inPattern < pattern.size() && pattern[inPattern] == text[at]) {
      ++inPattern;
      ++at;
    } else if (afterWildcard != std::string_view::npos) {
      inPattern = afterWildcard;
      at = ++resume;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of("*%", inPattern) == std::string_view::npos;
}

}  // namespace

bool Condition::matches(const Cell& cell) const {
  if (value.null) return cell.null == (op == ConditionOperator::Equal);
  if (cell.null) return false;
  if (op == ConditionOperator::Like) return isLike(lowerCase(cell.text), value.text);
  const int order = compareCells(cell, value.cell());
  switch (op) {
    case ConditionOperator::Equal:
      return order == 0;
    case ConditionOperator::NotEqual:
      return order != 0;
    case ConditionOperator::Less:
      return order < 0;
    case ConditionOperator::Greater:
      return order > 0;
    case ConditionOperator::LessOrEqual:
      return order <= 0;
    case ConditionOperator::GreaterOrEqual:
      return order >= 0;
    case ConditionOperator::Like:
      break;
  }
  return false;
}

std::vector<Condition> parseConditions(std::string_view text, const RowStore& store) {
  std::vector<Condition> conditions;
  ConditionReader reader(text);
  if (reader.atEnd()) return conditions;
  do {
    conditions.push_back(takeCondition(reader, store));
  } while (reader.takeWord("AND"));
  if (!reader.atEnd()) refuse();
  return conditions;
}

std::vector<SortColumn> parseSort(std::string_view text, const RowStore& store) {
  std::vector<SortColumn> columns;
  ConditionReader reader(text);
  if (reader.atEnd()) return columns;
  do {
    SortColumn column{columnNamed(reader.takeName(), store), false};
    column.descending = reader.takeWord("DESC");
    if (!column.descending) reader.takeWord("ASC");
    columns.push_back(column);
  } while (reader.take(","));
  if (!reader.atEnd()) refuse();
  return columns;
}

}  // namespace qrel
