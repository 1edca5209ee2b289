// An expression's tree as the server writes it into its catalogue.
#pragma once

#include <string>

#include "embedded/translate/expressionTree.h"

namespace qrel::tsql {

// In one pair of brackets. `filter`: of an index, which keeps IN as it is.
std::string storedTree(const ExpressionNode& node, bool filter);

}  // namespace qrel::tsql
