#include "embedded/language/refusal.h"

#include <utility>

namespace qrel::tsql {

void refuse(std::string text, std::int32_t number) { throw DataError(number, std::move(text), "42000"); }

}  // namespace qrel::tsql
