#include "tests/support/tds/batchParts.h"

#include <algorithm>
#include <array>

#include "embedded/language/lexer.h"
#include "embedded/language/words.h"

namespace qrel::tds {

namespace {

using tsql::Token;
using tsql::TokenKind;

struct Query {
  std::size_t begin = 0;  // bytes of the batch
  std::size_t end = 0;
};

bool isOneOf(const Token& token, std::initializer_list<const char*> words) {
  return std::any_of(words.begin(), words.end(), [&](const char* word) { return token.is(word); });
}

// SELECT @a = ... gives variables their values, and no rows.
bool assigns(const std::vector<Token>& tokens, std::size_t select) {
  for (std::size_t i = select + 1; i + 1 < tokens.size(); ++i) {
    if (tokens[i].kind == TokenKind::Variable) return tokens[i + 1].isSymbol("=");
    if (!isOneOf(tokens[i], {"TOP", "DISTINCT", "ALL"}) && tokens[i].kind != TokenKind::Number) return false;
  }
  return false;
}

// The queries whose rows a batch gives; nothing when its statements aren't all of the simple kinds.
std::vector<Query> topQueries(std::string_view batch) {
  const std::vector<Token> tokens = tsql::lex(batch);
  std::vector<Query> queries;
  int brackets = 0;
  int cases = 0;
  bool inQuery = false;
  const auto closeAt = [&](std::size_t offset) {
    if (inQuery) queries.back().end = offset;
    inQuery = false;
  };
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    const Token& token = tokens[i];
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    if (brackets > 0) continue;
    if (token.is("CASE")) ++cases;
    if (token.is("END") && cases > 0) {
      --cases;
      continue;
    }
    if (token.isSymbol(";")) closeAt(token.begin);
    const bool first = i == 0 || tokens[i - 1].isSymbol(";");
    if (first && token.kind == TokenKind::Word && !isOneOf(token, {"SELECT", "DECLARE", "SET", "USE", "PRINT"}))
      return {};
    if (!tsql::startsStatement(token)) continue;
    if (!isOneOf(token, {"SELECT", "DECLARE", "SET", "USE", "PRINT"})) return {};
    if (i > 0 && isOneOf(tokens[i - 1], {"UNION", "ALL", "EXCEPT", "INTERSECT"})) continue;
    closeAt(token.begin);
    if (!token.is("SELECT") || assigns(tokens, i)) continue;
    queries.push_back({token.begin, batch.size()});
    inQuery = true;
  }
  return queries;
}

}  // namespace

std::vector<std::string> batchParts(std::string_view batch) {
  const std::vector<Query> queries = topQueries(batch);
  if (queries.size() < 2) return {std::string(batch)};
  std::vector<std::string> parts;
  for (std::size_t own = 0; own < queries.size(); ++own) {
    std::string part(batch);
    for (std::size_t i = 0; i < queries.size(); ++i) {
      if (i == own) continue;
      for (std::size_t at = queries[i].begin; at < queries[i].end; ++at)
        if (part[at] != '\n') part[at] = ' ';
    }
    // What stands behind it belongs to the texts that follow.
    if (own + 1 < queries.size()) part.resize(queries[own].end);
    parts.push_back(std::move(part));
  }
  return parts;
}

bool mayUse(std::string_view batch) {
  const std::vector<Token> tokens = tsql::lex(batch);
  return std::any_of(tokens.begin(), tokens.end(), [](const Token& token) { return token.is("USE"); });
}

}  // namespace qrel::tds
