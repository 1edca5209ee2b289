// Arrays of catalogue entries and of texts, from 0. Counts and indices are 32 bits; the sorts' are 16 bits. A procedure
// that takes the host traps its errors and shows them in a box titled with its name.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace qrel {

class Host;
class Recordset;

// One entry of a catalogue list.
struct TwoStr {
  std::string strName;
  std::string strRefDate;  // the query's second column, whatever that is
  std::int32_t lngId = 0;
  std::int32_t lngType = 0;  // sort key of ShellSortArray_TwoStr_ByLongEl
  std::string strSchema;     // only where the name occurs twice
};

// The first field of every record of rs, which is walked from its first record and stays open. A closed or empty
// record set gives True and a count of 0; a Null among the fields is error 94 and gives False.
bool ConvertRecordsetToStrArray(Host& host, Recordset& rs, std::vector<std::string>& arrStrings, long& lngCount);

// The same for name, second text and id, the first three fields; lngType is stored when it isn't 0. Rows of permissions
// (90) have no id: it is 0.
bool ConvertRecordsetToTwoStrArray(Host& host, Recordset& rs, std::vector<TwoStr>& arrItems, long& lngCount,
                                   std::int32_t lngType);

// Puts neighbours of one name, case not counting, into the order of their ids. Expects an array that is sorted by name.
void OrderNamesakesById(std::vector<TwoStr>& arrItems);

// Whether two neighbours have the same name. Expects a sorted array.
bool AreDuplicatesInArr_TwoStr(const std::vector<TwoStr>& arrItems, long lngCount);

// The first index of the name, -1 when it isn't there.
long GetElIndexInArr_TwoStr(const std::vector<TwoStr>& arrItems, long lngCount, std::string_view strName);

// Appends the first lngCountB entries of B to the first lngCountA of A. With lngCountB below 1 nothing happens.
void ConcatenateArrays_TwoStr(std::vector<TwoStr>& arrA, const std::vector<TwoStr>& arrB, long lngCountA,
                              long lngCountB);

// Two passes per gap and no more: entries whose keys are far apart may end not fully ordered, and that order is shown.
void ShellSortArray_TwoStr_ByLongEl(Host& host, std::vector<TwoStr>& arrItems, bool blnDescending);

// Sorts elements intFirst to intLast by their binary order. The sum of two indices must fit 16 bits: beyond some 16,000
// elements parts of the array stay unsorted and error 6 is shown for each.
void QuickSortStringArray(Host& host, std::vector<std::string>& arrStrings, long intFirst, long intLast);

}  // namespace qrel
