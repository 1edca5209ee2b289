// The words of T-SQL that tell where something begins or ends.
#pragma once

#include "embedded/language/lexer.h"

namespace qrel::tsql {

// Whether a token begins a statement wherever it stands: SELECT, CREATE, IF, ... END and ELSE are among them, since a
// statement ends there too; the END of a CASE has to be told apart by the caller. Words that may as well continue one
// (WITH, ON) are not.
bool startsStatement(const Token& token);

// PROC, PROCEDURE, VIEW, FUNCTION, TRIGGER: what CREATE or ALTER makes of the rest of its batch.
bool isModuleWord(const Token& token);

// Whether BEGIN opens a block, told by the token behind it: not BEGIN TRAN and BEGIN DIALOG.
bool opensBlock(const Token& begin, const Token& behind);

}  // namespace qrel::tsql
