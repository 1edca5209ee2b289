// The search for the Target record that has a Source record's key.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "app/Program.h"
#include "platform/data/recordset.h"

namespace qrel {

enum FindResult : std::int32_t { findError = -1, findNone = 0, findMatch = 1 };

// The key columns of both sides as chosen, noField or empty where there is none, and where they stand in the records.
class RecordKeys {
 public:
  RecordKeys(const std::array<std::string, 3>& arrNames1, const std::array<std::string, 3>& arrNames2)
      : names1_(arrNames1), names2_(arrNames2) {}

  // Looks the columns up, once both record sets are there. A name that isn't found means the first field.
  void LookUp(const Recordset& rs1, const Recordset& rs2);

  // Moves rs2 from its first record, on which it must stand, to the first that has the key of rs1's current one.
  // Silent, but for the report of an error in Multi_Find.
  std::int32_t FindRecordByKey(Program& program, Recordset& rs1, Recordset& rs2);

 private:
  bool takeValues(Recordset& rs1);
  std::string criteria(Recordset& rs1) const;

  const std::array<std::string, 3>& names1_;
  const std::array<std::string, 3>& names2_;
  std::array<std::size_t, 3> indexes1_{};
  std::size_t levels_ = 1;  // how many keys the search takes

  // For searches that need no text: the Target's columns in ascending order, their types and the key level of each.
  std::vector<std::size_t> columns2_;
  std::vector<DataType> types2_;
  std::vector<std::size_t> levelOf_;
  std::vector<Cell> values_;
};

// Moves rs to the first record that meets several conditions. A text that can't be a filter leaves rs where it stood,
// without an error. blnError: reported; what rs stands on is open.
bool Multi_Find(Program& program, Recordset& rs, const std::string& strCriteria, bool& blnError);

}  // namespace qrel
