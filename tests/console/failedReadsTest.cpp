// What the commands say and return when something can't be read: never more than was read.
#include <cstdlib>

#include "console/console.h"
#include "db/readFailures.h"
#include "platform/error.h"
#include "platform/text.h"
#include "tests/console/consoleTest.h"
#include "tests/support.h"
#include "tests/thorough.h"

namespace qrel {
namespace {

// Which read fails: the n-th of all commands and fetches since it was set, and none with 0.
struct ReadFault {
  int countdown = 0;
  bool hit = false;

  void pass() {
    if (countdown == 0 || --countdown > 0) return;
    hit = true;
    throw DataError(errorNumber::cannotConnect, "the disk is gone");
  }
};

class FaultyRows : public RowSource {
 public:
  FaultyRows(std::unique_ptr<RowSource> rows, ReadFault& fault) : rows_(std::move(rows)), fault_(fault) {}
  const std::vector<ColumnInfo>& columns() const override { return rows_->columns(); }
  std::size_t fetch(ColumnStore& store, std::size_t most) override {
    fault_.pass();
    return rows_->fetch(store, most);
  }
  void rewind() override { rows_->rewind(); }
  std::int64_t count() override { return rows_->count(); }

 private:
  std::unique_ptr<RowSource> rows_;
  ReadFault& fault_;
};

class FaultyConnection : public ProviderConnection {
 public:
  FaultyConnection(std::unique_ptr<ProviderConnection> inner, ReadFault& fault)
      : inner_(std::move(inner)), fault_(fault) {}
  CommandResult execute(const CommandRequest& request) override {
    fault_.pass();
    CommandResult result = inner_->execute(request);
    if (result.rows) result.rows = std::make_unique<FaultyRows>(std::move(result.rows), fault_);
    return result;
  }
  void interrupt() override { inner_->interrupt(); }

 private:
  std::unique_ptr<ProviderConnection> inner_;
  ReadFault& fault_;
};

class FaultyProvider : public Provider {
 public:
  FaultyProvider(std::unique_ptr<Provider> inner, ReadFault& fault) : inner_(std::move(inner)), fault_(fault) {}
  bool serves(const std::string& server) const override { return inner_->serves(server); }
  std::unique_ptr<ProviderConnection> open(const ConnectionString& connectionString) override {
    return std::make_unique<FaultyConnection>(inner_->open(connectionString), fault_);
  }

 private:
  std::unique_ptr<Provider> inner_;
  ReadFault& fault_;
};

class FailedReads : public ConsoleTest {
 protected:
  // Runs a command whose n-th read fails; the exit code.
  template <class Command>
  int withFault(long n, ReadFault& fault, Command&& command) {
    std::ostringstream results, messages;
    Console console(findFolders("qrel"), results, messages);
    console.start({});
    console.data.wrapProviders([&](auto inner) { return std::make_unique<FaultyProvider>(std::move(inner), fault); });
    fault = {static_cast<int>(n), false};
    ExitCode code{};
    try {
      code = command(console);
    } catch (const CommandFailure& failure) {
      code = failure.code;
    } catch (const std::exception&) {
      code = ExitCode::CannotRead;
    }
    console.listReadFailures();
    out = results.str();
    err = messages.str();
    return static_cast<int>(code);
  }

  // Lets reads of a command fail, one in each run, each of the first ones and fewer further on: the run is incomplete
  // then, or nothing of it changed.
  template <class Command>
  void failEach(Command command) {
    ReadFault fault;
    const auto withoutTime = [](const std::string& text) { return text.substr(0, text.find("Time Elapsed")); };
    const int good = withFault(0, fault, command);
    EXPECT_LE(good, 1) << err;
    const std::string report = withoutTime(out);
    long n = 1, runs = 0, unaffected = 0;
    for (; n < 1000; n = nextPlace(n), ++runs) {
      const int code = withFault(n, fault, command);
      if (!fault.hit) break;
      if (code >= 3) {
        EXPECT_TRUE(told("the disk is gone")) << n << err;
        continue;
      }
      ++unaffected;
      EXPECT_EQ(code, good) << n;
      EXPECT_EQ(withoutTime(out), report) << n;
    }
    EXPECT_GT(n, 20) << "so many reads there are at least";
    EXPECT_LT(unaffected, runs / 2) << "only what was read ahead can fail unseen";
  }
};

constexpr const char* objects = R"(
CREATE TABLE Parent (a int NOT NULL CONSTRAINT pk_parent PRIMARY KEY, b int CONSTRAINT df_b DEFAULT (1))
INSERT Parent VALUES (1, 1), (2, 2), (3, 3), (4, 4), (5, 5), (6, 6), (7, 7)
CREATE TABLE Child (x int NOT NULL, CONSTRAINT fk_child FOREIGN KEY (x) REFERENCES Parent (a))
GO
CREATE PROCEDURE p AS SELECT 1
GO
CREATE SCHEMA sales
GO
CREATE VIEW v AS SELECT a FROM Parent
GO
CREATE VIEW sales.v AS SELECT b FROM Parent
)";

TEST_F(FailedReads, AWholeRunIsNeverBetterThanWhatWasRead) {
  ASSERT_EQ(run({"load", "S/A", file("a.sql", objects)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", objects)}), 0) << err;
  CompareArguments arguments;
  arguments.source = "S/A";
  arguments.target = "S/B";
  failEach([&](Console& console) { return runCompareAll(console, arguments); });
}

TEST_F(FailedReads, NorIsAPair) {
  const auto other = [](std::string script) { return script.replace(script.find("df_b"), 4, "df_c"); };
  ASSERT_EQ(run({"load", "S/A", file("a.sql", objects)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", other(objects))}), 0) << err;
  CompareArguments arguments;
  arguments.source = "S/A";
  arguments.target = "S/B";
  arguments.type = "tables";
  arguments.objects = {"Parent"};
  failEach([&](Console& console) { return runComparePair(console, arguments); });
}

TEST_F(FailedReads, NorAreRecords) {
  ASSERT_EQ(run({"load", "S/A", file("a.sql", objects)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", objects)}), 0) << err;
  DataArguments arguments;
  arguments.source = "S/A";
  arguments.target = "S/B";
  arguments.tables = {"Parent"};
  failEach([&](Console& console) { return runData(console, arguments); });
}

TEST_F(FailedReads, NorAreKeysAndManyTables) {
  ASSERT_EQ(run({"load", "S/A", file("a.sql", objects)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", objects)}), 0) << err;
  DataArguments arguments;
  arguments.source = "S/A";
  arguments.target = "S/B";
  arguments.tables = {"Parent"};
  arguments.keys[0] = "a";
  failEach([&](Console& console) { return runValidate(console, arguments); });
  arguments.all = true;
  failEach([&](Console& console) { return runDataAll(console, arguments); });
}

TEST_F(FailedReads, NorAreScriptsAndReferences) {
  const std::string modules =
      "\nGO\nCREATE PROCEDURE p AS SELECT gone FROM Child\nGO\nCREATE VIEW w AS SELECT x FROM nothing\nGO\n";
  const std::string tables = std::string(objects).substr(0, std::string(objects).find("GO"));
  ASSERT_EQ(run({"load", "S/A", file("a.sql", tables + modules)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", replaceAll(tables, "b int", "b bigint"))}), 0) << err;
  ScriptArguments script;
  script.source = "S/A";
  script.second = "S/B";
  script.table = "Parent";
  failEach([&](Console& console) { return runScript(console, script); });
  ReferencesArguments references;
  references.side = "S/A";
  references.all = true;
  for (const bool sure : {false, true}) {
    references.sure = sure;
    failEach([&](Console& console) { return runReferences(console, references); });
  }
}

// A name that would end its literal reaches no server and costs nobody else the verdict.
TEST_F(FailedReads, ANameWithAQuoteIsNotCompared) {
  const std::string script = file("s.sql",
                                  "CREATE TABLE Victim (a int)\nCREATE TABLE [O'Brien] (a int)\nGO\n"
                                  "CREATE PROCEDURE [x'; drop table Victim; --] AS SELECT 1\nGO\n"
                                  "CREATE PROCEDURE good AS SELECT 1\n");
  ASSERT_EQ(run({"load", "S/A", script}), 0) << err;
  EXPECT_EQ(run({"compare", "S/A", "S/A", "--types", "tables"}), 4);
  EXPECT_TRUE(
      printed("List of tables which could not be compared:\n\tO'Brien\n\t(1 table)\n"
              "One table [Victim] has identical structure in both databases."))
      << out;
  EXPECT_TRUE(told("qrel: not compared: table O'Brien.\n")) << err;
  EXPECT_EQ(run({"data", "S/A", "S/A", "--all"}), 4);
  EXPECT_TRUE(printed("\tO'Brien\n\t(1 table)\nOne table [Victim] has identical data in both databases.")) << out;
  EXPECT_TRUE(told("qrel: not read: table O'Brien in S/A: Incorrect syntax near 'Brien'.\n")) << err;
  EXPECT_EQ(run({"compare", "S/A", "S/A", "--types", "procedures"}), 4);
  EXPECT_TRUE(printed("One procedure [good] has identical structure in both databases.")) << out;
  EXPECT_EQ(run({"compare", "S/A", "S/A", "--type", "procedures", "--object", "x'; drop table Victim; --"}), 3);
  EXPECT_EQ(run({"text", "S/A", "--type", "tables", "Victim"}), 0) << err;
}

TEST_F(FailedReads, ANameThatIsCutIsNotCompared) {
  const std::string names =
      "CREATE TABLE [Amounts.] (a %)\nCREATE TABLE [x.Amounts] (a %)\nCREATE TABLE Amounts (a int)\n"
      "INSERT Amounts VALUES (1)\n";
  ASSERT_EQ(run({"load", "S/A", file("a.sql", replaceAll(names, "%", "int"))}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", replaceAll(names, "%", "bigint"))}), 0) << err;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "tables"}), 4);
  EXPECT_TRUE(printed("\tAmounts.\n\tx.Amounts\n\t(2 tables)\nOne table [Amounts]")) << out;
  EXPECT_TRUE(told("qrel: not compared: table Amounts.: ")) << err;
  EXPECT_EQ(run({"data", "S/A", "S/B", "--table", "x.Amounts"}), 3) << "not the records of Amounts";
  EXPECT_EQ(run({"data", "S/A", "S/B", "--table", "Amounts"}), 0) << err;
}

TEST_F(FailedReads, ATextThatDoublesCostsNoRun) {
  std::string script = "CREATE PROCEDURE p AS\n";
  for (int i = 0; i < 30; ++i) script += "INSERT log VALUES ('path/*.txt', " + std::to_string(i) + ")\n";
  const std::string end = "\nGO\nCREATE PROCEDURE good AS SELECT 1\n";
  ASSERT_EQ(run({"load", "S/A", file("a.sql", script + "SELECT 1" + end)}), 0) << err;
  ASSERT_EQ(run({"load", "S/B", file("b.sql", script + "SELECT 2" + end)}), 0) << err;
  ASSERT_EQ(run({"load", "S/C", file("c.sql", script + "SELECT  1" + end)}), 0) << err;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "procedures"}), 1) << err;
  EXPECT_TRUE(printed("\tp\n\t(1 procedure)\nOne procedure [good]")) << out;
  EXPECT_EQ(run({"compare", "S/A", "S/C", "--types", "procedures"}), 0) << out << err;
  EXPECT_EQ(run({"compare", "S/A", "S/B", "--types", "procedures", "--details"}), 4);
  EXPECT_TRUE(told("the lines that differ are not listed: procedure p")) << err;
}

TEST_F(FailedReads, NamesCannotSteerTheTerminal) {
  const std::string name =
      "a\x1B[2Jb\xE2\x80\xAE"
      "c";
  const std::string script = file("s.sql", "CREATE TABLE [" + name + "\nz] (a int)\n");
  ASSERT_EQ(run({"load", "S/A", script}), 0) << err;
  EXPECT_EQ(run({"compare", "S/A", "S/A", "--types", "tables"}), 0) << err;
  EXPECT_EQ(run({"objects", "S/A"}), 0);
  EXPECT_TRUE(out.starts_with("a\\x1B[2Jb\\u202Ec\\nz\t")) << out;
  EXPECT_EQ(run({"text", "S/A", "--type", "views", name}), 3);
  EXPECT_TRUE(told("a\\x1B[2Jb\\u202Ec")) << err;
}

TEST_F(FailedReads, ADatabaseKeepsTheCharactersOfItsName) {
  ASSERT_EQ(run({"load", "S/a;b", file("s.sql", "CREATE TABLE right (a int)")}), 0) << err;
  ASSERT_EQ(run({"load", "S/a", file("t.sql", "CREATE TABLE wrong (a int)")}), 0) << err;
  EXPECT_EQ(run({"objects", "S/a;b"}), 0) << err;
  EXPECT_TRUE(out.starts_with("right\t")) << out;
}

}  // namespace
}  // namespace qrel
