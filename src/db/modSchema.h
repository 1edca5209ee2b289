// Owners and schemas of objects, and the schema filter that each panel carries.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/Workspace.h"
#include "db/SqlText.h"

namespace qrel {

// Side 0 is Source, 1 is Target.
struct modSchemaState {
  std::array<bool, 2> gblnSchemaFilter{};
  std::array<std::string, 2> gstrSchemaFilter;  // comma-separated
  std::array<bool, 2> gblnOwnerFilter{};
  std::array<std::string, 2> gstrOwnerFilter;
};

void ClearFilters(Program& program, int side);

// The owner of an object, empty when it isn't found.
std::string GetOwner(Program& program, const tServer& server, const std::string& strDb, const std::string& strObjName,
                     long type);
// All owners, each followed by a comma; returns their number, -1 when the query failed.
long GetAllOwners(Program& program, const tServer& server, const std::string& strDb, long type, std::string& strList);
// All owners in order of name; returns their number, -1 when the query failed.
long GetAllOwnersIntoArray(Program& program, const tServer& server, const std::string& strDb,
                           std::vector<std::string>& arrOwners);
// Refills a panel's owner combo, only while ShowOwners is set.
void LoadOwners(Program& program, const tServer& server, const std::string& strDb, const ComboBox& comboType,
                ComboBox& comboOwners);

// All schemas that a user may have, in order of name; returns their number, -1 when the query failed.
long GetAllSchemas(Program& program, const tServer& server, const std::string& strDb,
                   std::vector<std::string>& arrSchemas);
// The schema of an object by name; empty when it isn't known. A trigger's is read from its source.
std::string GetSchemaForObject(Program& program, const tServer& server, const std::string& strDb,
                               const std::string& strObjName, long type);
// The schema (or owner) of an object by id. False for an id below 1 or when no query worked; server.VersionNum falls to
// 8 when the newer query can't be used.
bool Db_GetObjSchemaById(Program& program, tServer& server, long type, const std::string& strDb, long lngId,
                         std::string& strSchema);
// Whether cutting a listed name at its last point leaves another name than the object's own: the point is part of that,
// and no schema stands before it. lngId: of the object (of a constraint: its table's). Also when nobody can say.
bool PointIsPartOfName(Program& program, const tServer& server, const std::string& strDb, long type,
                       const std::string& strListed, long lngId);
// lngVersion -1: taken from the text. Among version 9 only three builds have the function.
bool Is_OBJECT_SCHEMA_NAME_Implemented(const std::string& strVersion, long lngVersion);

// After a query on a bare table name failed: whether the name with its schema, in strOut, is worth a second attempt.
bool SchemaPrefixNeeded(Program& program, tServer& server, const std::string& strTable, std::string& strOut,
                        const std::string& strDb, std::int32_t lngErrNumber);

// 'a','b' from a,b: a text that begins with a quote is taken to be a list already. Quotes inside aren't escaped.
std::string WrapStringIntoQuotes(const std::string& strText);

// A report's lines on the schema filters of both sides; empty when neither is active.
std::string BuildSchemaFilteringString(Program& program);

// The join and the condition that narrow an object list to the side's chosen schemas. False: no filter applies.
bool GetSchemaFilter(Program& program, long type, int side, SqlText& strJoin, SqlText& strWhere);

}  // namespace qrel
