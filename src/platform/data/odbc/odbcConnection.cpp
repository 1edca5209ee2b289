#include "platform/data/odbc/odbcConnection.h"

#include "platform/text.h"

namespace qrel::odbc {

namespace {

// How long the server may take to end what was cancelled, before its connection is left to itself.
constexpr auto grace = std::chrono::seconds(3);
// The driver's own clock goes by the server's silence; a server that goes on sending is ended by ours, a little later.
constexpr auto behindDriver = std::chrono::milliseconds(250);

std::string_view firstWord(std::string_view text) {
  const std::size_t start = text.find_first_not_of(" \t\r\n(");
  if (start == std::string_view::npos) return {};
  text.remove_prefix(start);
  return text.substr(0, text.find_first_of(" \t\r\n(*["));
}

// A command that may be sent once more when its connection turns out to be gone.
bool isQuery(const CommandRequest& request) {
  return !request.isProcedure && equalNoCase(firstWord(request.text), "select");
}

// A command that leaves nothing behind on its session.
bool leavesNothing(const CommandRequest& request) {
  return isQuery(request) || (!request.isProcedure && equalNoCase(firstWord(request.text), "if"));
}

class OdbcRows : public RowSource {
 public:
  OdbcRows(std::shared_ptr<Road> road, CommandRequest request, Running running)
      : road_(std::move(road)), request_(std::move(request)), running_(std::move(running)) {}
  ~OdbcRows() override { road_->end(running_); }
  OdbcRows(const OdbcRows&) = delete;
  OdbcRows& operator=(const OdbcRows&) = delete;

  const std::vector<ColumnInfo>& columns() const override { return running_.statement->columns(); }

  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    std::size_t count = 0;
    while (count < most) {
      const Statement& statement = *running_.statement;
      if (next_ == statement.rows()) {
        if (statement.ended()) break;
        road_->fill(running_, request_);
        before_ += next_;
        next_ = 0;
        if (statement.ended()) running_.session.reset();
        if (statement.rows() == 0) break;
      }
      statement.appendTo(store, next_++);
      ++count;
    }
    return count;
  }

  // Without asking the server again as long as the first block is here.
  void rewind() override {
    if (before_ > 0) {
      road_->end(running_);
      running_ = road_->begin(request_);
    }
    before_ = next_ = 0;
  }

  // A second run counts: keeping what comes in the meantime would be all the rows in memory, which whoever reads by
  // windows doesn't want.
  std::int64_t count() override {
    const Statement& statement = *running_.statement;
    if (statement.ended()) return static_cast<std::int64_t>(before_ + statement.rows());
    Running counting = road_->begin(request_);
    std::size_t rows = counting.statement->rows();
    try {
      while (!counting.statement->ended()) {
        road_->fill(counting, request_);
        rows += counting.statement->rows();
      }
    } catch (...) {
      road_->end(counting);
      throw;
    }
    road_->end(counting);
    return static_cast<std::int64_t>(rows);
  }

 private:
  std::shared_ptr<Road> road_;
  CommandRequest request_;
  Running running_;
  std::size_t before_ = 0;  // rows of the blocks in front of this one
  std::size_t next_ = 0;    // of the block
};

}  // namespace

Road::Road(std::shared_ptr<Environment> environment, std::shared_ptr<SessionPool> pool, Opening opening,
           int keepSeconds)
    : environment_(std::move(environment)),
      pool_(std::move(pool)),
      opening_(std::move(opening)),
      keepSeconds_(keepSeconds),
      own_(pool_->take(environment_, opening_, keepSeconds_)) {}

std::shared_ptr<Session> Road::freeSession() {
  if (own_ && own_->dead) own_.reset();
  if (!own_) own_ = pool_->take(environment_, opening_, keepSeconds_);
  return own_->busy ? pool_->take(environment_, opening_, keepSeconds_) : own_;
}

// The session's own object, not the lease on it: the worker may hold on to it for longer than anybody else.
void Road::run(const Running& running, const CommandRequest& request, void (Statement::*step)(), bool clocked) {
  Watch watch;
  watch.stopAsked = opening_.stopAsked;
  watch.interrupted = &interrupted_;
  if (clocked && request.timeoutSeconds > 0) watch.atMost = std::chrono::seconds(request.timeoutSeconds) + behindDriver;
  watch.grace = grace;
  watch.cancel = [statement = running.statement.get()] { statement->cancel(); };
  interrupted_ = false;
  const Outcome outcome =
      running.session->worker().run([statement = running.statement, step] { ((*statement).*step)(); }, watch);
  if (outcome.ending != Ending::Finished) running.session->dead = true;
  if (outcome.ending == Ending::TimedOut) throw timedOut(request.text, outcome.abandoned);
  if (outcome.ending == Ending::Stopped) throw cancelled(request.text);
  if (const std::optional<DataError> failure = running.statement->failure()) throw *failure;
}

Running Road::attempt(const std::shared_ptr<Session>& session, const CommandRequest& request) {
  Running running{session, std::make_shared<Statement>(session->shared_from_this(), request)};
  if (!leavesNothing(request)) session->touched = true;
  session->busy = true;
  try {
    run(running, request, &Statement::execute, true);
  } catch (...) {
    session->busy = false;
    throw;
  }
  session->proved = true;
  session->busy = !running.statement->ended();
  return running;
}

Running Road::begin(const CommandRequest& request) {
  std::shared_ptr<Session> session = freeSession();
  const bool own = session == own_;
  const auto replace = [&] {
    session->dead = true;
    session = pool_->open(environment_, opening_, keepSeconds_);
    if (own) own_ = session;
  };
  if (!session->proved && !isQuery(request) && !session->answers(opening_.stopAsked)) replace();
  if (session->proved) return attempt(session, request);
  // Nobody has heard of this one since it was kept: the server may have closed it meanwhile.
  try {
    return attempt(session, request);
  } catch (const DataError&) {
    if (!session->dead || !isQuery(request) || interrupted_) throw;
  }
  replace();
  return attempt(session, request);
}

void Road::fill(const Running& running, const CommandRequest& request) {
  run(running, request, &Statement::fill, false);
  running.session->busy = !running.statement->ended();
}

void Road::end(Running& running) {
  if (running.session && running.statement && !running.statement->ended() && !running.session->dead) {
    Watch watch;
    watch.atMost = watch.grace = grace;
    const Outcome outcome =
        running.session->worker().run([statement = running.statement] { statement->close(); }, watch);
    if (outcome.ending == Ending::Finished)
      running.session->busy = false;
    else
      running.session->dead = true;
  }
  running = {};
}

CommandResult OdbcConnection::execute(const CommandRequest& request) {
  Running running = road_->begin(request);
  CommandResult result = running.statement->result();
  if (!running.statement->hasRows()) return result;
  if (running.statement->ended()) running.session.reset();
  result.rows = std::make_unique<OdbcRows>(road_, request, std::move(running));
  return result;
}

std::vector<std::pair<std::string, std::string>> OdbcConnection::facts() {
  const Opening& opening = road_->opening();
  const Target& target = opening.target;
  std::string address = target.host;
  if (!target.instance.empty())
    address += '\\' + target.instance;
  else
    address += "," + (target.port.empty() ? "1433" : target.port);
  const bool checked = target.encrypt == "strict" || !target.trustCertificate;
  std::string encryption = "off";
  if (target.encrypt != "no") {
    encryption = target.encrypt == "strict" ? "strict" : "on";
    encryption += checked ? ", the certificate is checked" : ", the certificate is trusted unseen";
  }
  const std::string login = !target.windows        ? "login " + target.login
                            : target.token.empty() ? "Windows authentication (Kerberos)"
                                                   : "access token (QREL_TOKEN)";
  return {{"driver", opening.driver.name}, {"address", address}, {"encryption", encryption}, {"authentication", login}};
}

}  // namespace qrel::odbc
