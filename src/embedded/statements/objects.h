// CREATE SCHEMA, TYPE, SEQUENCE and SYNONYM.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// With the reader behind these words.
void createSchema(StatementRun& run);
void transferToSchema(StatementRun& run);  // ALTER SCHEMA
void createType(StatementRun& run);
void createSequence(StatementRun& run);
void alterSequence(StatementRun& run);
void createSynonym(StatementRun& run);

}  // namespace qrel::tsql
