// Types as statements write them.
#pragma once

#include "platform/data/embedded/lexer.h"
#include "platform/data/embedded/types.h"

namespace qrel::tsql {

class Catalogue;

// Reads "decimal(18,2)", "[varchar](max)", "double precision", "dbo.Name" ... at the reader. Unknown names raise
// NotUnderstood. `catalogue` (may be null) knows the alias types.
TypeRef readType(TokenReader& reader, const Catalogue* catalogue);

}  // namespace qrel::tsql
