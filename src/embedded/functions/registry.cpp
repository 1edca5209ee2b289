#include "embedded/functions/registry.h"

#include <unordered_map>

namespace qrel::tsql {

std::array<std::span<const Function>, 4> allFunctions() {
  return {textFunctions(), numberFunctions(), dateFunctions(), catalogueFunctions()};
}

const Function* findFunction(std::string_view lowerName) {
  static const auto byName = [] {
    std::unordered_map<std::string_view, const Function*> names;
    for (const auto& table : allFunctions())
      for (const Function& each : table)
        if (!each.is(Function::Inside)) names.emplace(each.name, &each);
    return names;
  }();
  const auto found = byName.find(lowerName);
  return found == byName.end() ? nullptr : found->second;
}

}  // namespace qrel::tsql
