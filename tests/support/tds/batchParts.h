// A batch that gives several results, as texts that give one each.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace qrel::tds {

// The embedded server gives the first result of a batch. So a batch whose results come from SELECTs at its top level is
// run once for each of them, with the others blanked: variables and USE work in each text as they do in the batch,
// since nothing in it changes a database. A batch with anything else but DECLARE, SET, USE and PRINT beside the SELECTs
// stays whole.
std::vector<std::string> batchParts(std::string_view batch);

// Whether the batch may lead to another database.
bool mayUse(std::string_view batch);

}  // namespace qrel::tds
