// Moving one panel from the command line, with the steps that a person's clicks take.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "app/Workspace.h"
#include "console/console.h"

namespace qrel {

// Gives the panel its server and database. Throws CommandFailure when the database can't be read; the reason has been
// told by then.
void openPanel(Console& console, Workspace& workspace, const Side& side, int index);
// Narrows the panel to schemas, "a,b"; an empty list changes nothing. Throws CommandFailure for a schema that the
// database doesn't have and on a server that is too old for schemas.
void filterSchemas(Console& console, const Side& side, int index, const std::string& schemas);
// Chooses the object type and lists its objects. False when the list couldn't be read, or not to its end.
bool listObjects(Console& console, Workspace& workspace, const Side& side, int index, long type);
// The same for a command that has nothing to do without the list: throws CommandFailure.
void requireObjects(Console& console, Workspace& workspace, const Side& side, int index, long type);
// The rows of that name as listed; failing that of one without regard to case, failing that without its schema, each
// also with brackets; failing that with the schema that its object has, listed or not. `index` is the panel's, 0 or 1.
std::vector<std::size_t> rowsNamed(Console& console, const Side& side, int index, const CheckList& list, long type,
                                   const std::string& name);
// The listed names of the objects of these types that are meant, of each side. Throws CommandFailure for a name that
// neither has and when a list can't be read.
std::array<std::vector<std::string>, 2> chosenNames(Console& console, Workspace& workspace,
                                                    const std::array<const Side*, 2>& sides,
                                                    const std::vector<long>& types,
                                                    const std::vector<std::string>& names);
// Selects an object by its name as rowsNamed finds it. Throws CommandFailure when there is none or several.
void selectObject(Console& console, Workspace& workspace, const Side& side, int index, const std::string& name);
// Puts the selected object's text into the pane. Throws CommandFailure when a read for it failed; False, after telling
// so, when it is empty all the same.
bool showSelected(Console& console, Workspace& workspace, const Side& side, int index);

}  // namespace qrel
