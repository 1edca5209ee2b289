// The type that the server gives a computed column.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "embedded/catalogue/catalogue.h"

namespace qrel::tsql {

struct DerivedType {
  TypeRef type;
  bool nullable = true;
};

// Of an expression over a table's columns; nothing where it can't be told.
std::optional<DerivedType> derivedType(const Catalogue& catalogue, std::string_view text,
                                       const std::vector<ColumnDef>& columns);

}  // namespace qrel::tsql
