// Writing a text to a file that a person chooses, and the copy commands of the main window's panes.
#pragma once

#include <string>

namespace qrel {

class Program;
struct Workspace;

// Writes the trimmed text, without a line end of its own, to strTargetFile or, when that is empty, to the file chosen
// in a dialog that offers strBaseName + ".txt" in the data folder; a file that is there is replaced. False with an
// empty strPath for a text of blanks, a cancelled dialog, or an error (reported). True puts the file's path into
// strPath.
bool CopyToFile(Program& program, const std::string& strText, const std::string& strBaseName, std::string& strPath,
                const std::string& strTargetFile);

// The text of a side's pane (0 Source, 1 Target) to the clipboard, or to a file named after the selected object. Both
// need a selected object and say so.
void CopyObjectToClipboard(Program& program, Workspace& workspace, int side);
void CopyObjectToFile(Program& program, Workspace& workspace, int side);

}  // namespace qrel
