#include "platform/data/embedded/session.h"

#include "platform/data/embedded/interpreter.h"
#include "platform/error.h"
#include "platform/text.h"

namespace qrel::tsql {

Session::Session(std::shared_ptr<OpenDatabase> open)
    : open_(std::move(open)),
      state_(std::make_unique<SessionState>()),
      rights_(open_->database.readOnly() ? Rights::Read : Rights::Write) {}
Session::Session(Session&&) noexcept = default;
Session& Session::operator=(Session&&) noexcept = default;
Session::~Session() = default;

CommandResult Session::run(std::string_view batch, BatchListener* listener, const std::vector<Value>* parameters) {
  CommandResult result;
  variables.clear();
  variableTypes.clear();
  variables["@@trancount"] = Value::ofInteger(state_->transactions);
  if (parameters) {
    for (std::size_t i = 0; i < parameters->size(); ++i) variables["@p" + std::to_string(i + 1)] = (*parameters)[i];
  }
  Interpreter(*this, *state_, listener, result).run(batch);
  return result;
}

CommandResult Session::runProcedure(std::string_view name, const std::vector<Value>& parameters) {
  const auto tokens = lex(name);
  TokenReader reader(name, tokens);
  const ObjectName procedure = readObjectName(reader);
  if (!reader.atEnd())
    throw DataError(errorNumber::badSql, "Could not find stored procedure '" + std::string(name) + "'.", "42000");
  std::string batch = "EXEC [" + replaceAll(procedure.name, "]", "]]") + "]";
  for (std::size_t i = 1; i <= parameters.size(); ++i) batch += (i == 1 ? " @p" : ", @p") + std::to_string(i);
  struct Granted {
    Rights& rights;
    Rights before;
    ~Granted() { rights = before; }
  } granted{rights_, rights_};
  if (rights_ == Rights::Read && isAttachingProcedure(lowerCase(procedure.name))) rights_ = Rights::Attach;
  return run(batch, nullptr, &parameters);
}

void Session::moveTo(std::shared_ptr<OpenDatabase> open) {
  commitAll();
  open_ = std::move(open);
  *state_ = SessionState();  // whoever runs a batch holds on to it
}

void Session::commitAll() {
  if (state_->transactions == 0) return;
  state_->transactions = 0;
  open_->database.execute("release q_transaction");
}

std::int64_t Session::rowsInserted() const { return state_->inserted; }

}  // namespace qrel::tsql
