#include "embedded/language/structure.h"

#include <algorithm>

#include "embedded/language/words.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

bool isOneOf(const Token& token, std::initializer_list<std::string_view> words) {
  return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return token.is(word); });
}

// Whether a word that may start a statement goes on with the one that `first` starts.
class Continuation {
 public:
  explicit Continuation(const Token& first)
      : merge_(first.is("MERGE")),
        wantsSet_(first.is("UPDATE") || first.is("ALTER")),
        wantsQuery_(first.is("INSERT") || first.is("DECLARE")),
        wantsStatement_(first.is("WITH")),
        alter_(first.is("ALTER")) {}

  // Tells of each token in turn that stands in no brackets.
  void pass(const Token& token) {
    if (token.is("VALUES")) wantsQuery_ = false;
  }

  bool continues(const Token& previous, const Token& token) {
    if (merge_) return true;  // a MERGE ends with its semicolon alone
    if (previous.isSymbol(",") || previous.isSymbol("=") ||
        isOneOf(previous,
                {"UNION", "ALL",    "EXCEPT", "INTERSECT", "AS",  "THEN", "FOR",   "ON",   "AFTER", "OF",  "GRANT",
                 "DENY",  "REVOKE", "AND",    "OR",        "NOT", "BULK", "INNER", "LEFT", "RIGHT", "FULL"}))
      return true;
    if (token.is("SET") && (take(wantsSet_) || isOneOf(previous, {"DELETE", "UPDATE"}))) return true;
    if (token.is("FETCH") && isOneOf(previous, {"ROW", "ROWS"})) return true;  // OFFSET n ROWS FETCH NEXT ...
    if (isOneOf(token, {"SELECT", "EXEC", "EXECUTE"}) && take(wantsQuery_)) return true;
    if (alter_ && isOneOf(token, {"DROP", "ALTER"}) && take(alter_)) return true;
    if (isOneOf(token, {"SELECT", "INSERT", "UPDATE", "DELETE", "MERGE"}) && take(wantsStatement_)) {
      wantsSet_ = token.is("UPDATE");
      wantsQuery_ = token.is("INSERT");
      merge_ = token.is("MERGE");
      return true;
    }
    return false;
  }

 private:
  static bool take(bool& flag) {
    const bool was = flag;
    flag = false;
    return was;
  }

  bool merge_, wantsSet_, wantsQuery_, wantsStatement_, alter_;
};

}  // namespace

Structure::Structure(const std::vector<Token>& tokens) : tokens_(&tokens), ends_(tokens.size(), none) {
  std::vector<std::size_t> open;
  std::vector<std::size_t> blocks;
  for (std::size_t i = 0; i + 1 < tokens.size(); ++i) {
    if (tokens[i].kind != TokenKind::Word) continue;
    const bool block = opensBlockAt(i);
    if (block || tokens[i].is("CASE")) {
      open.push_back(i);
      if (block) blocks.push_back(i);
    } else if (closes(i) && !open.empty()) {
      ends_[open.back()] = i;
      if (!blocks.empty() && blocks.back() == open.back()) blocks.pop_back();
      open.pop_back();
    } else if (tokens[i].label) {
      labels_.push_back({lowerCase(tokens[i].raw), i, blocks.empty() ? none : blocks.back()});
    }
  }
}

bool Structure::opensBlockAt(std::size_t at) const {
  const std::vector<Token>& tokens = *tokens_;
  return at + 1 < tokens.size() && opensBlock(tokens[at], tokens[at + 1]);
}

bool Structure::closes(std::size_t at) const {
  const std::vector<Token>& tokens = *tokens_;
  if (!tokens[at].is("END") || tokens[at + 1].is("CONVERSATION")) return false;
  // GENERATED ALWAYS AS ROW END
  return at < 2 || !tokens[at - 2].is("AS") || !isOneOf(tokens[at - 1], {"ROW", "TRANSACTION_ID", "SEQUENCE_NUMBER"});
}

const Structure::Label* Structure::label(std::string_view lowerName) const {
  const auto found =
      std::find_if(labels_.begin(), labels_.end(), [&](const Label& each) { return each.name == lowerName; });
  return found == labels_.end() ? nullptr : &*found;
}

std::size_t Structure::catchBehind(std::size_t close) const {
  const std::vector<Token>& tokens = *tokens_;
  std::size_t opening = close + 2;  // END TRY
  while (opening < tokens.size() && tokens[opening].isSymbol(";")) ++opening;
  const bool whole = opensBlockAt(opening) && tokens[opening + 1].is("CATCH") && ends_[opening] != none;
  return whole ? opening : none;
}

bool Structure::isModuleAt(std::size_t at) const {
  const std::vector<Token>& tokens = *tokens_;
  const auto token = [&](std::size_t ahead) -> const Token& { return tokens[std::min(at + ahead, tokens.size() - 1)]; };
  if (token(0).is("ALTER")) return isModuleWord(token(1));
  return token(0).is("CREATE") && isModuleWord(token(token(1).is("OR") ? 3 : 1));
}

int Structure::nestingOf(std::size_t begin, std::size_t end) const {
  int deepest = 0;
  int open = 0;
  int run = 0;
  for (std::size_t i = begin; i < end; ++i) {
    const Token& token = (*tokens_)[i];
    const bool prefix = token.isSymbol("-") || token.isSymbol("+") || token.isSymbol("~") || token.is("NOT");
    run = prefix ? run + 1 : 0;
    if (token.isSymbol("(") || token.is("CASE")) ++open;
    if ((token.isSymbol(")") || token.is("END")) && open > 0) --open;
    deepest = std::max(deepest, open + run);
  }
  return deepest;
}

std::size_t Structure::guessEnd(std::size_t start, std::size_t limit) const {
  const std::vector<Token>& tokens = *tokens_;
  Continuation continuation(tokens[start]);
  int brackets = tokens[start].isSymbol("(") ? 1 : 0;
  for (std::size_t i = start + 1; i < limit; ++i) {
    const Token& token = tokens[i];
    if (token.kind == TokenKind::End) return i;
    // CASE ... END, and a block that goes on with the statement's line, belong to it as a whole.
    if (const bool part = token.is("CASE") || (opensBlockAt(i) && !token.firstOnLine); part && ends_[i] < limit) {
      i = ends_[i];
      continue;
    }
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) brackets = std::max(0, brackets - 1);
    if (brackets > 0) continue;
    continuation.pass(token);
    if (token.isSymbol(";") || token.is("ELSE") || closes(i)) return i;
    if (token.firstOnLine && startsStatement(token) && !continuation.continues(tokens[i - 1], token)) return i;
  }
  return limit;
}

std::size_t Structure::plainEnd(std::size_t start, std::size_t limit) const {
  const std::vector<Token>& tokens = *tokens_;
  bool maySet = tokens[start].is("ALTER");
  int brackets = 0;
  for (std::size_t i = start + 1; i < limit; ++i) {
    const Token& token = tokens[i];
    if (token.kind == TokenKind::End) return i;
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) brackets = std::max(0, brackets - 1);
    if (brackets > 0) continue;
    if (token.isSymbol(";")) return i;
    if (!startsStatement(token)) continue;
    if (token.is("SET") && maySet) {
      maySet = false;
      continue;
    }
    return i;
  }
  return limit;
}

std::size_t Structure::buriedChange(std::size_t start, std::size_t end) const {
  const std::vector<Token>& tokens = *tokens_;
  int brackets = 0;
  for (std::size_t i = start; i < end; ++i) {
    if (tokens[i].isSymbol("(")) ++brackets;
    if (tokens[i].isSymbol(")")) --brackets;
    if (i == start || brackets > 0 || !isOneOf(tokens[i], {"CREATE", "ALTER", "DROP"})) continue;
    const bool part = tokens[start].is("ALTER") || isOneOf(tokens[start], {"GRANT", "DENY", "REVOKE"});
    if (!part) return i;
  }
  return none;
}

}  // namespace qrel::tsql
