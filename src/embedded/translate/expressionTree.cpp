#include "embedded/translate/expressionTree.h"

#include <algorithm>
#include <array>

#include "platform/text.h"

namespace qrel::tsql {

namespace {

using Node = ExpressionNode;
using Kind = Node::Kind;

constexpr int mostNestedParts = 200;

class TreeReader {
 public:
  explicit TreeReader(TokenReader& reader) : reader_(reader) {}

  Node any() {
    Node left = conjunction();
    while (reader_.acceptWord("OR")) left = joined(Kind::Or, "", std::move(left), conjunction());
    return left;
  }

 private:
  static Node joined(Kind kind, std::string_view text, Node left, Node right) {
    Node node;
    node.kind = kind;
    node.text = text;
    node.children.push_back(std::move(left));
    node.children.push_back(std::move(right));
    return node;
  }
  static Node leaf(Kind kind, std::string text) {
    Node node;
    node.kind = kind;
    node.text = std::move(text);
    return node;
  }
  static Node around(Kind kind, Node inner, std::string text = {}) {
    Node node = leaf(kind, std::move(text));
    node.children.push_back(std::move(inner));
    return node;
  }
  [[noreturn]] void unknown() const {
    throw NotUnderstood{"an expression is expected before '" + std::string(reader_.peek().raw.substr(0, 40)) + "'",
                        reader_.peek().line};
  }

  Node conjunction() {
    Node left = negation();
    while (reader_.acceptWord("AND")) left = joined(Kind::And, "", std::move(left), negation());
    return left;
  }

  Node negation() {
    if (!reader_.acceptWord("NOT")) return predicate();
    if (++depth_ > mostNestedParts) unknown();
    Node node = around(Kind::Not, negation());
    --depth_;
    return node;
  }

  Node predicate() {
    Node left = additive();
    for (;;) {
      if (reader_.acceptWord("IS")) {
        const bool negated = reader_.acceptWord("NOT");
        reader_.expectWord("NULL");
        left = around(Kind::IsNull, std::move(left));
        left.negated = negated;
        continue;
      }
      if (const std::string_view comparison = comparisonOperator(); !comparison.empty()) {
        left = joined(Kind::Compare, comparison, std::move(left), additive());
        continue;
      }
      const bool negated = reader_.peek().is("NOT");
      const Token& word = reader_.peek(negated ? 1 : 0);
      if (!word.is("LIKE") && !word.is("IN") && !word.is("BETWEEN")) return left;
      if (negated) reader_.next();
      left = tail(std::move(left));
      left.negated = negated;
    }
  }

  std::string_view comparisonOperator() {
    struct Sign {
      std::string_view written, kept;
    };
    static constexpr std::array<Sign, 9> signs{{{"=", "="},
                                                {"<>", "<>"},
                                                {"!=", "<>"},
                                                {"<", "<"},
                                                {">", ">"},
                                                {"<=", "<="},
                                                {">=", ">="},
                                                {"!<", ">="},
                                                {"!>", "<="}}};
    for (const Sign& sign : signs)
      if (reader_.acceptSymbol(sign.written)) return sign.kept;
    return {};
  }

  // LIKE, IN and BETWEEN behind their value.
  Node tail(Node left) {
    const Token& word = reader_.next();
    if (word.is("LIKE")) {
      Node node = joined(Kind::Like, "", std::move(left), additive());
      if (reader_.acceptWord("ESCAPE")) node.children.push_back(additive());
      return node;
    }
    if (word.is("BETWEEN")) {
      Node node = joined(Kind::Between, "", std::move(left), additive());
      reader_.expectWord("AND");
      node.children.push_back(additive());
      return node;
    }
    Node node = around(Kind::In, std::move(left));
    reader_.expectSymbol("(");
    if (reader_.peek().is("SELECT")) unknown();
    do node.children.push_back(additive());
    while (reader_.acceptSymbol(","));
    reader_.expectSymbol(")");
    return node;
  }

  template <std::size_t count>
  std::string_view operatorOf(const std::array<std::string_view, count>& signs) {
    for (const std::string_view sign : signs)
      if (reader_.acceptSymbol(sign)) return sign;
    return {};
  }

  Node additive() {
    static constexpr std::array<std::string_view, 5> signs{"+", "-", "&", "|", "^"};
    Node left = multiplicative();
    for (std::string_view sign; !(sign = operatorOf(signs)).empty();)
      left = joined(Kind::Binary, sign, std::move(left), multiplicative());
    return left;
  }

  Node multiplicative() {
    static constexpr std::array<std::string_view, 3> signs{"*", "/", "%"};
    Node left = unary();
    for (std::string_view sign; !(sign = operatorOf(signs)).empty();)
      left = joined(Kind::Binary, sign, std::move(left), unary());
    return left;
  }

  Node unary() {
    static constexpr std::array<std::string_view, 3> signs{"-", "+", "~"};
    const std::string_view sign = operatorOf(signs);
    if (sign.empty()) return postfix(primary());
    if (sign != "~" && reader_.peek().kind == TokenKind::Number)
      return postfix(leaf(Kind::Number, std::string(sign) + std::string(reader_.next().raw)));
    if (++depth_ > mostNestedParts) unknown();
    Node node = around(Kind::Unary, unary(), std::string(sign));
    --depth_;
    return node;
  }

  Node postfix(Node node) {
    for (;;) {
      if (reader_.acceptWord("COLLATE")) {
        node = around(Kind::Collate, std::move(node), reader_.expectIdentifier());
      } else if (reader_.peek().is("AT") && reader_.peek(1).is("TIME")) {
        for (const char* word : {"AT", "TIME", "ZONE"}) reader_.expectWord(word);
        node = joined(Kind::AtTimeZone, "", std::move(node), primary());
      } else {
        return node;
      }
    }
  }

  Node primary() {
    const Token& token = reader_.peek();
    switch (token.kind) {
      case TokenKind::Number:
        return leaf(Kind::Number, std::string(reader_.next().raw));
      case TokenKind::String:
        return leaf(Kind::Text, std::string(reader_.next().raw));
      case TokenKind::Money:
      case TokenKind::Binary:
      case TokenKind::Variable:
        return leaf(Kind::Other, std::string(reader_.next().raw));
      case TokenKind::Word:
      case TokenKind::Name:
        return word();
      default:
        break;
    }
    if (!reader_.acceptSymbol("(") || reader_.peek().is("SELECT") || ++depth_ > mostNestedParts) unknown();
    Node inner = any();
    reader_.expectSymbol(")");
    --depth_;
    return inner;
  }

  Node word() {
    if (reader_.acceptWord("NULL")) return {};
    if (reader_.acceptWord("CASE")) return caseOf();
    const bool call = reader_.peek(1).isSymbol("(");
    if (call && (reader_.peek().is("CAST") || reader_.peek().is("TRY_CAST"))) return castOf();
    if (call && (reader_.peek().is("CONVERT") || reader_.peek().is("TRY_CONVERT"))) return convertOf();
    static constexpr std::array<std::string_view, 12> never{"AND",  "OR",   "NOT", "IS",   "IN",   "LIKE",
                                                            "THEN", "WHEN", "END", "ELSE", "NEXT", "SELECT"};
    for (const std::string_view each : never)
      if (reader_.peek().is(each)) unknown();
    Node node;
    node.kind = Kind::Name;
    node.simple = reader_.peek().kind == TokenKind::Word;  // written without quotes
    do node.parts.push_back(reader_.expectIdentifier());
    while (reader_.acceptSymbol(".") || reader_.acceptSymbol("::"));
    if (!reader_.acceptSymbol("(")) return node;
    node.kind = Kind::Call;
    if (reader_.acceptSymbol(")")) return node;
    do node.children.push_back(any());
    while (reader_.acceptSymbol(","));
    reader_.expectSymbol(")");
    return node;
  }

  Node caseOf() {
    if (++depth_ > mostNestedParts) unknown();
    Node node;
    node.kind = Kind::Case;
    node.simple = !reader_.peek().is("WHEN");
    if (node.simple) node.children.push_back(any());
    while (reader_.acceptWord("WHEN")) {
      node.children.push_back(any());
      reader_.expectWord("THEN");
      node.children.push_back(any());
    }
    if (reader_.acceptWord("ELSE")) node.children.push_back(any());
    reader_.expectWord("END");
    --depth_;
    return node;
  }

  // The tokens of a type, up to the comma or bracket behind it.
  std::vector<Token> typeTokens() {
    std::vector<Token> tokens;
    int brackets = 0;
    for (;;) {
      const Token& token = reader_.peek();
      if (token.kind == TokenKind::End) unknown();
      if (brackets == 0 && (token.isSymbol(",") || token.isSymbol(")"))) return tokens;
      if (token.isSymbol("(")) ++brackets;
      if (token.isSymbol(")")) --brackets;
      tokens.push_back(reader_.next());
    }
  }

  Node castOf() {
    Node node = leaf(Kind::Convert, reader_.next().is("CAST") ? "CONVERT" : "TRY_CAST");
    reader_.expectSymbol("(");
    node.children.push_back(any());
    reader_.expectWord("AS");
    node.type = typeTokens();
    reader_.expectSymbol(")");
    return node;
  }

  Node convertOf() {
    Node node = leaf(Kind::Convert, upperCase(reader_.next().raw));
    reader_.expectSymbol("(");
    node.type = typeTokens();
    while (reader_.acceptSymbol(",")) node.children.push_back(any());
    reader_.expectSymbol(")");
    if (node.children.empty()) unknown();
    return node;
  }

  TokenReader& reader_;
  int depth_ = 0;
};

}  // namespace

ExpressionNode readExpressionTree(std::string_view text) {
  const std::vector<Token> tokens = lex(text);
  TokenReader reader(text, tokens);
  Node node = TreeReader(reader).any();
  if (!reader.atEnd()) throw NotUnderstood{"the expression goes on", reader.peek().line};
  return node;
}

}  // namespace qrel::tsql
