// The line-by-line list of differences in the details of a report.
#pragma once

#include <string>
#include <string_view>

namespace qrel {

class Program;

// Appends one object's entry to the details. lngOrdinal counts the entries from 1; number 1 replaces the details by
// their heading first. strTypeName is the plural, strName the bare object name.
void AddDifferencesToDetails(const Program& program, std::string& strDetails, const std::string& strTypeName,
                             const std::string& strName, long lngOrdinal, const std::string& strSourceText,
                             const std::string& strTargetText);

// The lines that differ, line 5 of the one against line 5 of the other: no alignment. Empty for equal texts. Case and
// white space count as the settings CaseSensitive and IgnoreWhitespace say; a last comma never counts. From line 2 on a
// line begins with the LF of the line end before it and is printed so.
void GetLineDifferences(const Program& program, std::string_view strSourceText, std::string_view strTargetText,
                        std::string& strResult);

// Whether the two are equal but for one comma at the end and blanks around what precedes it.
bool LinesDifferOnlyByComma(std::string_view strA, std::string_view strB);

}  // namespace qrel
