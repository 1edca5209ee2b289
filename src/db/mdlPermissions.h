// Permissions as objects of a list. The type stands ready and isn't offered.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "app/modArrays.h"
#include "db/mdlData.h"

namespace qrel {

struct tPermission {
  std::int32_t Id = 0;  // 1-based place in the array
  std::int32_t ObjectId = 0;
  std::string TypeDesc, SchemaName, Name;
  std::int32_t MinorId = 0;
  std::string MinorName, StateDesc, PermissionName, ObjectType;
};

// The rows of the last load, one array a side.
struct mdlPermissionsState {
  std::array<std::vector<tPermission>, 2> arrPermissions;
};

SqlText permissionsQuery(bool blnIgnoreSysObjects);
// True also for an empty or missing record set.
bool ConvertRecordsetToPermissionsArray(Program& program, RecordsetPtr& rs, std::vector<tPermission>& arr);
bool ConvertPermissionsArrayToTwoStrArray(Program& program, const std::vector<tPermission>& arr,
                                          std::vector<TwoStr>& arrList);
// The three lines of row lngId (1-based) of the side's array; empty below 1.
std::string GetPermissionText(Program& program, int side, long lngId);
// "TABLE", "TABLE COLUMN", "VIEW", "FUNCTION", otherwise the type's description.
std::string GetObjectShortName(const tPermission& permission);

}  // namespace qrel
