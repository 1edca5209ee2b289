// The two text files beside the processes' file that hold the names of the objects of a selective comparison, a name
// per line in the order of selection. Names that the 8-bit code page has are written in it, as all of the processes'
// file is; a list with any other name is UTF-8 behind a byte order mark, so that every name comes back as it was. Only
// a name with a line break comes back in pieces.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <vector>

namespace qrel {

class Program;

// "qrel_007_src.txt" or "qrel_007_tgt.txt" in the folder, which ends in a separator.
std::string ProcessListPath(std::int32_t lngId, const std::string& strFolder, bool blnSource);

// Writes the list's file whole, or removes it for a count below 1, and removes what killed writers of it left: one
// writer at a time. Raises RuntimeError.
void WriteProcessList(const std::vector<std::string>& arr, std::int32_t lngId, const std::string& strFolder,
                      std::int32_t lngCount, bool blnSource);
// Empty when there is no file; one that can't be read raises RuntimeError.
std::vector<std::string> ReadProcessList(std::int32_t lngId, const std::string& strFolder, bool blnSource);

// Removes both files; none there is no error, and what can't be removed stays.
void RemoveProcessLists(std::int32_t lngId, const std::string& strFolder);

// The box for an error of ArraySaveToFile or ArrayReadFromFile.
void TellProcessListError(Program& program, const std::string& strProcName, const std::exception& error);

}  // namespace qrel
