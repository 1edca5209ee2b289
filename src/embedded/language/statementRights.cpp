#include "embedded/language/statementRights.h"

#include <algorithm>
#include <array>

#include "embedded/language/words.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

namespace {

constexpr const char* readsOnly = ": a connection for queries reads and changes nothing.";

constexpr std::array readingProcedures =
    std::to_array<std::string_view>({"sp_executesql", "sp_help", "sp_helptext", "sp_spaceused", "sp_lock"});
constexpr std::array attachingProcedures =
    std::to_array<std::string_view>({"sp_attach_db", "sp_attach_single_file_db"});

template <typename List>
bool contains(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

}  // namespace

void requireStatement(Rights rights, const TokenReader& reader, const std::string& database) {
  const Token& first = reader.peek();
  if (rights == Rights::Write || first.kind != TokenKind::Word) return;
  const std::string word = upperCase(first.raw);
  const Token& second = reader.peek(1);
  const bool reads = std::any_of(statementWords.begin(), statementWords.end(),
                                 [&](const StatementWord& each) { return each.reads && first.is(each.word); });
  if (reads && !(word == "SET" && second.is("IDENTITY_INSERT"))) return;
  const bool ofKind = word == "CREATE" || word == "ALTER" || word == "DROP" || word == "BACKUP" || word == "SET";
  refuseAction(ofKind && second.kind == TokenKind::Word ? word + " " + upperCase(second.raw) : word, database);
}

void requireProcedure(Rights rights, const std::string& procedure, const std::string& database) {
  if (rights == Rights::Write || contains(readingProcedures, procedure)) return;
  if (rights == Rights::Attach && isAttachingProcedure(procedure)) return;
  // Any other isn't there, or what it runs is looked at statement by statement.
  const bool ofTheSystem = procedure.starts_with("sp_") || procedure.starts_with("xp_");
  if (!ofTheSystem) return;
  throw DataError(
      permissionDenied,
      "The EXECUTE permission was denied on the object '" + procedure + "', database '" + database + "'" + readsOnly,
      "42000");
}

bool isAttachingProcedure(std::string_view procedure) { return contains(attachingProcedures, procedure); }

void refuseAction(const std::string& action, const std::string& database) {
  throw DataError(permissionDenied, action + " permission denied in database '" + database + "'" + readsOnly, "42000");
}

}  // namespace qrel::tsql
