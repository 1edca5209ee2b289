#include "app/modArrays.h"

#include <algorithm>

#include "app/shellSort.h"
#include "app/trap.h"
#include "platform/data/recordset.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::int32_t permissionRows = 90;  // the object type whose third field is no number

std::string textOfField(Recordset& rs, std::size_t index) {
  const Field field = rs.Fields(index);
  if (field.IsNull()) throw RuntimeError(errorNumber::invalidUseOfNull, "Invalid use of Null");
  return field.Text();
}

// Calls `take` for each record, from the first on. True when all went well.
template <class Take>
bool forEachRecord(Host& host, const char* strProcName, Recordset& rs, Take&& take) {
  return trapWithBox(host, strProcName, false, [&] {
    if (rs.State() == adStateClosed || (rs.Bof() && rs.Eof())) return true;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) take();
    return true;
  });
}

// The part of the array that its count says is used.
std::size_t used(const std::vector<TwoStr>& arrItems, long lngCount) {
  return std::min(arrItems.size(), static_cast<std::size_t>(std::max(lngCount, 0L)));
}

}  // namespace

bool ConvertRecordsetToStrArray(Host& host, Recordset& rs, std::vector<std::string>& arrStrings, long& lngCount) {
  arrStrings.clear();
  const bool done =
      forEachRecord(host, "ConvertRecordsetToStrArray", rs, [&] { arrStrings.push_back(textOfField(rs, 0)); });
  lngCount = static_cast<long>(arrStrings.size());
  return done;
}

bool ConvertRecordsetToTwoStrArray(Host& host, Recordset& rs, std::vector<TwoStr>& arrItems, long& lngCount,
                                   std::int32_t lngType) {
  arrItems.clear();
  const bool done = forEachRecord(host, "ConvertRecordsetToTwoStrArray", rs, [&] {
    TwoStr item;
    item.strName = textOfField(rs, 0);
    item.strRefDate = textOfField(rs, 1);
    item.lngId = lngType == permissionRows ? 0 : integerOf(rs.Fields(2).cell);
    if (lngType != 0) item.lngType = lngType;
    arrItems.push_back(std::move(item));
  });
  lngCount = static_cast<long>(arrItems.size());
  return done;
}

void OrderNamesakesById(std::vector<TwoStr>& arrItems) {
  for (auto first = arrItems.begin(); first != arrItems.end();) {
    const auto last = std::find_if(first + 1, arrItems.end(),
                                   [&](const TwoStr& item) { return !equalNoCase(item.strName, first->strName); });
    std::stable_sort(first, last, [](const TwoStr& a, const TwoStr& b) { return a.lngId < b.lngId; });
    first = last;
  }
}

bool AreDuplicatesInArr_TwoStr(const std::vector<TwoStr>& arrItems, long lngCount) {
  for (std::size_t i = 1; i < used(arrItems, lngCount); ++i) {
    if (arrItems[i - 1].strName == arrItems[i].strName) return true;
  }
  return false;
}

long GetElIndexInArr_TwoStr(const std::vector<TwoStr>& arrItems, long lngCount, std::string_view strName) {
  for (std::size_t i = 0; i < used(arrItems, lngCount); ++i) {
    if (arrItems[i].strName == strName) return static_cast<long>(i);
  }
  return -1;
}

void ConcatenateArrays_TwoStr(std::vector<TwoStr>& arrA, const std::vector<TwoStr>& arrB, long lngCountA,
                              long lngCountB) {
  if (lngCountB < 1) return;
  const std::vector<TwoStr> tail(arrB.begin(), arrB.begin() + static_cast<std::ptrdiff_t>(used(arrB, lngCountB)));
  arrA.resize(used(arrA, lngCountA));
  arrA.insert(arrA.end(), tail.begin(), tail.end());
}

void ShellSortArray_TwoStr_ByLongEl(Host& host, std::vector<TwoStr>& arrItems, bool blnDescending) {
  trapWithBox(host, "ShellSortArray_TwoStr_ByLongEl", 0, [&] {
    ShellSort(arrItems, blnDescending, [](const TwoStr& item) { return item.lngType; });
    return 0;
  });
}

void QuickSortStringArray(Host& host, std::vector<std::string>& arrStrings, long intFirst, long intLast) {
  trapWithBox(host, "QuickSortStringArray", 0, [&] {
    if (intLast <= intFirst) return 0;
    const auto at = [&](long index) -> std::string& { return arrStrings[static_cast<std::size_t>(index)]; };
    const std::string pivot = at(toInt16(toInt16(intFirst) + toInt16(intLast)) / 2);
    long i = intFirst;
    long j = intLast;
    while (i <= j) {
      const int left = compareBinary(at(i), pivot);
      const int right = compareBinary(at(j), pivot);
      if (left >= 0 && right <= 0) {
        std::swap(at(i++), at(j--));
      } else {
        if (left < 0) ++i;
        if (right > 0) --j;
      }
    }
    QuickSortStringArray(host, arrStrings, intFirst, j);
    QuickSortStringArray(host, arrStrings, i, intLast);
    return 0;
  });
}

}  // namespace qrel
