#include "embedded/statements/modules.h"

#include <array>

#include "embedded/language/refusal.h"
#include "embedded/language/words.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// One of the module words as a load tells it.
std::string moduleKind(const Token& token) { return token.is("PROC") ? "procedure" : lowerCase(token.raw); }

// The batch's text as the server keeps it: always a CREATE.
std::string moduleText(const BatchText& batch, std::size_t create, std::size_t kind) {
  const std::vector<Token>& tokens = batch.tokens;
  std::string text(batch.batch.substr(0, tokens[create].begin));
  text += tokens[create].is("ALTER") ? "CREATE" : std::string(tokens[create].raw);
  std::size_t at = tokens[create].end;
  for (std::size_t i = create + 1; i < kind; ++i) {  // OR, ALTER
    text += batch.batch.substr(at, tokens[i].begin - at);
    at = tokens[i].end;
  }
  text += batch.batch.substr(at);
  return text;
}

// FN, IF or TF by what stands behind RETURNS.
std::string functionKind(const std::vector<Token>& tokens, std::size_t from) {
  int brackets = 0;
  for (std::size_t i = from; i + 1 < tokens.size(); ++i) {
    if (tokens[i].isSymbol("(")) ++brackets;
    if (tokens[i].isSymbol(")")) --brackets;
    if (brackets != 0 || !tokens[i].is("RETURNS")) continue;
    if (tokens[i + 1].is("TABLE")) return "IF";
    return tokens[i + 1].kind == TokenKind::Variable ? "TF" : "FN";
  }
  return "FN";
}

// Whether the options in front of AS name ENCRYPTION.
bool isEncrypted(const std::vector<Token>& tokens, std::size_t from) {
  static constexpr std::array<std::string_view, 7> options{"ENCRYPTION",    "RECOMPILE", "SCHEMABINDING", "EXECUTE",
                                                           "VIEW_METADATA", "RETURNS",   "EXEC"};
  int brackets = 0;
  for (std::size_t i = from; i + 1 < tokens.size(); ++i) {
    if (tokens[i].isSymbol("(")) ++brackets;
    if (tokens[i].isSymbol(")")) --brackets;
    if (tokens[i].is("BEGIN") || tokens[i].is("SELECT")) return false;  // the body has begun
    if (brackets != 0 || !tokens[i].is("WITH")) continue;
    bool known = false;
    for (const std::string_view option : options) known = known || tokens[i + 1].is(option);
    if (!known) continue;
    for (std::size_t at = i + 1; at < tokens.size(); ++at) {
      if (tokens[at].is("ENCRYPTION")) return true;
      if (tokens[at].kind != TokenKind::Word && tokens[at].kind != TokenKind::String && !tokens[at].isSymbol(","))
        return false;
    }
  }
  return false;
}

// Whether a query goes on, for all that its text tells, with a word that begins statements.
bool continuesQuery(const Token& previous, const Token& token) {
  static constexpr std::array<std::string_view, 6> before{"AS", "UNION", "ALL", "EXCEPT", "INTERSECT", "RETURN"};
  if (token.is("MERGE") || token.is("FETCH")) return true;  // a join's hint, a row limit
  if (!token.is("SELECT")) return false;
  bool goesOn = previous.isSymbol(")");  // of a common table
  for (const std::string_view word : before) goesOn = goesOn || previous.is(word);
  return goesOn;
}

// What the server refuses a batch for: a second module in it, another statement behind a view's query.
void checkModuleBody(const BatchText& batch, const std::string& kind, std::size_t from) {
  const std::vector<Token>& tokens = batch.tokens;
  int brackets = 0;
  bool query = false;
  for (std::size_t i = from; i + 1 < tokens.size(); ++i) {
    const Token& token = tokens[i];
    const Token& previous = tokens[i - 1];
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    const bool permission =
        previous.isSymbol(",") || previous.is("GRANT") || previous.is("DENY") || previous.is("REVOKE");
    if (token.is("CREATE") && batch.structure.isModuleAt(i) && !permission)
      refuse("'CREATE " + upperCase(tokens[i + 1].raw) + "' must be the first statement in a query batch (line " +
             std::to_string(token.line) + " of this one). Nothing of the batch is kept.");
    if (kind != "view" || brackets > 0) continue;
    query = query || token.is("SELECT");
    if (token.is("CASE") && batch.structure.endOf(i) != Structure::none) {
      i = batch.structure.endOf(i);
    } else if (query && startsStatement(token) && !continuesQuery(previous, token)) {
      refuse("Incorrect syntax near the keyword '" + upperCase(token.raw) + "' (line " + std::to_string(token.line) +
             " of the batch). Nothing of the batch is kept.");
    }
  }
}

void keepModule(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t create = reader.position();
  const bool alter = reader.next().is("ALTER");
  const bool orAlter = !alter && reader.acceptWord("OR");
  if (orAlter) reader.expectWord("ALTER");
  const std::size_t kindAt = reader.position();
  const std::string kind = moduleKind(reader.next());
  const ObjectName name = run.localName(readObjectName(reader));
  const std::size_t behindName = reader.position();
  std::optional<ObjectName> parent;
  std::string xtype = kind == "procedure" ? "P" : kind == "view" ? "V" : "TR";
  if (kind == "function") xtype = functionKind(run.text.tokens, behindName);
  if (kind == "trigger") {
    reader.expectWord("ON");
    if (reader.peek().is("DATABASE") || reader.peek().is("ALL"))
      run.notUnderstood("triggers on databases and servers aren't kept");
    parent = run.localName(readObjectName(reader));
  }
  checkModuleBody(run.text, kind, behindName);
  reader.moveTo(run.text.end());
  if (!run.act()) return;
  if (alter && !run.catalogue().find(name.schema, name.name)) {
    throw DataError(errorNumber::invalidObjectName,
                    "Invalid object name '" + (name.schema.empty() ? "" : name.schema + ".") + name.name + "'.",
                    "42S02");
  }
  run.atomically([&] {
    run.changes().createModule(name, xtype, moduleText(run.text, create, kindAt), alter || orAlter,
                               isEncrypted(run.text.tokens, behindName), parent ? &*parent : nullptr);
  });
  run.made(kind);
}

}  // namespace

// The rest of the batch is the module's body, whatever becomes of it: none of it is ever run.
void moduleStatement(StatementRun& run) {
  TokenReader& reader = run.reader;
  const std::size_t create = reader.position();
  if (!run.atBatchStart() || run.insideAnother() || !run.executing) {
    // The server compiles nothing of such a batch; here at least nothing of the module's body is run.
    const Token& kind = run.text.tokens[reader.peek(1).is("OR") ? create + 3 : create + 1];
    return run.leaveRest(StatementRun::Kind::Failed,
                         "'CREATE/ALTER " + upperCase(kind.raw) +
                             "' must be the first statement in a query batch. The rest of the batch is "
                             "left out.");
  }
  try {
    keepModule(run);
  } catch (...) {
    reader.moveTo(run.text.end());
    run.wasRead = true;
    throw;
  }
}

}  // namespace qrel::tsql
