// A program whose embedded server has somebody before it who keeps what is sent and answers some of it himself.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "db/mdlData.h"
#include "platform/controls/form.h"
#include "platform/data/connectionString.h"
#include "platform/error.h"
#include "tests/platform/data/fakeRows.h"
#include "tests/support.h"

namespace qrel {

// The server is called "S"; what has no answer here goes on to its database.
class ScriptedServer : public TestProgram {
 public:
  struct Sent {
    std::string database;
    std::string text;
    int timeoutSeconds = 0;
  };

  ScriptedServer() {
    servers.create("S");
    data.wrapProviders(
        [this](std::unique_ptr<Provider> inner) { return std::make_unique<Between>(std::move(inner), *this); });
  }

  // Queries that hold `part` are answered with these rows, in text form. Of several the latest counts.
  void answer(const std::string& part, const std::vector<std::string>& columns, std::vector<FakeRow> rows,
              std::shared_ptr<FakeUse> use = nullptr) {
    Answer made{part, {}, std::move(rows), 0, std::move(use)};
    for (const std::string& column : columns) made.columns.push_back(fakeColumn(column, DataType::Text));
    answers_.push_back(std::move(made));
  }
  // Queries that hold `part` fail.
  void refuse(const std::string& part, std::int32_t number = errorNumber::badSql) {
    answers_.push_back({part, {}, {}, number, nullptr});
  }
  void forgetAnswers() { answers_.clear(); }

  // The database and text of each command since the last call, one a line.
  std::string said() {
    std::string text;
    for (const Sent& each : sent) text += (text.empty() ? "" : "\n") + each.database + ": " + each.text;
    sent.clear();
    return text;
  }
  // The next error reports are looked away from.
  void expectReports(int count) {
    for (int i = 0; i < count; ++i) host.windows.push_back([](Form& form) { EXPECT_EQ(form.name, "frmErrorReport"); });
  }
  // The server's record with its version, the number computed from it.
  static tServer record(const std::string& version = defaultProductVersion) {
    tServer server = TestProgram::server("S", version);
    server.VersionNum = GetVersionNumber(version);
    return server;
  }

  std::vector<Sent> sent;
  std::vector<std::string> opened;  // the databases of the connections so far, "-" where none was named

 private:
  struct Answer {
    std::string part;
    std::vector<ColumnInfo> columns;
    std::vector<FakeRow> rows;
    std::int32_t error = 0;
    std::shared_ptr<FakeUse> use;
  };

  class Line : public ProviderConnection {
   public:
    Line(std::unique_ptr<ProviderConnection> inner, ScriptedServer& owner, std::string database)
        : inner_(std::move(inner)), owner_(owner), database_(std::move(database)) {}
    CommandResult execute(const CommandRequest& request) override {
      owner_.sent.push_back({database_, request.text, request.timeoutSeconds});
      for (auto each = owner_.answers_.rbegin(); each != owner_.answers_.rend(); ++each) {
        if (request.text.find(each->part) == std::string::npos) continue;
        if (each->error != 0) throw DataError(each->error, "refused");
        CommandResult result;
        result.rows = std::make_unique<FakeRows>(each->columns, each->rows, each->use);
        return result;
      }
      return inner_->execute(request);
    }
    void interrupt() override { inner_->interrupt(); }

   private:
    std::unique_ptr<ProviderConnection> inner_;
    ScriptedServer& owner_;
    std::string database_;
  };

  class Between : public Provider {
   public:
    Between(std::unique_ptr<Provider> inner, ScriptedServer& owner) : inner_(std::move(inner)), owner_(owner) {}
    bool serves(const std::string& server) const override { return inner_->serves(server); }
    std::unique_ptr<ProviderConnection> open(const ConnectionString& text) override {
      owner_.opened.push_back(text.has("Initial Catalog") ? text.database() : "-");
      return std::make_unique<Line>(inner_->open(text), owner_, owner_.opened.back());
    }

   private:
    std::unique_ptr<Provider> inner_;
    ScriptedServer& owner_;
  };

  std::vector<Answer> answers_;
};

}  // namespace qrel
