#include "db/mdlPermissions.h"

#include "app/trap.h"

namespace qrel {

SqlText permissionsQuery(bool blnIgnoreSysObjects) {
  SqlText strSql =
      "SELECT b.object_id, b.[type_desc], c.[name] AS schema_name, b.[name], a.[minor_id],"
      " CASE WHEN a.[minor_id] > 0 THEN"
      " (SELECT NAME"
      "    FROM sys.Columns"
      "    WHERE object_id = a.major_id"
      "    AND column_id = a.minor_id)"
      " ELSE ''"
      " END AS minor_name,"
      " a.[state_desc], a.[permission_name], b.[type] as object_type, *"
      " FROM sys.database_permissions a"
      " LEFT JOIN sys.objects b ON b.object_id = a.major_id"
      " INNER JOIN sys.schemas c ON b.schema_id = c.schema_id ";
  if (blnIgnoreSysObjects) strSql << "WHERE major_id > 0 ";
  return strSql << " ORDER BY b.[type_desc], schema_name, b.[name] ";
}

bool ConvertRecordsetToPermissionsArray(Program& program, RecordsetPtr& rs, std::vector<tPermission>& arr) {
  return trap(program, "mdlPermissions", "ConvertRecordsetToPermissionsArray", false, [&] {
    arr.clear();
    if (!hasRecords(rs)) return true;
    for (rs->MoveFirst(); !rs->Eof(); rs->MoveNext()) {
      tPermission row;
      row.Id = static_cast<std::int32_t>(arr.size() + 1);
      row.ObjectId = integerOf(rs->Fields("object_id").cell);
      row.TypeDesc = rs->Fields("type_desc").Text();
      row.SchemaName = rs->Fields("schema_name").Text();
      row.Name = rs->Fields("name").Text();
      row.MinorId = integerOf(rs->Fields("minor_id").cell);
      row.MinorName = rs->Fields("minor_name").Text();
      row.StateDesc = rs->Fields("state_desc").Text();
      row.PermissionName = rs->Fields("permission_name").Text();
      row.ObjectType = rs->Fields("object_type").Text();
      arr.push_back(std::move(row));
    }
    return true;
  });
}

std::string GetObjectShortName(const tPermission& permission) {
  if (permission.ObjectType == "IF") return "FUNCTION";
  if (permission.ObjectType == "U") return permission.MinorId > 0 ? "TABLE COLUMN" : "TABLE";
  if (permission.ObjectType == "V") return "VIEW";
  return permission.TypeDesc;
}

bool ConvertPermissionsArrayToTwoStrArray(Program& program, const std::vector<tPermission>& arr,
                                          std::vector<TwoStr>& arrList) {
  return trap(program, "mdlPermissions", "ConvertPermissionsArrayToTwoStrArray", false, [&] {
    arrList.clear();
    for (const tPermission& permission : arr) {
      TwoStr entry;
      entry.lngId = permission.Id;
      entry.strName = permission.PermissionName + " " + GetObjectShortName(permission) + " " + permission.Name;
      entry.strRefDate = permission.StateDesc;
      arrList.push_back(std::move(entry));
    }
    return true;
  });
}

std::string GetPermissionText(Program& program, int side, long lngId) {
  if (side != 0 && side != 1) {
    program.host.messageBox("GetPermissionText - wrong parameter passed.");
    return {};
  }
  if (lngId < 1) return {};
  const auto& rows = program.state<mdlPermissionsState>().arrPermissions[static_cast<std::size_t>(side)];
  if (static_cast<std::size_t>(lngId) > rows.size())
    throw RuntimeError(errorNumber::subscript, "Subscript out of range");
  const tPermission& row = rows[static_cast<std::size_t>(lngId - 1)];
  std::string text = row.PermissionName + "\r\n" + row.TypeDesc + " ";
  if (!row.SchemaName.empty()) text += row.SchemaName + ".";
  text += row.Name;
  if (row.MinorId > 0) text += "." + row.MinorName;
  return text + "\r\n" + row.StateDesc;
}

}  // namespace qrel
