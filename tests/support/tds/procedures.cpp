// The procedures that a session calls: those that run a statement, and those of the embedded server.
#include <algorithm>
#include <array>

#include "embedded/language/lexer.h"
#include "platform/text.h"
#include "tests/support/tds/failure.h"
#include "tests/support/tds/resultSender.h"
#include "tests/support/tds/session.h"

namespace qrel::tds {

namespace {

constexpr std::uint16_t callCommand = 0xE0;

// The names of parameters, in their order.
struct Signature {
  std::string_view procedure;
  std::array<std::string_view, 2> names;
};
constexpr std::array signatures = std::to_array<Signature>({
    {"sp_attach_db", {"@dbname", "@filename1"}},
    {"sp_attach_single_file_db", {"@dbname", "@physname"}},
});

std::vector<Value> inOrder(const Call& call) {
  std::vector<Value> values;
  const auto known = std::find_if(signatures.begin(), signatures.end(),
                                  [&](const Signature& each) { return equalNoCase(each.procedure, call.procedure); });
  for (std::size_t i = 0; i < call.parameters.size(); ++i) {
    const Parameter& parameter = call.parameters[i];
    std::size_t place = i;
    if (!parameter.name.empty() && known != signatures.end()) {
      const auto found = std::find_if(known->names.begin(), known->names.end(),
                                      [&](std::string_view name) { return equalNoCase(name, parameter.name); });
      if (found == known->names.end())
        throw DataError(errorNumber::badSql,
                        parameter.name + " is not a parameter for procedure " + call.procedure + ".", "42000");
      place = static_cast<std::size_t>(found - known->names.begin());
    }
    if (values.size() <= place) values.resize(place + 1);
    values[place] = parameter.value;
  }
  return values;
}

const Value& parameterAt(const Call& call, std::size_t place) {
  if (place >= call.parameters.size())
    throw DataError(errorNumber::badSql,
                    "Procedure or function '" + call.procedure + "' expects a parameter, which was not supplied.",
                    "42000");
  return call.parameters[place].value;
}

std::vector<Value> valuesFrom(const Call& call, std::size_t place) {
  std::vector<Value> values;
  for (; place < call.parameters.size(); ++place) values.push_back(call.parameters[place].value);
  return values;
}

std::string handleParameter(std::int64_t handle) {
  return ByteWriter().u8(0x26).u8(4).u8(4).u32(static_cast<std::uint64_t>(handle)).bytes();
}

}  // namespace

void Session::note(const Call& call, const Statement& statement) const {
  Request request{.connection = number_, .database = database_, .procedure = call.procedure, .text = statement.text};
  for (const Value& value : statement.values) request.parameters.push_back(value.null ? "NULL" : textOf(value.cell()));
  shared_.traffic.add(std::move(request));
}

// Rows of every statement, the return value, what comes back of the parameters, the end: in this order.
void Session::answerCall(const Call& call, bool last) {
  failed_ = false;
  returnValue_ = 0;
  std::string handle;
  try {
    if (equalNoCase(call.procedure, "sp_executesql")) {
      const Statement statement{parameterAt(call, 0).text, call.parameters.size() > 1 ? parameterAt(call, 1).text : "",
                                valuesFrom(call, 2)};
      note(call, statement);
      send(statement, DoneToken::DoneInProcedure);
    } else {
      handle = callPrepared(call);
    }
  } catch (const RuntimeError& error) {
    if (error.number == errorNumber::cancelled) throw Interrupted();
    sendFailure(messageOf(error), DoneToken::DoneInProcedure);
  }
  if (const int asked = shared_.switches.returnValue) returnValue_ = asked;
  const int output = shared_.switches.outputInteger;
  if (output != 0 && handle.empty()) handle = handleParameter(output);
  stream_.write(returnStatus(returnValue_));
  for (std::size_t i = 0; i < call.parameters.size(); ++i) {
    const Parameter& parameter = call.parameters[i];
    if (!parameter.output) continue;
    const bool isHandle = (i == 0 || output != 0) && !handle.empty();
    stream_.write(
        returnedParameter(static_cast<std::uint16_t>(i), parameter.name, isHandle ? handle : parameter.typeAndValue));
  }
  const unsigned status = (last ? 0 : done::more) | (failed_ ? done::error : 0);
  stream_.write(doneToken(DoneToken::DoneProcedure, status, 0, callCommand));
}

// Returns the handle of a statement that it has prepared, as it goes back; empty for all else. A statement that fails
// has its handle all the same: clients go on with it.
std::string Session::callPrepared(const Call& call) {
  const std::string name = lowerCase(call.procedure);
  if (name == "sp_prepare" || name == "sp_prepexec") {
    const Prepared prepared{parameterAt(call, 2).text, parameterAt(call, 1).text};
    prepared_[++lastHandle_] = prepared;
    const bool runs = name == "sp_prepexec";
    const Statement statement{prepared.text, prepared.declarations,
                              valuesFrom(call, runs ? 3 : call.parameters.size())};
    note(call, statement);
    if (runs)
      send(statement, DoneToken::DoneInProcedure);
    else
      describe(prepared);
    return handleParameter(lastHandle_);
  }
  if (name == "sp_execute") {
    const auto found = prepared_.find(parameterAt(call, 0).integer);
    if (found == prepared_.end())
      throw DataError(errorNumber::badSql,
                      "Could not find prepared statement with handle " + textOf(parameterAt(call, 0).cell()) + ".",
                      "42000");
    const Statement statement{found->second.text, found->second.declarations, valuesFrom(call, 1)};
    note(call, statement);
    send(statement, DoneToken::DoneInProcedure);
  } else if (name == "sp_unprepare") {
    note(call, {});
    prepared_.erase(parameterAt(call, 0).integer);
  } else {
    callProcedure(call);
  }
  return {};
}

// The columns of its first result, found by running it with Nulls for parameters.
void Session::describe(const Prepared& prepared) {
  const auto tokens = tsql::lex(prepared.declarations);
  Statement statement{prepared.text, prepared.declarations, {}};
  statement.values.resize(static_cast<std::size_t>(std::count_if(
      tokens.begin(), tokens.end(), [](const tsql::Token& each) { return each.kind == tsql::TokenKind::Variable; })));
  const auto connection = connect();
  const CommandResult result = connection->execute(requestFor(statement));
  if (!result.rows) return;
  sendColumns(stream_, *result.rows);
  stream_.write(doneToken(DoneToken::DoneInProcedure, done::more));
}

void Session::callProcedure(const Call& call) {
  const Statement statement{"", "", inOrder(call)};
  note(call, statement);
  const auto connection = connect();
  const CommandResult result = connection->execute({call.procedure, 0, statement.values, true});
  if (result.rows) {
    const std::uint64_t count = sendRows(stream_, *result.rows, shared_.switches);
    stream_.write(doneToken(DoneToken::DoneInProcedure, done::more | done::counted, count));
  }
  returnValue_ = result.returnValue;
}

}  // namespace qrel::tds
