#include "embedded/run/sessionState.h"

#include <utility>

#include "embedded/run/identities.h"

namespace qrel::tsql {

SessionState::SessionState(std::shared_ptr<OpenDatabase> database)
    : open(std::move(database)), rights(open->database.readOnly() ? Rights::Read : Rights::Write) {
  open->catalogue.counters = &memory.identities;
}

SessionState::~SessionState() { leave(); }

// Another session may have come to the database meanwhile.
void SessionState::leave() {
  if (open->catalogue.counters == &memory.identities) open->catalogue.counters = nullptr;
}

void SessionState::moveTo(std::shared_ptr<OpenDatabase> other) {
  commitAll();
  leave();
  open = std::move(other);
  open->catalogue.counters = &memory.identities;
  memory = {};  // plans and identities are the other database's; whoever runs a text holds on to that one
}

void SessionState::commitAll() {
  keepIdentities(open->database, memory.identities);
  if (memory.transactions == 0) return;
  memory.transactions = 0;
  if (sqlite3_get_autocommit(open->database.get()) != 0) return;  // what was interrupted has been taken back
  open->database.execute("release q_transaction");
}

}  // namespace qrel::tsql
