// Expressions and conditions of definitions as trees: what their stored form and their types are told from.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "embedded/language/lexer.h"

namespace qrel::tsql {

struct ExpressionNode {
  enum class Kind : std::uint8_t {
    Number,   // text as written, with its sign
    Text,     // text as written, with its quotes
    Other,    // a binary or money constant, a variable
    Null,     //
    Name,     // parts of a column's name
    Call,     // parts: the function's name; children: arguments. A first argument that is a word is a Name
    Convert,  // text: CONVERT, TRY_CONVERT or TRY_CAST; type: the type's tokens; children: value and style
    Case,     // children: pairs of WHEN and THEN, ELSE where their number is odd; behind the operand where `simple`
    Unary,    // text: -, + or ~
    Binary,   // text: an arithmetic operator
    Compare,  // text: an operator
    And,
    Or,
    Not,
    Like,     // children: value, pattern, escape
    In,       // children: value, list
    Between,  // children: value, bounds
    IsNull,   //
    Collate,  // text: the collation
    AtTimeZone
  } kind = Kind::Null;
  std::string text;
  std::vector<std::string> parts;
  std::vector<ExpressionNode> children;
  std::vector<Token> type;
  bool negated = false;  // NOT LIKE, NOT IN, NOT BETWEEN, IS NOT NULL
  bool simple = false;
};

// Reads an expression or a condition that is the whole text. Raises NotUnderstood where it isn't one of these.
ExpressionNode readExpressionTree(std::string_view text);

}  // namespace qrel::tsql
