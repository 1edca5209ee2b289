// CREATE and ALTER: which statement it is; procedures, views, functions and triggers.
#include <array>

#include "embedded/change/parts.h"
#include "embedded/language/words.h"
#include "embedded/run/interpreter.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

// What is made of CREATE's and ALTER's third word for a module; empty for other words.
std::string moduleKind(const Token& token) {
  if (token.is("PROC") || token.is("PROCEDURE")) return "procedure";
  for (const char* kind : {"view", "function", "trigger"})
    if (token.is(kind)) return kind;
  return "";
}

bool isWithoutEffect(const Token& token) {
  static constexpr std::array<std::string_view, 16> words{
      "USER",       "LOGIN",     "ROLE",   "STATISTICS", "CERTIFICATE", "CREDENTIAL", "MASTER",   "AUTHORIZATION",
      "ASYMMETRIC", "SYMMETRIC", "SERVER", "ENDPOINT",   "APPLICATION", "EVENT",      "DATABASE", "FULLTEXT"};
  for (const std::string_view word : words)
    if (token.is(word)) return true;
  return false;
}

}  // namespace

void Interpreter::createStatement() {
  const std::size_t kindAt = reader_.peek(1).is("OR") ? 3 : 1;
  if (!moduleKind(reader_.peek(kindAt)).empty()) return moduleStatement();
  reader_.next();
  const Token& word = reader_.peek();
  if (reader_.acceptWord("TABLE")) {
    createTable();
  } else if (word.is("UNIQUE") || word.is("CLUSTERED") || word.is("NONCLUSTERED") || word.is("INDEX")) {
    createIndex();
  } else if (reader_.acceptWord("SCHEMA")) {
    createSchema();
  } else if (reader_.acceptWord("TYPE")) {
    createType();
  } else if (reader_.acceptWord("SEQUENCE")) {
    createSequence();
  } else if (reader_.acceptWord("SYNONYM")) {
    createSynonym();
  } else if (word.is("DATABASE") && reader_.peek(1).isIdentifier() && !reader_.peek(1).is("AUDIT")) {
    createDatabase();
  } else if (isWithoutEffect(word) && !word.is("FULLTEXT")) {
    skipWithoutEffect();
  } else {
    notUnderstood("CREATE " + upperCase(word.raw) + " isn't kept");
  }
}

void Interpreter::alterStatement() {
  if (!moduleKind(reader_.peek(1)).empty()) return moduleStatement();
  reader_.next();
  const Token& word = reader_.peek();
  if (reader_.acceptWord("TABLE")) {
    alterTable();
  } else if (isWithoutEffect(word) || word.is("INDEX")) {
    const std::size_t start = reader_.position();
    skipWithoutEffect();
    for (std::size_t i = start; word.is("INDEX") && i < reader_.position(); ++i) {
      if (!tokens_[i].is("DISABLE")) continue;
      parsed_ = true;
      notUnderstood("indexes aren't disabled");
    }
  } else {
    notUnderstood("ALTER " + upperCase(word.raw) + " isn't carried out");
  }
}

// The batch's text as the server keeps it: always a CREATE.
std::string Interpreter::moduleText(std::size_t create, std::size_t kind) const {
  std::string text(batch_.substr(0, tokens_[create].begin));
  text += tokens_[create].is("ALTER") ? "CREATE" : std::string(tokens_[create].raw);
  std::size_t at = tokens_[create].end;
  for (std::size_t i = create + 1; i < kind; ++i) {  // OR, ALTER
    text += batch_.substr(at, tokens_[i].begin - at);
    at = tokens_[i].end;
  }
  text += batch_.substr(at);
  return text;
}

// FN, IF or TF by what stands behind RETURNS.
std::string Interpreter::functionKind(std::size_t from) const {
  int brackets = 0;
  for (std::size_t i = from; i + 1 < tokens_.size(); ++i) {
    if (tokens_[i].isSymbol("(")) ++brackets;
    if (tokens_[i].isSymbol(")")) --brackets;
    if (brackets != 0 || !tokens_[i].is("RETURNS")) continue;
    if (tokens_[i + 1].is("TABLE")) return "IF";
    return tokens_[i + 1].kind == TokenKind::Variable ? "TF" : "FN";
  }
  return "FN";
}

// Whether the options in front of AS name ENCRYPTION.
bool Interpreter::isEncrypted(std::size_t from) const {
  static constexpr std::array<std::string_view, 7> options{"ENCRYPTION",    "RECOMPILE", "SCHEMABINDING", "EXECUTE",
                                                           "VIEW_METADATA", "RETURNS",   "EXEC"};
  int brackets = 0;
  for (std::size_t i = from; i + 1 < tokens_.size(); ++i) {
    if (tokens_[i].isSymbol("(")) ++brackets;
    if (tokens_[i].isSymbol(")")) --brackets;
    if (tokens_[i].is("BEGIN") || tokens_[i].is("SELECT")) return false;  // the body has begun
    if (brackets != 0 || !tokens_[i].is("WITH")) continue;
    bool known = false;
    for (const std::string_view option : options) known = known || tokens_[i + 1].is(option);
    if (!known) continue;
    for (std::size_t at = i + 1; at < tokens_.size(); ++at) {
      if (tokens_[at].is("ENCRYPTION")) return true;
      if (tokens_[at].kind != TokenKind::Word && tokens_[at].kind != TokenKind::String && !tokens_[at].isSymbol(","))
        return false;
    }
  }
  return false;
}

namespace {

// Whether a query goes on, for all that its text tells, with a word that begins statements.
bool continuesQuery(const Token& previous, const Token& token) {
  static constexpr std::array<std::string_view, 6> before{"AS", "UNION", "ALL", "EXCEPT", "INTERSECT", "RETURN"};
  if (token.is("MERGE") || token.is("FETCH")) return true;  // a join's hint, a row limit
  if (!token.is("SELECT")) return false;
  bool goesOn = previous.isSymbol(")");  // of a common table
  for (const std::string_view word : before) goesOn = goesOn || previous.is(word);
  return goesOn;
}

}  // namespace

// What the server refuses a batch for: a second module in it, another statement behind a view's query.
void Interpreter::checkModuleBody(const std::string& kind, std::size_t from) const {
  int brackets = 0;
  bool query = false;
  for (std::size_t i = from; i + 1 < tokens_.size(); ++i) {
    const Token& token = tokens_[i];
    const Token& previous = tokens_[i - 1];
    if (token.isSymbol("(")) ++brackets;
    if (token.isSymbol(")")) --brackets;
    const bool permission =
        previous.isSymbol(",") || previous.is("GRANT") || previous.is("DENY") || previous.is("REVOKE");
    if (token.is("CREATE") && isModuleAt(i) && !permission)
      refuse("'CREATE " + upperCase(tokens_[i + 1].raw) + "' must be the first statement in a query batch (line " +
             std::to_string(token.line) + " of this one). Nothing of the batch is kept.");
    if (kind != "view" || brackets > 0) continue;
    query = query || token.is("SELECT");
    if (token.is("CASE") && structure_.endOf(i) != Structure::none) {
      i = structure_.endOf(i);
    } else if (query && startsStatement(token) && !continuesQuery(previous, token)) {
      refuse("Incorrect syntax near the keyword '" + upperCase(token.raw) + "' (line " + std::to_string(token.line) +
             " of the batch). Nothing of the batch is kept.");
    }
  }
}

// The rest of the batch is the module's body, whatever becomes of it: none of it is ever run.
void Interpreter::moduleStatement() {
  const std::size_t create = reader_.position();
  if (!atBatchStart() || insideAnother() || !executing_) {
    // The server compiles nothing of such a batch; here at least nothing of the module's body is run.
    const Token& kind = tokens_[reader_.peek(1).is("OR") ? create + 3 : create + 1];
    return leaveRest(Kind::Failed, "'CREATE/ALTER " + upperCase(kind.raw) +
                                       "' must be the first statement in a query batch. The rest of the batch is "
                                       "left out.");
  }
  try {
    keepModule();
  } catch (...) {
    reader_.moveTo(tokens_.size() - 1);
    parsed_ = true;
    throw;
  }
}

void Interpreter::keepModule() {
  const std::size_t create = reader_.position();
  const bool alter = reader_.next().is("ALTER");
  const bool orAlter = !alter && reader_.acceptWord("OR");
  if (orAlter) reader_.expectWord("ALTER");
  const std::size_t kindAt = reader_.position();
  const std::string kind = moduleKind(reader_.next());
  const ObjectName name = localName(readObjectName(reader_));
  const std::size_t behindName = reader_.position();
  std::optional<ObjectName> parent;
  std::string xtype = kind == "procedure" ? "P" : kind == "view" ? "V" : "TR";
  if (kind == "function") xtype = functionKind(behindName);
  if (kind == "trigger") {
    reader_.expectWord("ON");
    if (reader_.peek().is("DATABASE") || reader_.peek().is("ALL"))
      notUnderstood("triggers on databases and servers aren't kept");
    parent = localName(readObjectName(reader_));
  }
  checkModuleBody(kind, behindName);
  reader_.moveTo(tokens_.size() - 1);
  if (!act()) return;
  if (alter && !catalogue_->find(name.schema, name.name)) {
    throw DataError(errorNumber::invalidObjectName,
                    "Invalid object name '" + (name.schema.empty() ? "" : name.schema + ".") + name.name + "'.",
                    "42S02");
  }
  atomically([&] {
    changes().createModule(name, xtype, moduleText(create, kindAt), alter || orAlter, isEncrypted(behindName),
                           parent ? &*parent : nullptr);
  });
  made(kind);
}

}  // namespace qrel::tsql
