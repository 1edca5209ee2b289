// Names that mean something to SQLite, or to the way tables are kept, are names like all others.
#include <gtest/gtest.h>

#include "platform/text.h"
#include "tests/embedded/embeddedServer.h"

namespace qrel {
namespace {

constexpr const char* const oddNames[] = {
    "rowid", "ROWID", "oid",         "_rowid_", "main", "temp",         "sqlite_master", "sqlite_sequence", "select",
    "FALSE", "null",  "true",        "count",   "abs",  "current_date", "cat_objects",   "sysobjects2",     "a.b",
    "a\"b",  "it's",  "t (rebuilt)", "q_chain", "x ",   "@p1",          "ab\x01",
};

std::string bracketed(const std::string& name) { return "[" + name + "]"; }

TEST(OddNames, TablesColumnsIndexesAndTypes) {
  for (const std::string name : oddNames) {
    EmbeddedServer server;
    const std::string odd = bracketed(name);
    const std::string literal = replaceAll(name, "'", "''");
    server.load("CREATE TABLE " + odd + " (" + odd + " int NOT NULL, other int, CONSTRAINT " + bracketed("k" + name) +
                " UNIQUE (" + odd + "))\nINSERT " + odd + " VALUES (7, 1)\nINSERT " + odd + " (other, " + odd +
                ") VALUES (2, 8)\nINSERT " + odd + " VALUES (9, 3)\nCREATE INDEX " + bracketed("i" + name) + " ON " +
                odd + " (" + odd + ", other)\nDELETE FROM " + odd + " WHERE other = 1\nUPDATE " + odd + " SET " + odd +
                " = " + odd + " + 10 WHERE other = 2\nALTER TABLE " + odd + " ALTER COLUMN " + odd +
                " bigint NOT NULL");
    EXPECT_EQ(server.line("SELECT " + odd + ", other FROM " + odd + " ORDER BY " + odd), "9|3 18|2") << name;
    EXPECT_EQ(server.line("SELECT z." + odd + " AS " + odd + " FROM (SELECT MAX(" + odd + ") AS " + odd + " FROM " +
                          odd + ") AS z"),
              "18")
        << name;
    EXPECT_EQ(server.line("SELECT COUNT(*) FROM " + odd + " AS " + odd + " WHERE " + odd + "." + odd + " > 9"), "1");
    EXPECT_EQ(server.line("SELECT name FROM sysobjects WHERE xtype = 'U'"), name);
    EXPECT_EQ(server.line("SELECT COUNT(*) FROM syscolumns WHERE name = '" + literal + "'"), "1") << name;
    const auto result = server.connect()->execute({"SELECT * FROM " + odd, 30, {}});
    EXPECT_EQ(result.rows->columns().front().name, name);
  }
}

TEST(OddNames, AllOfSQLitesRowNumbersAtOnce) {
  EmbeddedServer server;
  server.load(
      "CREATE TABLE t (rowid int, oid int, _rowid_ int)\nINSERT t VALUES (5, 5, 5)\nINSERT t VALUES (5, 5, 6)\n"
      "DELETE FROM t WHERE _rowid_ = 5\nUPDATE t SET oid = 1\nEXEC sp_rename 't.rowid', 'plain', 'COLUMN'\n"
      "EXEC sp_rename 't.oid', 'rowid', 'COLUMN'");
  EXPECT_EQ(server.line("SELECT plain, rowid, [_rowid_] FROM t"), "5|1|6");
  EXPECT_EQ(server.error("SELECT oid FROM t").description, "Invalid column name 'oid'.");
  EXPECT_EQ(server.error("SELECT t.oid FROM t").description, "Invalid column name 't.oid'.");
  EXPECT_EQ(server.error("SELECT rowid FROM sysobjects").description, "Invalid column name 'rowid'.");
}

TEST(OddNames, SchemasAndWhatIsNoTable) {
  EmbeddedServer server;
  std::string script;
  for (const char* schema : {"main", "temp", "sqlite_x", "a", "a.b"})
    script += "CREATE SCHEMA [" + std::string(schema) + "]\nGO\n";
  script +=
      "CREATE TABLE main.t (n int)\nCREATE TABLE temp.t (n int)\nCREATE TABLE sqlite_x.t (n int)\n"
      "CREATE TABLE [a].[b.c] (n int)\nCREATE TABLE [a.b].c (n int)\nCREATE TABLE t (n int)\n"
      "INSERT main.t VALUES (1)\nINSERT temp.t VALUES (2)\nINSERT sqlite_x.t VALUES (3)\nINSERT [a].[b.c] VALUES (4)\n"
      "INSERT [a.b].c VALUES (5)\nINSERT t VALUES (6)";
  server.load(script);
  EXPECT_EQ(server.line("SELECT x.n, y.n, z.n, u.n, v.n, t.n FROM main.t x, temp.t y, sqlite_x.t z, [a].[b.c] u, "
                        "[a.b].c v, t"),
            "1|2|3|4|5|6");
  for (const char* table :
       {"sqlite_master", "cat_objects", "main.sqlite_master", "temp.sqlite_schema", "pragma_table_info"})
    EXPECT_EQ(server.error("SELECT * FROM " + std::string(table)).number, errorNumber::invalidObjectName) << table;
  EXPECT_EQ(server.error("SELECT \"nope\" FROM t").description, "Invalid column name 'nope'.");
  const LoadReport report =
      loadScripts(server.servers, "S", "shop", {server.folder.write("s.sql", "CREATE SCHEMA sys")}, {});
  EXPECT_EQ(report.failed.size(), 1u) << "the server's own";
}

TEST(OddNames, VariablesAndServerVariables) {
  EmbeddedServer server;
  EXPECT_EQ(server.line("DECLARE @__x int, @a#b int, @é$1 int SET @__x = 5 SET @a#b = 6 SET @é$1 = 7 "
                        "SELECT @__x, @a#b, @É$1"),
            "5|6|7");
  EXPECT_EQ(server.line("SELECT @@ROWCOUNT, @@IDENTITY, @@TRANCOUNT, @@MAX_PRECISION"), "0|-|0|38");
  EXPECT_EQ(server.error("SELECT @@NOTHING").description, "Must declare the scalar variable \"@@nothing\".");
}

}  // namespace
}  // namespace qrel
