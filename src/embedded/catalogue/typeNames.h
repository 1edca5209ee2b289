// Types as statements write them.
#pragma once

#include "embedded/language/lexer.h"
#include "embedded/types/types.h"

namespace qrel::tsql {

class Catalogue;

// Reads "decimal(18,2)", "[varchar](max)", "double precision", "dbo.Name" ... at the reader. Unknown names raise
// NotUnderstood. `catalogue` (may be null) knows the alias types.
TypeRef readType(TokenReader& reader, const Catalogue* catalogue);

}  // namespace qrel::tsql
