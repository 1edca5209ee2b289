// The words of T-SQL that tell where something begins or ends.
#pragma once

#include <array>
#include <string_view>

#include "embedded/language/lexer.h"

namespace qrel::tsql {

// A word that a statement begins with.
struct StatementWord {
  std::string_view word;
  // It begins one wherever it stands; otherwise it may as well continue one, or be a name.
  bool anywhere = true;
  // The statement changes no database.
  bool reads = false;
  // It steers other statements and is read where those are run; all others have a row in statements/statementTable.
  bool steers = false;
};

// Every one there is. Among those that change nothing are some that are refused anyway: the refusal says more.
inline constexpr std::array statementWords = std::to_array<StatementWord>({
    {.word = "SELECT", .reads = true},
    {.word = "INSERT"},
    {.word = "UPDATE"},
    {.word = "DELETE"},
    {.word = "CREATE"},
    {.word = "ALTER"},
    {.word = "DROP"},
    {.word = "EXEC", .reads = true},
    {.word = "EXECUTE", .reads = true},
    {.word = "IF", .reads = true, .steers = true},
    {.word = "WHILE", .reads = true, .steers = true},
    {.word = "BEGIN", .reads = true},
    {.word = "END", .reads = true},
    {.word = "ELSE", .reads = true, .steers = true},
    {.word = "DECLARE", .reads = true},
    {.word = "SET", .reads = true},
    {.word = "PRINT", .reads = true},
    {.word = "RAISERROR", .reads = true},
    {.word = "THROW", .reads = true},
    {.word = "RETURN", .reads = true},
    {.word = "GOTO", .reads = true, .steers = true},
    {.word = "USE", .reads = true},
    {.word = "GRANT"},
    {.word = "DENY"},
    {.word = "REVOKE"},
    {.word = "MERGE"},
    {.word = "TRUNCATE"},
    {.word = "COMMIT", .reads = true},
    {.word = "ROLLBACK", .reads = true},
    {.word = "SAVE", .reads = true},
    {.word = "BULK"},
    {.word = "CHECKPOINT"},
    {.word = "BACKUP"},
    {.word = "RESTORE"},
    {.word = "DBCC"},
    {.word = "KILL"},
    {.word = "WAITFOR", .reads = true},
    {.word = "BREAK", .reads = true},
    {.word = "CONTINUE", .reads = true},
    {.word = "OPEN", .reads = true},
    {.word = "CLOSE", .reads = true},
    {.word = "DEALLOCATE", .reads = true},
    {.word = "RECONFIGURE"},
    {.word = "FETCH", .reads = true},
    {.word = "REVERT"},
    {.word = "SHUTDOWN"},
    {.word = "WITH", .anywhere = false, .reads = true},
    {.word = "ENABLE", .anywhere = false},
    {.word = "DISABLE", .anywhere = false},
});

// Whether a token begins a statement wherever it stands. END and ELSE are among them, since a statement ends there too;
// the END of a CASE has to be told apart by the caller.
bool startsStatement(const Token& token);

// PROC, PROCEDURE, VIEW, FUNCTION, TRIGGER: what CREATE or ALTER makes of the rest of its batch.
bool isModuleWord(const Token& token);

// Whether BEGIN opens a block, told by the token behind it: not BEGIN TRAN and BEGIN DIALOG.
bool opensBlock(const Token& begin, const Token& behind);

}  // namespace qrel::tsql
