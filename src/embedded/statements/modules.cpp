#include "embedded/statements/modules.h"

#include <array>

#include "embedded/catalogue/typeNames.h"
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

// The flags that a module's options set, by their words.
struct ModuleFlag {
  std::string_view word, property;
};
constexpr std::array moduleFlags = std::to_array<ModuleFlag>({
    {"RECOMPILE", "is_recompiled"},
    {"SCHEMABINDING", "is_schema_bound"},
    {"VIEW_METADATA", "has_view_metadata"},
    {"NATIVE_COMPILATION", "uses_native_compilation"},
    {"RETURNS", "null_on_null_input"},
});

// The options behind WITH, in front of AS: the token behind WITH; the end where there are none.
std::size_t moduleOptionsAt(const std::vector<Token>& tokens, std::size_t from) {
  static constexpr std::array<std::string_view, 9> options{"ENCRYPTION", "RECOMPILE",     "SCHEMABINDING",
                                                           "EXECUTE",    "VIEW_METADATA", "RETURNS",
                                                           "EXEC",       "CALLED",        "NATIVE_COMPILATION"};
  int brackets = 0;
  for (std::size_t i = from; i + 1 < tokens.size(); ++i) {
    if (tokens[i].isSymbol("(")) ++brackets;
    if (tokens[i].isSymbol(")")) --brackets;
    if (tokens[i].is("BEGIN") || tokens[i].is("SELECT")) break;  // the body has begun
    if (brackets != 0 || !tokens[i].is("WITH")) continue;
    for (const std::string_view option : options)
      if (tokens[i + 1].is(option)) return i + 1;
  }
  return tokens.size();
}

// Sets all that the options can set.
void readModuleOptions(const std::vector<Token>& tokens, std::size_t from, ModuleDef& module) {
  const std::size_t first = module.properties.size();
  for (const ModuleFlag& flag : moduleFlags) module.properties.push_back({std::string(flag.property), ""});
  module.properties.push_back({"execute_as", ""});
  Property& executeAs = module.properties.back();
  for (std::size_t at = moduleOptionsAt(tokens, from); at < tokens.size(); ++at) {
    const Token& token = tokens[at];
    if (token.kind != TokenKind::Word && token.kind != TokenKind::String && !token.isSymbol(",")) return;
    if (token.is("AS") && !tokens[at - 1].is("EXECUTE") && !tokens[at - 1].is("EXEC")) return;
    if (token.is("ENCRYPTION")) module.encrypted = true;
    if (token.is("AS") && !tokens[at + 1].is("CALLER")) executeAs.value = tokens[at + 1].name();
    if (token.is("AS")) ++at;
    for (std::size_t i = 0; i < moduleFlags.size(); ++i)
      if (token.is(moduleFlags[i].word)) module.properties[first + i].value = "1";
  }
}

// FOR | AFTER | INSTEAD OF event, ... [NOT FOR REPLICATION]
void readTriggerEvents(const std::vector<Token>& tokens, std::size_t from, ModuleDef& module) {
  Property insteadOf{"is_instead_of_trigger", ""};
  Property replication{"is_not_for_replication", ""};
  std::array<Property, 3> events{Property{"on_insert", ""}, {"on_update", ""}, {"on_delete", ""}};
  bool within = false;
  for (std::size_t at = from; at < tokens.size() && !(within && tokens[at].is("AS")); ++at) {
    const Token& token = tokens[at];
    if (token.is("INSTEAD")) insteadOf.value = "1";
    if (token.is("FOR") || token.is("AFTER") || token.is("INSTEAD")) within = true;
    if (!within) continue;
    if (token.is("INSERT")) events[0].value = "1";
    if (token.is("UPDATE")) events[1].value = "1";
    if (token.is("DELETE")) events[2].value = "1";
    if (token.is("REPLICATION")) replication.value = "1";
  }
  // A trigger that is altered loses its place among the others.
  for (const Property& each : events)
    for (const char* place : {"first_", "last_"}) module.properties.push_back({place + each.name, ""});
  for (Property& each : events) module.properties.push_back(std::move(each));
  module.properties.push_back(std::move(insteadOf));
  module.properties.push_back(std::move(replication));
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

// FOR REPLICATION in front of a procedure's body; 0 where it doesn't stand.
std::size_t replicationAt(const std::vector<Token>& tokens, std::size_t from) {
  for (std::size_t i = from; i + 1 < tokens.size(); ++i) {
    if (tokens[i].is("AS") && tokens[i - 1].kind != TokenKind::Variable && !tokens[i - 1].is("EXECUTE") &&
        !tokens[i - 1].is("EXEC"))
      return 0;
    if (tokens[i].is("FOR") && tokens[i + 1].is("REPLICATION")) return i;
  }
  return 0;
}

bool endsWithCheckOption(const BatchText& batch) {
  std::size_t last = batch.end();
  while (last > 0 && batch.tokens[last - 1].isSymbol(";")) --last;
  return last > 3 && batch.tokens[last - 3].is("WITH") && batch.tokens[last - 2].is("CHECK") &&
         batch.tokens[last - 1].is("OPTION");
}

// A type as parameters have it: also a table's.
TypeRef parameterType(const Catalogue& catalogue, TokenReader& reader) {
  const std::size_t begin = reader.position();
  const ObjectName name = readObjectName(reader);
  if (const auto table = catalogue.tableType(name.schema, name.name)) {
    TypeRef type;
    type.name = name.name;
    type.xtype = xtype::Table;
    type.xusertype = table->xusertype;
    type.length = -1;
    return type;
  }
  reader.moveTo(begin);
  return readType(reader, &catalogue);
}

// "@a int = 1 OUTPUT, @b dbo.List READONLY", with brackets around for functions.
void readParameterList(const Catalogue& catalogue, TokenReader& reader, ModuleDef& module) {
  do {
    if (reader.peek().kind != TokenKind::Variable) return;
    ParameterDef parameter;
    parameter.name = std::string(reader.next().raw);
    reader.acceptWord("AS");
    parameter.type = parameterType(catalogue, reader);
    reader.acceptWord("VARYING");
    if (reader.peek().is("NOT") || reader.peek().is("NULL")) {  // of native modules
      reader.acceptWord("NOT");
      reader.next();
    }
    if (reader.acceptSymbol("=")) {
      if (!reader.acceptSymbol("-")) reader.acceptSymbol("+");
      reader.next();
    }
    for (;;) {
      if (reader.acceptWord("OUTPUT") || reader.acceptWord("OUT")) {
        parameter.output = true;
      } else if (reader.acceptWord("READONLY")) {
        parameter.readonly = true;
      } else {
        break;
      }
    }
    module.parameters.push_back(std::move(parameter));
  } while (reader.acceptSymbol(","));
}

// Parameters of procedures and functions, and what a function gives back. A type that isn't known is told: the module
// is kept all the same.
void readParameters(StatementRun& run, std::size_t from, ModuleDef& module) {
  if (module.xtype == "V" || module.xtype == "TR") return;
  TokenReader reader(run.text.reader.source(), run.text.tokens);
  reader.moveTo(from);
  try {
    if (module.xtype == "P") {
      if (reader.acceptSymbol(";")) reader.next();  // one of a group
      reader.acceptSymbol("(");
      return readParameterList(run.catalogue(), reader, module);
    }
    reader.expectSymbol("(");
    readParameterList(run.catalogue(), reader, module);
    reader.expectSymbol(")");
    if (module.xtype != "FN") return;
    reader.expectWord("RETURNS");
    ParameterDef result;
    result.type = parameterType(run.catalogue(), reader);
    result.output = true;
    module.parameters.push_back(std::move(result));
  } catch (const NotUnderstood& unknown) {
    module.parameters.clear();
    run.notKept("its parameters aren't kept: " + unknown.reason, reader.position());
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
  const ObjectName name = run.keptName(readObjectName(reader));
  const std::size_t behindName = reader.position();
  ModuleDef module;
  module.name = name;
  module.xtype = kind == "procedure" ? "P" : kind == "view" ? "V" : "TR";
  if (kind == "function") module.xtype = functionKind(run.text.tokens, behindName);
  if (kind == "trigger") {
    reader.expectWord("ON");
    if (reader.peek().is("DATABASE") || reader.peek().is("ALL"))
      run.notUnderstood("triggers on databases and servers aren't kept");
    module.parent = run.keptName(readObjectName(reader));
    readTriggerEvents(run.text.tokens, reader.position(), module);
  }
  checkModuleBody(run.text, kind, behindName);
  reader.moveTo(run.text.end());
  if (!run.act()) return;
  if (alter && !run.catalogue().find(name.schema, name.name)) {
    throw DataError(errorNumber::invalidObjectName,
                    "Invalid object name '" + (name.schema.empty() ? "" : name.schema + ".") + name.name + "'.",
                    "42S02");
  }
  module.text = moduleText(run.text, create, kindAt);
  readParameters(run, behindName, module);
  if (const std::size_t at = replicationAt(run.text.tokens, behindName); kind == "procedure" && at != 0)
    run.notKept("FOR REPLICATION of a procedure isn't kept", at);
  if (kind == "view") module.properties.push_back({"with_check_option", endsWithCheckOption(run.text) ? "1" : ""});
  readModuleOptions(run.text.tokens, behindName, module);
  module.properties.push_back({"quoted_identifier_off", run.session.settings.quotedIdentifier ? "" : "1"});
  module.properties.push_back({"ansi_nulls_off", run.session.settings.ansiNulls ? "" : "1"});
  run.atomically([&] { run.changes().createModule(module, alter || orAlter); });
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
