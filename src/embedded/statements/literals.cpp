#include "embedded/statements/literals.h"

#include <charconv>
#include <string_view>
#include <utility>
#include <vector>

namespace qrel::tsql {

namespace {

int hexDigit(char c) { return c <= '9' ? c - '0' : (c | 0x20) - 'a' + 10; }

Value binaryLiteral(std::string_view digits) {
  digits.remove_prefix(2);
  Value value = Value::ofText("");
  value.type = DataType::Binary;
  value.text.reserve((digits.size() + 1) / 2);
  std::size_t at = 0;
  if (digits.size() % 2 == 1) value.text += static_cast<char>(hexDigit(digits[at++]));
  for (; at < digits.size(); at += 2)
    value.text += static_cast<char>(hexDigit(digits[at]) * 16 + hexDigit(digits[at + 1]));
  return value;
}

Value decimalLiteral(std::string text) {
  Value value = Value::ofText(std::move(text));
  value.type = DataType::Decimal;
  return value;
}

Value numberLiteral(std::string_view digits, bool negative) {
  if (digits.find_first_of(".eE") == std::string_view::npos) {
    std::int64_t number = 0;
    const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    if (read.ec == std::errc()) return Value::ofInteger(negative ? -number : number);
  }
  if (digits.find_first_of("eE") != std::string_view::npos) {
    double number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return Value::ofDouble(negative ? -number : number);
  }
  std::string text = negative ? "-" : "";
  if (digits.starts_with('.')) text += '0';
  text += digits;
  if (text.back() == '.') text.pop_back();
  return decimalLiteral(std::move(text));
}

Value moneyLiteral(std::string_view raw, bool negative) {
  std::string text = negative ? "-" : "";
  for (const char c : raw.substr(1))
    if (c != ',') text += c;
  return decimalLiteral(std::move(text));
}

}  // namespace

std::optional<Value> literalDefault(const std::string& text) {
  const auto tokens = lex(text);
  std::vector<const Token*> parts;
  for (const Token& token : tokens)
    if (!token.isSymbol("(") && !token.isSymbol(")") && token.kind != TokenKind::End) parts.push_back(&token);
  const bool negative = parts.size() == 2 && parts[0]->isSymbol("-");
  if (parts.size() != 1 && !negative) return std::nullopt;
  const Token& token = *parts.back();
  switch (token.kind) {
    case TokenKind::Number:
      return numberLiteral(token.raw, negative);
    case TokenKind::Money:
      return moneyLiteral(token.raw, negative);
    case TokenKind::String:
      return negative ? std::nullopt : std::optional(Value::ofText(token.text));
    case TokenKind::Binary:
      return negative ? std::nullopt : std::optional(binaryLiteral(token.raw));
    default:
      return token.is("NULL") && !negative ? std::optional(Value()) : std::nullopt;
  }
}

bool readLiteral(TokenReader& reader, Value& value) {
  const std::size_t signs = reader.peek().isSymbol("-") || reader.peek().isSymbol("+") ? 1 : 0;
  const Token& token = reader.peek(signs);
  const Token& behind = reader.peek(signs + 1);
  if (!behind.isSymbol(",") && !behind.isSymbol(")")) return false;
  const bool negative = signs == 1 && reader.peek().raw == "-";
  switch (token.kind) {
    case TokenKind::Number:
      value = numberLiteral(token.raw, negative);
      break;
    case TokenKind::Money:
      value = moneyLiteral(token.raw, negative);
      break;
    case TokenKind::String:
      if (signs == 1) return false;
      value = Value::ofText(token.text);
      break;
    case TokenKind::Binary:
      if (signs == 1) return false;
      value = binaryLiteral(token.raw);
      break;
    default:
      if (signs == 1 || !token.is("NULL")) return false;
      value = Value();
  }
  reader.moveTo(reader.position() + signs + 1);
  return true;
}

}  // namespace qrel::tsql
