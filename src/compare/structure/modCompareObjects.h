// What two objects may differ in and still be the same: the header of a view, the owner of a procedure.
#pragma once

#include <string>

namespace qrel {

class Program;
class TextPane;

// Gives Target's CREATE VIEW header the form of Source's, so that quoting, owner and line breaks before AS no longer
// count. Acts only where both first 500 characters hold a header, the two end within 20 characters of one another and
// name the same view; the leading blanks of both texts are then gone too. Otherwise both stay as they are.
void AdjustCreateViewStatements(Program& program, std::string& strSource, std::string& strTarget);

// Whether two procedures have the same lines, an owner "dbo." on the line with CREATE PROCEDURE not counting. Lines are
// compared one by one under the settings IgnoreComments, CaseSensitive and IgnoreWhitespace. A pane that can't be cut
// into lines is told in a box and gives False, as does an error (reported) on the way.
bool CompareProcs_IgnoreOwnerInName(Program& program, const TextPane& paneSource, const TextPane& paneTarget);

}  // namespace qrel
