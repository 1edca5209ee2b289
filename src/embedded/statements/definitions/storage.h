// Where rows lie, and what is looked up beside them: partitions, filegroups, statistics, full-text catalogues and
// indexes.
#pragma once

#include "embedded/run/statementRun.h"

namespace qrel::tsql {

// Each from its own word on: PARTITION FUNCTION | SCHEME, STATISTICS, FULLTEXT CATALOG | INDEX.
void createPartition(StatementRun& run);
void alterPartition(StatementRun& run);
void createStatistics(StatementRun& run);
void createFullText(StatementRun& run);
void alterFullText(StatementRun& run);
// Behind the word that DROP has read.
void dropPartition(StatementRun& run);
void dropStatistics(StatementRun& run);
void dropFullText(StatementRun& run);
// ALTER DATABASE, which is kept for its filegroups alone.
void alterDatabase(StatementRun& run);

}  // namespace qrel::tsql
