#include "compare/data/FindRecordByKey.h"

#include <algorithm>
#include <numeric>

#include "app/trap.h"
#include "compare/data/dataValues.h"
#include "compare/data/modCompareData.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::string_view nameCharacters = "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789_";

// A value that a search finds by itself as it does by its text.
bool speaksForItself(const Cell& cell, DataType columnType, bool several) {
  if (cell.null || cell.type != columnType) return false;
  switch (cell.type) {
    case DataType::Integer:
    case DataType::Boolean:
    case DataType::Guid:
      return true;
    case DataType::Text:
      // Several keys read 'Null' as Null.
      return !several || cell.text.find("Null") == std::string_view::npos;
    default:
      return false;
  }
}

}  // namespace

void RecordKeys::LookUp(const Recordset& rs1, const Recordset& rs2) {
  indexes1_ = {};
  for (std::size_t level = 0; level < 3; ++level) {
    if (level > 0 && !NamesKey(names1_[level])) break;
    indexes1_[level] = GetFieldIndexByName(rs1, names1_[level]);
  }
  levels_ = !NamesKey(names2_[1]) ? 1 : !NamesKey(names1_[2]) ? 2 : 3;

  std::vector<long> found;
  for (std::size_t level = 0; level < levels_; ++level) {
    const bool plain = !names2_[level].empty() && names2_[level].find_first_not_of(nameCharacters) == std::string::npos;
    const long column = plain ? rs2.FieldIndex(names2_[level]) : -1;
    // What can't be read as a condition, or names one column twice, is left to the search by text.
    if (column < 0 || std::find(found.begin(), found.end(), column) != found.end()) return;
    found.push_back(column);
  }
  levelOf_.resize(levels_);
  std::iota(levelOf_.begin(), levelOf_.end(), std::size_t{0});
  std::sort(levelOf_.begin(), levelOf_.end(), [&](std::size_t a, std::size_t b) { return found[a] < found[b]; });
  for (const std::size_t level : levelOf_) {
    columns2_.push_back(static_cast<std::size_t>(found[level]));
    types2_.push_back(rs2.TypeOf(columns2_.back()));
  }
  values_.resize(levels_);
}

bool RecordKeys::takeValues(Recordset& rs1) {
  if (columns2_.empty()) return false;
  for (std::size_t i = 0; i < levels_; ++i) {
    values_[i] = rs1.Fields(indexes1_[levelOf_[i]]).cell;
    if (!speaksForItself(values_[i], types2_[i], levels_ > 1)) return false;
  }
  return true;
}

std::string RecordKeys::criteria(Recordset& rs1) const {
  std::string text;
  for (std::size_t level = 0; level < levels_; ++level) {
    const std::string value = GetFieldValueOrNull(rs1.Fields(indexes1_[level]).cell);
    text += (level == 0 ? "" : " AND ") + names2_[level] + " = '" + DoubleSingleQuotes(value) + "'";
  }
  return text;
}

std::int32_t RecordKeys::FindRecordByKey(Program& program, Recordset& rs1, Recordset& rs2) {
  try {
    if (takeValues(rs1)) {
      rs2.FindValues(columns2_, values_);
    } else if (levels_ == 1) {
      rs2.Find(criteria(rs1));
    } else {
      bool blnError = false;
      Multi_Find(program, rs2, criteria(rs1), blnError);
      if (blnError) return findError;
    }
    return rs2.Eof() ? findNone : findMatch;
  } catch (const std::exception&) {
    return findError;
  }
}

bool Multi_Find(Program& program, Recordset& rs, const std::string& strCriteria, bool& blnError) {
  blnError = true;
  return trap(program, "modCompareData", "Multi_Find", false, [&] {
    Recordset rsClone = rs.Clone();
    bool blnFound = false;
    bool blnFiltered = true;
    try {
      rsClone.Filter(replaceAll(strCriteria, "'Null'", "NULL"));
    } catch (const std::exception&) {
      blnFiltered = false;
    }
    if (blnFiltered && (rsClone.Eof() || rsClone.Bof())) {
      rs.MoveLast();
      rs.MoveNext();
    } else if (blnFiltered) {
      rs.MoveToBookmark(rsClone.Bookmark());
      blnFound = true;
    }
    blnError = false;
    return blnFound;
  });
}

}  // namespace qrel
