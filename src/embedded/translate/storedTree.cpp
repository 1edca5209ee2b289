// The stored form of an expression that could be read as a tree.
#include "embedded/translate/storedTree.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "embedded/translate/translation.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

using Node = ExpressionNode;
using Kind = Node::Kind;

// How tight what a node writes holds together: brackets go round what holds less than its place asks for.
enum Strength {
  orStrength = 1,
  andStrength,
  notStrength,
  compareStrength,
  addStrength,
  multiplyStrength,
  unaryStrength,
  whole
};

struct DatePart {
  std::string_view written, kept;
};
constexpr std::array dateParts = std::to_array<DatePart>({
    {"yy", "year"},         {"yyyy", "year"},     {"qq", "quarter"},  {"q", "quarter"}, {"mm", "month"},
    {"m", "month"},         {"dy", "dayofyear"},  {"y", "dayofyear"}, {"dd", "day"},    {"d", "day"},
    {"wk", "week"},         {"ww", "week"},       {"dw", "weekday"},  {"w", "weekday"}, {"hh", "hour"},
    {"mi", "minute"},       {"n", "minute"},      {"ss", "second"},   {"s", "second"},  {"ms", "millisecond"},
    {"mcs", "microsecond"}, {"ns", "nanosecond"},
});

std::string inBrackets(std::string_view name) { return "[" + replaceAll(name, "]", "]]") + "]"; }

// A float is kept with all its digits.
std::string numberText(const std::string& written) {
  if (written.find_first_of("eE") == std::string::npos) return written;
  const std::size_t sign = written.front() == '+' ? 1 : 0;
  double value = 0;
  const auto [end, error] = std::from_chars(written.data() + sign, written.data() + written.size(), value);
  if (error != std::errc() || end != written.data() + written.size()) return written;
  std::array<char, 40> digits{};
  const auto made =
      std::to_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::scientific, 15);
  std::string text(digits.data(), made.ptr);
  const std::size_t exponent = text.find('e') + 2;  // behind its sign; three digits are written
  while (text.size() - exponent < 3) text.insert(exponent, "0");
  return text;
}

class Writer {
 public:
  explicit Writer(bool keepsLists) : keepsLists_(keepsLists) {}

  std::string write(const Node& node, int atLeast) const {
    std::string text = plain(node);
    return strengthOf(node) < atLeast ? "(" + text + ")" : text;
  }

 private:
  int strengthOf(const Node& node) const {
    switch (node.kind) {
      case Kind::Or:
        return orStrength;
      case Kind::And:
        return andStrength;
      case Kind::Not:
        return notStrength;
      case Kind::Like:
        return node.negated ? notStrength : compareStrength;
      case Kind::In:
        if (node.negated) return notStrength;
        return keepsLists_ || node.children.size() == 2 ? compareStrength : orStrength;
      case Kind::Between:
        return node.negated ? notStrength : andStrength;
      case Kind::Compare:
      case Kind::IsNull:
        return compareStrength;
      case Kind::Binary:
        return isMultiplication(node) ? multiplyStrength : addStrength;
      case Kind::Unary:
        return unaryStrength;
      default:
        return whole;
    }
  }
  static bool isMultiplication(const Node& node) { return node.text == "*" || node.text == "/" || node.text == "%"; }

  std::string plain(const Node& node) const {
    const auto child = [&](std::size_t at, int atLeast) { return write(node.children[at], atLeast); };
    switch (node.kind) {
      case Kind::Number:
        return "(" + numberText(node.text) + ")";
      case Kind::Null:
        return "NULL";
      case Kind::Name:
        return nameText(node);
      case Kind::Call:
        return callText(node);
      case Kind::Convert:
        return convertText(node);
      case Kind::Case:
        return caseText(node);
      case Kind::Unary:
        return node.text + child(0, unaryStrength);
      case Kind::Binary: {
        const int strength = strengthOf(node);
        return child(0, strength) + node.text + child(1, strength + 1);
      }
      case Kind::Compare:
        return child(0, addStrength) + node.text + child(1, addStrength);
      case Kind::And:
        return child(0, andStrength) + " AND " + child(1, andStrength);
      case Kind::Or:
        return child(0, orStrength) + " OR " + child(1, orStrength);
      case Kind::Not:
        return "NOT " + child(0, notStrength);
      case Kind::Like:
        return (node.negated ? "NOT " : "") + child(0, addStrength) + " like " + child(1, addStrength) +
               (node.children.size() > 2 ? " escape " + child(2, addStrength) : "");
      case Kind::In:
        return listText(node);
      case Kind::Between: {
        const std::string value = child(0, addStrength);
        const std::string text = value + ">=" + child(1, addStrength) + " AND " + value + "<=" + child(2, addStrength);
        return node.negated ? "NOT (" + text + ")" : text;
      }
      case Kind::IsNull:
        return child(0, addStrength) + (node.negated ? " IS NOT NULL" : " IS NULL");
      case Kind::Collate:
        return child(0, whole) + " COLLATE " + node.text;
      case Kind::AtTimeZone:
        return child(0, whole) + " AT TIME ZONE " + child(1, whole);
      default:
        return node.text;
    }
  }

  // IN is a chain of comparisons, the last value first; an index's filter keeps it.
  std::string listText(const Node& node) const {
    const std::string value = write(node.children[0], addStrength);
    std::string text;
    if (keepsLists_) {
      for (std::size_t i = 1; i < node.children.size(); ++i)
        text += (i > 1 ? ", " : "") + write(node.children[i], addStrength);
      return (node.negated ? "NOT " : "") + value + " IN (" + text + ")";
    }
    for (std::size_t i = node.children.size() - 1; i > 0; --i)
      text += (text.empty() ? "" : " OR ") + value + "=" + write(node.children[i], addStrength);
    if (!node.negated) return text;
    return node.children.size() == 2 ? "NOT " + text : "NOT (" + text + ")";
  }

  static std::string nameText(const Node& node) {
    if (node.parts.size() == 1 && node.simple) {
      const std::string lower = lowerCase(node.parts[0]);
      if (lower == "current_timestamp") return "getdate()";
      if (lower == "current_user" || lower == "user" || lower == "session_user") return "user_name()";
      if (lower == "system_user") return "suser_sname()";
    }
    std::string text;
    for (const std::string& part : node.parts) text += (text.empty() ? "" : ".") + inBrackets(part);
    return text;
  }

  std::string arguments(const Node& node, std::size_t from = 0) const {
    std::string text;
    for (std::size_t i = from; i < node.children.size(); ++i)
      text += (i > 0 ? "," : "") + write(node.children[i], orStrength);
    return text;
  }

  static std::string datePart(const Node& node) {
    std::string lower = lowerCase(node.parts.front());
    for (const DatePart& part : dateParts)
      if (part.written == lower) return std::string(part.kept);
    return lower;
  }

  std::string callText(const Node& node) const {
    const std::string lower = lowerCase(node.parts.front());
    if (node.parts.size() > 1 || !node.simple || !isBuiltInFunction(lower))
      return nameText(node) + "(" + arguments(node) + ")";
    const std::vector<Node>& given = node.children;
    if (lower == "coalesce" && given.size() > 1) return coalesceText(node);
    if (lower == "iif" && given.size() == 3) {
      return "case when " + write(given[0], orStrength) + " then " + write(given[1], orStrength) + " else " +
             write(given[2], orStrength) + " end";
    }
    if ((lower == "year" || lower == "month" || lower == "day") && given.size() == 1)
      return "datepart(" + lower + "," + arguments(node) + ")";
    const bool part = lower.starts_with("date") && !lower.ends_with("fromparts");
    if (part && !given.empty() && given[0].kind == Kind::Name)
      return lower + "(" + datePart(given[0]) + arguments(node, 1) + ")";
    return lower + "(" + arguments(node) + ")";
  }

  std::string coalesceText(const Node& node) const {
    std::string text = "case";
    for (std::size_t i = 0; i + 1 < node.children.size(); ++i) {
      const std::string value = write(node.children[i], orStrength);
      text += " when " + write(node.children[i], addStrength) + " IS NOT NULL then " + value;
    }
    return text + " else " + write(node.children.back(), orStrength) + " end";
  }

  std::string convertText(const Node& node) const {
    std::string type;
    for (const Token& token : node.type)
      type += token.isIdentifier() && !token.is("max") ? inBrackets(lowerCase(token.name())) : std::string(token.raw);
    if (node.text == "TRY_CAST") return "TRY_CAST(" + write(node.children[0], orStrength) + " AS " + type + ")";
    std::string text = node.text + "(" + type;
    for (const Node& child : node.children) text += "," + write(child, orStrength);
    return text + ")";
  }

  std::string caseText(const Node& node) const {
    std::string text = "case";
    std::size_t at = 0;
    if (node.simple) text += " " + write(node.children[at++], orStrength);
    for (; at + 1 < node.children.size(); at += 2)
      text += " when " + write(node.children[at], orStrength) + " then " + write(node.children[at + 1], orStrength);
    if (at < node.children.size()) text += " else " + write(node.children[at], orStrength);
    return text + " end";
  }

  bool keepsLists_;
};

}  // namespace

std::string storedTree(const ExpressionNode& node, bool filter) {
  return "(" + Writer(filter).write(node, orStrength) + ")";
}

}  // namespace qrel::tsql
