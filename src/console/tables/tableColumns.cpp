#include "console/tables/tableColumns.h"

#include <algorithm>
#include <vector>

#include "db/mdlQueryCode.h"
#include "platform/text.h"

namespace qrel {

namespace {

constexpr std::size_t mostKeys = 3;

// The names of the columns that take part.
std::vector<std::string> columnsOf(Console& console, const tDataCompRequest& request, std::size_t side) {
  Program& program = console.program;
  tTableStructure table;
  if (!GetTableStructure(program, program.main.gtypSelServ[side],
                         {request.arrDbs[side], request.arrTables[side], request.arrObjIds[side], ignoredColsData},
                         table))
    throw CommandFailure{ExitCode::CannotRead, "The columns of table " + request.arrTables[side] + " can't be read."};
  std::vector<std::string> names;
  for (const tTableColumn& column : table.arrColumns) names.push_back(column.strName);
  return names;
}

}  // namespace

std::array<std::string, 3> columnNames(Console& console, const tDataCompRequest& request, std::size_t side,
                                       const std::string& list) {
  std::array<std::string, 3> names;
  if (list.empty()) return names;
  const std::vector<std::string> columns = columnsOf(console, request, side);
  const std::vector<std::string> words = splitAt(list, ',');
  if (words.size() > mostKeys) throw CommandFailure{ExitCode::Usage, "\"" + list + "\" names more than three columns."};
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string word(trimBlanks(words[i]));
    auto found = std::find(columns.begin(), columns.end(), word);
    if (found == columns.end())
      found = std::find_if(columns.begin(), columns.end(), [&](const auto& each) { return equalNoCase(each, word); });
    if (found == columns.end())
      throw CommandFailure{ExitCode::Usage,
                           "There is no column \"" + word + "\" to compare by in table " + request.arrTables[side] +
                               " of " + console.program.main.gtypSelServ[side].Name + "/" + request.arrDbs[side] + "."};
    names[i] = *found;
  }
  return names;
}

}  // namespace qrel
