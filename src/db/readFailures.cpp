#include "db/readFailures.h"

#include <utility>

namespace qrel {

void NoteReadFailure(Program& program, const std::string& strServer, const std::string& strDb,
                     const std::string& strDescription) {
  auto& state = program.state<ReadFailuresState>();
  if (state.asked > 0) return;
  state.arrFailures.push_back({strServer, strDb, state.strObject, strDescription});
}

ReadingScope::ReadingScope(Program& program, std::string strObject)
    : state_(program.state<ReadFailuresState>()), before_(std::exchange(state_.strObject, std::move(strObject))) {}

}  // namespace qrel
