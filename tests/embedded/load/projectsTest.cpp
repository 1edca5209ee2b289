// Scripts as projects have them: many files in no order, database projects, sqlcmd's commands, data files. All that is
// read is counted: what is made, run, without effect, skipped or refused are all the statements that there are.
#include <algorithm>
#include <random>

#include "tests/embedded/embeddedServer.h"
#include "tests/embedded/loading.h"

namespace qrel {
namespace {

namespace fs = std::filesystem;

class Projects : public testing::Test {
 protected:
  fs::path write(const std::string& name, const std::string& text) const {
    fs::create_directories((server.folder.path() / name).parent_path());
    return server.folder.write(name, text);
  }
  LoadReport load(const fs::path& path, const LoadOptions& options = {}) {
    LoadReport report = loadScripts(server.servers, "S", "shop", {path}, options);
    expectAddsUp(report, path.string());
    return report;
  }
  std::string rows(const std::string& sql) {
    std::string text;
    for (const std::string& each : server.rows(sql)) text += (text.empty() ? "" : " ") + each;
    return text;
  }
  fs::path at(const std::string& name) const { return server.folder.path() / name; }

  EmbeddedServer server;
};

// Schemas, types, tables whose keys lead in circles, what stands on them, and their rows, in whatever order files have.
TEST_F(Projects, FilesInAnyOrderAreMadeWhole) {
  std::vector<std::string> files = {"CREATE SCHEMA sales", "CREATE TYPE sales.Sum FROM decimal(9,2)"};
  constexpr int tables = 30;
  for (int i = 0; i < tables; ++i) {
    const std::string own = std::to_string(i), next = std::to_string((i + 1) % tables);
    files.push_back("CREATE TABLE sales.T" + own + " (id int IDENTITY PRIMARY KEY, s sales.Sum, o int, CONSTRAINT FK" +
                    own + " FOREIGN KEY (o) REFERENCES sales.T" + next + " (id))\nGO\nCREATE INDEX IX ON sales.T" +
                    own + " (s)");
    files.push_back("SET IDENTITY_INSERT sales.T" + own + " ON\nDECLARE @v int = 7\nINSERT sales.T" + own +
                    " (id, s) VALUES (@v, 1)\nSET IDENTITY_INSERT sales.T" + own + " OFF\nUPDATE sales.T" + own +
                    " SET o = 3");
    files.push_back("CREATE TRIGGER sales.R" + own + " ON sales.T" + own + " FOR INSERT AS RETURN");
  }
  files.emplace_back("CREATE TABLE sales.Bad (a int REFERENCES sales.Worse (a))\nGO\nINSERT sales.Bad VALUES (1)");
  std::shuffle(files.begin(), files.end(), std::mt19937(7));
  for (std::size_t i = 0; i < files.size(); ++i) write("s/" + std::to_string(1000 + i) + ".sql", files[i]);
  const LoadReport report = load(at("s"));
  EXPECT_EQ(report.statements(), 2 + tables * (2 + 5 + 1) + 2);
  EXPECT_EQ(reasons(report.skipped), "");
  EXPECT_EQ(reasons(report.failed),
            "1: CREATE TABLE sales.Bad (a int REFERENCES sales.Worse (a)) | Foreign key 'FK' references invalid table "
            "'sales.Worse'.\n3: INSERT sales.Bad VALUES (1) | Invalid object name 'sales.Bad'.\n");
  EXPECT_EQ(rows("SELECT count(*) FROM sys.foreign_keys"), "30");
  EXPECT_EQ(rows("SELECT count(*) FROM sys.triggers"), "30");
  EXPECT_EQ(rows("SELECT id, o FROM sales.T29"), "7|3");
}

TEST_F(Projects, ADatabaseProjectIsItsItems) {
  write("p/Tables/A.SQL", "CREATE TABLE A (id int PRIMARY KEY, b int REFERENCES B (id))");
  write("p/Tables/b.sql", "CREATE TABLE B (id int PRIMARY KEY, a int REFERENCES A (id))");
  write("p/old/x.sql", "FLY");
  write("p/deploy/pre.sql", "PRINT '$(Env) $(DatabaseName)'");
  write("p/deploy/post.sql", ":r .\\ROWS.sql\r\nGO\r\nexit\r\nFLY");
  write("p/deploy/rows.sql", "INSERT A VALUES (1, NULL)");
  const std::string items =
      "<ItemGroup><PreDeploy Include='deploy\\pre.sql'/><PostDeploy Include=\"Deploy\\Post.sql\"/>"
      "<SqlCmdVariable Include='Env'><DefaultValue>dev</DefaultValue></SqlCmdVariable></ItemGroup></Project>";
  for (const std::string& build :
       {std::string(
            "<Project Sdk='x'><!-- <Build Include='no.sql'/> --><ItemGroup><Build Remove='Old\\**'/></ItemGroup>"),
        std::string(
            "<Project><ItemGroup><Build Include='tables\\a.sql;Tables\\*.sql' Exclude='**\\x*'/></ItemGroup>")}) {
    LoadOptions replace;
    replace.replace = true;
    const LoadReport report = load(write("p/shop.sqlproj", build + items), replace);
    EXPECT_EQ(report.tables, 2) << build << reasons(report.failed);
    EXPECT_EQ(report.rows, 1);
    ASSERT_EQ(report.messages.size(), 1u);
    EXPECT_EQ(report.messages[0].firstWords, "dev shop");
    EXPECT_EQ(reasons(report.skipped), "3: exit | the script ends here; what stands behind it is not run\n");
    EXPECT_TRUE(report.failed.empty() && report.remarks.empty());
  }
  const LoadReport lacking = load(write("p/shop.sqlproj", "<Project><Build Include='gone.sql;..\\x.sql'/></Project>"));
  ASSERT_EQ(lacking.remarks.size(), 1u);
  EXPECT_EQ(lacking.remarks[0].what, "2 of its files could not be read: gone.sql, ..\\x.sql");
  EXPECT_TRUE(lacking.incomplete());
}

TEST_F(Projects, SqlcmdCommandsAreCarriedOutOrTold) {
  write(
      "s/main.sql",
      ":setvar n a\r\n:r sub\\$(n).sql\r\nGO\r\n:r nowhere.sql\r\nPRINT '$(none)'\r\nPRINT '$(NONE)\r\n\r\n:r "
      "kept\r\n'\r\n:connect x\r\nGO\r\n:on error exit\r\nRAISERROR('%s: %d', 16, 1, 'stop', 5)\r\nGO\r\nSELECT 1\r\n");
  write("s/sub/a.sql", "CREATE TABLE a (x int)\nGO\n:r ../main.sql\nINSERT a VALUES (1)\n\nFLY");
  write("outside.sql", "FLY");
  const LoadReport report = load(at("s"));  // a.sql runs where main.sql names it, and nowhere else
  EXPECT_EQ(report.rows, 1);
  std::string told;
  std::vector<SkippedStatement> all = report.skipped;
  all.insert(all.end(), report.failed.begin(), report.failed.end());
  std::sort(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.order < b.order; });
  for (const auto& each : all)
    told += each.file.substr(each.file.rfind('/') + 1) + ":" + std::to_string(each.line) + " " + each.reason + "\n";
  EXPECT_EQ(told,
            "a.sql:3 the file is being read already: it leads back to itself\na.sql:6 unknown statement\n"
            "main.sql:4 the file isn't there\n"
            "main.sql:5 the variable has no value: :setvar or --variable none=VALUE would give it one\n"
            "main.sql:10 sqlcmd command\nmain.sql:13 RAISERROR: stop: 5\n"
            "main.sql:15 the script has raised an error: what follows of it is not run\n");
}

TEST_F(Projects, BulkInsertReadsFilesBelowTheFolderAlone) {
  write("b.csv", "1,x");
  write("s/data/A.csv", "id,t,n\r\n5,\"a, \"\"b\"\"\r\nc\",\r\n6,,2\r\n7,x,y\r\n");
  write("s/b.txt", "1|z|1|2\n2||\n");
  write("s/w.txt", std::string("1\0\t\0\xE9\0\t\0"
                               "3\0\n\0",
                               12));
  write("s/s.sql",
        "CREATE TABLE t (id int IDENTITY, t varchar(20) DEFAULT 'd', n varchar(5))\n"
        "BULK INSERT t FROM 'C:\\x\\Data\\a.csv' WITH (FORMAT = 'CSV', FIRSTROW = 2, LASTROW = 3, KEEPIDENTITY)\n"
        "BULK INSERT t FROM '$(root)b.txt' WITH (FIELDTERMINATOR = '|', ROWTERMINATOR = '0x0a', KEEPNULLS)\n"
        "BULK INSERT t FROM 'w.txt' WITH (DATAFILETYPE = 'widechar')\n"
        "BULK INSERT t FROM '..\\b.csv' WITH (FORMAT = 'CSV')\n"
        "BULK INSERT t FROM 'w.txt' WITH (FORMATFILE = 'f')\n"
        "CREATE TABLE u (id int, t varchar(20), n int)\n"
        "BULK INSERT u FROM 'data/a.csv' WITH (FORMAT = 'CSV', FIRSTROW = 2)\n");
  const LoadReport report = load(at("s"));
  EXPECT_EQ(rows("SELECT * FROM t"), "5|a, \"b\"\r\nc|- 6|d|2 7|z|1|2 8|-|- 9|\xC3\xA9|3");
  EXPECT_EQ(rows("SELECT id, n FROM u"), "5|- 6|2");
  ASSERT_EQ(report.failed.size(), 2u) << reasons(report.failed);
  EXPECT_NE(report.failed[0].reason.find("lies outside of the folder that is loaded"), std::string::npos);
  EXPECT_EQ(report.failed[1].reason,
            "Bulk load data conversion error (type mismatch or invalid character for the specified codepage) for row "
            "4, column 3 (n). 1 row is not loaded, 2 are.");
  EXPECT_EQ(report.skipped.size(), 1u) << reasons(report.skipped) << "FORMATFILE";
  EXPECT_EQ(report.remarks.size(), 2u)
      << "$(root) in a text of a script without sqlcmd's commands; files that are no .sql files";
}

TEST_F(Projects, WhatIsNotRunIsOneLineForEachKind) {
  std::string script = "CREATE TABLE t (a int)\nGO\nCREATE PROCEDURE p AS PRINT 1\nGO\n";
  for (int i = 0; i < 200; ++i) {
    const std::string number = std::to_string(i);
    script += "MERGE t USING t s ON t.a = " + number + " WHEN MATCHED THEN DELETE;\nINSERT t VALUES (dbo.f(" + number +
              "))\nEXEC p\nPRINT 'row " + number + "'\nGO\n";
  }
  const LoadReport report = load(write("s.sql", script));
  EXPECT_EQ(report.statementsSkipped, 600);
  ASSERT_EQ(report.skipped.size(), 3u) << reasons(report.skipped);
  for (const SkippedStatement& each : report.skipped) EXPECT_EQ(each.times, 200);
  EXPECT_EQ(report.skipped[0].line, 5u);
  EXPECT_EQ(report.messageCount, 200);
  EXPECT_EQ(report.messages.size(), LoadReport::mostMessages);
  EXPECT_EQ(report.statements(), 802);
}

TEST_F(Projects, AFilledDatabaseIsAskedForAndItsCountersGoOn) {
  const fs::path script = write("s.sql",
                                "IF OBJECT_ID('t') IS NULL CREATE TABLE t (id int IDENTITY, a int)\n"
                                "INSERT t VALUES (1)\nINSERT t VALUES (2)\nDELETE t WHERE id > 1\n");
  load(script);
  LoadOptions careful;
  careful.onlyIntoEmpty = true;
  EXPECT_EQ(load(script, careful).occupied, 1);
  EXPECT_EQ(rows("SELECT id FROM t"), "1");
  load(script);
  EXPECT_EQ(load(write("u.sql", "DBCC CHECKIDENT ('dbo.t', RESEED, 40)\nINSERT t VALUES (9)")).rows, 1);
  EXPECT_EQ(rows("SELECT id, a FROM t"), "1|1 41|9");
}

}  // namespace
}  // namespace qrel
