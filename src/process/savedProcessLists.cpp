#include "process/savedProcessLists.h"

#include <cstdio>
#include <utility>

#include "app/Program.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/text.h"
#include "process/modSavedProcess.h"

namespace qrel {

namespace {

constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";

std::string encoded(const std::string& text) {
  std::string bytes = toCodePage(text);
  // A list that begins like the mark must not be taken for one.
  if (fromCodePage(bytes) != text || bytes.starts_with(utf8Mark)) bytes = std::string(utf8Mark) + text;
  return bytes;
}

std::string decoded(std::string_view bytes) {
  return bytes.starts_with(utf8Mark) ? std::string(bytes.substr(utf8Mark.size())) : fromCodePage(bytes);
}

// The text up to its next line end, which is taken off with it: CR LF, or one of the two alone.
std::string takeLine(std::string_view& rest) {
  const std::size_t end = rest.find_first_of("\r\n");
  std::string line(rest.substr(0, end));
  const std::size_t length = end == std::string_view::npos ? 0 : rest.substr(end).starts_with("\r\n") ? 2 : 1;
  rest.remove_prefix(line.size() + length);
  return line;
}

// What writers of this list left that were killed.
void removeLeftovers(const std::string& strPath) {
  for (const auto& each : files::temporaryFiles(strPath)) files::removeFile(each);
}

}  // namespace

std::string ProcessListPath(std::int32_t lngId, const std::string& strFolder, bool blnSource) {
  char digits[16];
  std::snprintf(digits, sizeof digits, "%03d", lngId);
  return strFolder + "qrel_" + digits + (blnSource ? "_src" : "_tgt") + ".txt";
}

void WriteProcessList(const std::vector<std::string>& arr, std::int32_t lngId, const std::string& strFolder,
                      std::int32_t lngCount, bool blnSource) {
  const std::string strPath = ProcessListPath(lngId, strFolder, blnSource);
  removeLeftovers(strPath);
  if (lngCount < 1) {
    files::removeFile(strPath);
    return;
  }
  std::string text;
  for (const std::string& name : arr) text += name + "\r\n";
  files::writeAtomically(strPath, encoded(text));
}

std::vector<std::string> ReadProcessList(std::int32_t lngId, const std::string& strFolder, bool blnSource) {
  const std::string strPath = ProcessListPath(lngId, strFolder, blnSource);
  std::vector<std::string> names;
  if (!files::exists(strPath)) return names;
  const std::string text = decoded(files::readWholeFile(strPath));
  for (std::string_view rest = text; !rest.empty();) names.push_back(takeLine(rest));
  return names;
}

void RemoveProcessLists(std::int32_t lngId, const std::string& strFolder) {
  for (const bool blnSource : {true, false}) {
    try {
      files::removeFile(ProcessListPath(lngId, strFolder, blnSource));
    } catch (const RuntimeError&) {
      // No process refers to it any more, and the next one of this id writes its own.
    }
  }
}

void TellProcessListError(Program& program, const std::string& strProcName, const std::exception& error) {
  const ErrorInfo info = describeError(error);
  program.host.messageBox(
      "Error in Sub " + strProcName + ", error nr " + std::to_string(info.number) + " (" + info.description + ").",
      Icon::Critical);
}

void ArraySaveToFile(Program& program, const std::vector<std::string>& arr, std::int32_t lngId,
                     const std::string& strFolder, std::int32_t lngCount, bool blnSource) {
  try {
    WriteProcessList(arr, lngId, strFolder, lngCount, blnSource);
  } catch (const std::exception& error) {
    TellProcessListError(program, "ArraySaveToFile", error);
  }
}

std::int32_t ArrayReadFromFile(Program& program, std::vector<std::string>& arr, std::int32_t lngId,
                               const std::string& strFolder, bool blnSource) {
  arr.clear();
  try {
    arr = ReadProcessList(lngId, strFolder, blnSource);
  } catch (const std::exception& error) {
    TellProcessListError(program, "ArrayReadFromFile", error);
  }
  return static_cast<std::int32_t>(arr.size());
}

}  // namespace qrel
