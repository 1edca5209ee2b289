// What scripts leave in the catalogue.
#include <gtest/gtest.h>

#include "tests/embedded/loading.h"

namespace qrel {
namespace {

constexpr const char* columnsSql =
    "select c.name, c.xtype, c.length, c.prec, c.scale, c.nullable, c.is_identity, c.seed, c.increment, "
    "c.computed_text "
    "from cat_columns c join cat_objects o on o.id = c.object_id order by o.id, colid";
constexpr const char* indexesSql =
    "select i.name, i.indid, i.kind, i.is_unique, i.filter, group_concat(c.name || ':' || k.keyno || ':' || "
    "k.descending, ' ') from cat_indexes i join cat_indexkeys k on k.object_id = i.object_id and k.indid = i.indid "
    "join "
    "cat_columns c on c.object_id = i.object_id and c.colid = k.colid group by i.object_id, i.indid order by "
    "i.object_id, "
    "i.indid";

TEST(CreateTable, ColumnsInAllForms) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE dbo.t (\n"
      "  a int IDENTITY(-5,2) NOT FOR REPLICATION NOT NULL,\n"
      "  b nvarchar(max) COLLATE Latin1_General_CI_AS NULL, [c d] decimal(9, 2) NOT NULL SPARSE,\n"
      "  e AS ([c d] * 2) PERSISTED, f AS CAST(a AS bigint), g AS a + 1, h AS UPPER(b), timestamp,\n"
      "  i uniqueidentifier ROWGUIDCOL DEFAULT newid(),\n"
      "  PERIOD FOR SYSTEM_TIME (a, b)\n"
      ") ON [PRIMARY] TEXTIMAGE_ON [PRIMARY] WITH (DATA_COMPRESSION = PAGE)");
  EXPECT_EQ(reasons(report.skipped) + reasons(report.failed), "");
  EXPECT_EQ(s.rows(columnsSql),
            "a|56|4|10|0|0|1|-5|2|-\n"
            "b|231|-1|-1|0|1|0|-|-|-\n"
            "c d|106|5|9|2|0|0|-|-|-\n"
            "e|106|9|11|2|1|0|-|-|([c d]*(2))\n"
            "f|127|8|19|0|1|0|-|-|(CONVERT([bigint],[a]))\n"
            "g|56|4|10|0|1|0|-|-|([a]+(1))\n"
            "h|231|-1|-1|0|1|0|-|-|(upper([b]))\n"
            "timestamp|189|8|8|0|0|0|-|-|-\n"
            "i|36|16|36|0|1|0|-|-|-\n");
}

TEST(CreateTable, ConstraintsBecomeObjectsOfTheTable) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE p (id int CONSTRAINT pk_p PRIMARY KEY NONCLUSTERED, n int UNIQUE CLUSTERED)\n"
      "CREATE TABLE c (id int, x int CHECK (x > 0) DEFAULT 1 REFERENCES p, y int CONSTRAINT df_y DEFAULT ('a'),\n"
      "  CONSTRAINT ck CHECK (x <> y), PRIMARY KEY (id, x DESC), INDEX ix (y DESC, x) INCLUDE (id) WHERE y IS NOT "
      "NULL,\n"
      "  CONSTRAINT fk FOREIGN KEY (x, y) REFERENCES c (id, x) ON DELETE NO ACTION ON UPDATE SET NULL)");
  EXPECT_EQ(reasons(report.skipped) + reasons(report.failed), "");
  EXPECT_EQ(report.relationships, 2);
  EXPECT_EQ(report.indexes, 1);
  EXPECT_EQ(
      s.rows("select p.name, o.xtype, count(*) from cat_objects o join cat_objects p on p.id = o.parent_obj group by "
             "1, 2 order by 1, 2"),
      "c|C|2\nc|D|2\nc|F|2\nc|PK|1\np|PK|1\np|UQ|1\n");
  EXPECT_EQ(
      s.rows("select o.name, fc.name, rt.name, rc.name, k.keyno from cat_references r join cat_objects o on o.id = "
             "r.constid join cat_objects rt on rt.id = r.rkeyid join cat_referencekeys k on k.constid = r.constid "
             "join cat_columns fc on fc.object_id = r.fkeyid and fc.colid = k.fcolid join cat_columns rc on "
             "rc.object_id = r.rkeyid and rc.colid = k.rcolid where o.name = 'fk' order by k.keyno"),
      "fk|x|c|id|1\nfk|y|c|x|2\n");
  const std::string indexes = s.rows(indexesSql);
  EXPECT_NE(indexes.find("|1|UQ|1|-|n:1:0\npk_p|2|PK|1|-|id:1:0\n"), std::string::npos) << indexes;
  EXPECT_NE(indexes.find("|1|PK|1|-|id:1:0 x:2:1\nix|2|IX|0|([y] IS NOT NULL)|y:1:1 x:2:0 id:0:0\n"), std::string::npos)
      << indexes;
  EXPECT_EQ(s.rows("select nullable from cat_columns where name = 'x' or name = 'id' order by object_id"), "0\n0\n0\n");
  EXPECT_EQ(s.source("ck"), "([x]<>[y])\n");
  EXPECT_EQ(s.source("df_y"), "('a')\n");
}

TEST(CreateTable, MadeUpNamesAgreeWhateverTheRoute) {
  const std::string names = "select name from cat_objects where parent_obj <> 0 order by name";
  Loading inlined;
  inlined.load(
      "CREATE TABLE LongTableName (Identifier int NOT NULL PRIMARY KEY, b int DEFAULT 1 CHECK (b > 0) UNIQUE)");
  Loading altered;
  altered.load(
      "CREATE TABLE LongTableName (Identifier int NOT NULL, b int)\nALTER TABLE longtablename ADD UNIQUE (B)\n"
      "ALTER TABLE LongTableName ADD DEFAULT 1 FOR b\nALTER TABLE LongTableName ADD PRIMARY KEY (Identifier)");
  const std::string made = inlined.rows(names);
  EXPECT_NE(made.find("PK__LongTabl__"), std::string::npos) << made;
  EXPECT_NE(made.find("DF__LongTable__b__"), std::string::npos) << made;
  EXPECT_EQ(made.size(), std::string("CK__LongTable__b__12345678\nDF__LongTable__b__12345678\n"
                                     "PK__LongTabl__1234567890123456\nUQ__LongTabl__1234567890123456\n")
                             .size());
  std::string without = made.substr(made.find('\n') + 1);  // the CHECK has no counterpart
  EXPECT_EQ(altered.rows(names), without);
}

TEST(AlterTable, AllForms) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE t (a int NOT NULL, b varchar(5) NULL, c int, CONSTRAINT ck CHECK (c > 0), UNIQUE (b))\n"
      "INSERT t VALUES (1, '12', 3)\n"
      "ALTER TABLE t WITH NOCHECK ADD d int NOT NULL CONSTRAINT df DEFAULT 7, e int IDENTITY, f AS a * 2\n"
      "ALTER TABLE t ADD CONSTRAINT pk PRIMARY KEY (a) WITH (PAD_INDEX = OFF) ON [PRIMARY]\n"
      "ALTER TABLE t ALTER COLUMN b int NOT NULL\n"
      "ALTER TABLE t NOCHECK CONSTRAINT ck; ALTER TABLE t CHECK CONSTRAINT ALL\n"
      "ALTER TABLE t DROP CONSTRAINT ck, COLUMN c\n"
      "ALTER TABLE t DROP COLUMN IF EXISTS c\n"
      "ALTER TABLE t DROP COLUMN a\n"
      "ALTER TABLE t ADD g int NOT NULL\n"
      "ALTER TABLE t ADD a int\n");
  EXPECT_EQ(reasons(report.skipped), "");
  ASSERT_EQ(report.failed.size(), 3u) << reasons(report.failed);
  EXPECT_EQ(report.failed[0].line, 9u);
  EXPECT_EQ(report.failed[0].reason.substr(0, 38), "The object 'pk' is dependent on column");
  EXPECT_EQ(s.rows("select a, b, d, e from \"dbo.t\""), "1|12|7|1\n");
  EXPECT_EQ(s.rows("select typeof(b) from \"dbo.t\""), "integer\n");
}

TEST(Objects, SchemasTypesSequencesAndTheirRemoval) {
  Loading s;
  const auto report = s.load(
      "CREATE SCHEMA sales AUTHORIZATION dbo\nGO\n"
      "CREATE TYPE sales.Name FROM nvarchar(30) NOT NULL\nCREATE TYPE dbo.List AS TABLE (a int PRIMARY KEY)\n"
      "EXEC sp_addtype phone, 'varchar(11)', 'NOT NULL'\n"
      "CREATE SEQUENCE sales.seq AS bigint START WITH 10 INCREMENT BY 5\nCREATE SYNONYM s FOR other.dbo.x\n"
      "CREATE TABLE sales.t (n sales.Name, p phone NULL, q phone, i int DEFAULT (NEXT VALUE FOR sales.seq))\n"
      "INSERT sales.t (n, q, i) VALUES ('a', 'b', NEXT VALUE FOR sales.seq)\nINSERT sales.t (n, q) VALUES ('c', 'd')\n"
      "DROP TYPE phone\nDROP SCHEMA sales\nDROP SYNONYM IF EXISTS s, nothing\nDROP TYPE List\n");
  EXPECT_EQ(s.rows("select name, xtype, nullable from cat_columns"), "n|231|0\np|167|1\nq|167|0\ni|56|1\n");
  EXPECT_EQ(s.rows("select n, i from \"sales.t\""), "a|10\nc|15\n");
  ASSERT_EQ(report.failed.size(), 2u) << reasons(report.failed) << reasons(report.skipped);
  EXPECT_EQ(report.failed[1].reason, "Cannot drop schema 'sales' because it is being referenced by object 'seq'.");
  EXPECT_EQ(s.rows("select xtype from cat_objects order by id"), "SO\nU\nD\n");
}

TEST(Modules, TheSourceIsKeptToTheByte) {
  Loading s;
  const std::string procedure = "-- head\r\n/* 'x */ create  PROC [dbo].[p] @a int = 1\r\nAS\tSELECT 'go'  \r\n";
  const auto report = s.load(procedure + "GO\r\n" +
                             "CREATE OR ALTER VIEW v AS SELECT 1 a\nGO\nCREATE TABLE t (a int)\nGO\n"
                             "CREATE FUNCTION f1 (@a int) RETURNS int AS BEGIN RETURN 1 END\nGO\n"
                             "CREATE FUNCTION f2 (@r varchar(10)) RETURNS TABLE AS RETURN (SELECT 1 a)\nGO\n"
                             "CREATE FUNCTION f3 () RETURNS @t TABLE (a int) AS BEGIN RETURN END\nGO\n"
                             "CREATE TRIGGER tr ON t AFTER INSERT, UPDATE AS DELETE FROM t\nGO\n"
                             "CREATE PROC hidden WITH RECOMPILE, ENCRYPTION AS SELECT 1\nGO\n"
                             " ALTER  VIEW v\nAS SELECT 2 a\nGO\n"
                             "ALTER PROC missing AS SELECT 1\nGO\n"
                             "PRINT 'x'\nCREATE VIEW w AS SELECT 1 a\nDROP TABLE t\nGO\n");
  EXPECT_EQ(s.source("p"), procedure + "\n");
  EXPECT_EQ(s.source("v"), " CREATE  VIEW v\nAS SELECT 2 a\n\n");
  EXPECT_EQ(s.source("hidden"), "-\n");
  EXPECT_EQ(s.objects(), "p|P\nv|V\nt|U\nf1|FN\nf2|IF\nf3|TF\ntr|TR\nhidden|P\n");
  EXPECT_EQ(s.rows("select p.name from cat_objects o join cat_objects p on p.id = o.parent_obj"), "t\n");
  ASSERT_EQ(report.failed.size(), 2u) << reasons(report.failed);
  EXPECT_EQ(report.failed[0].reason, "Invalid object name 'missing'.");
  EXPECT_EQ(report.failed[1].line, 25u);
}

TEST(Modules, CreateOrAlterLosesTwoWordsAndLongTextsAreSplit) {
  Loading s;
  const std::string body = "PROCEDURE p AS SELECT '" + std::string(4100, 'x') + "\xC3\xA9'";
  s.load("CREATE OR ALTER " + body);
  EXPECT_EQ(s.source("p"), "CREATE   " + body + "\n");
  EXPECT_EQ(s.rows("select colid, length(text) from cat_comments"), "1|4000\n2|134\n");
}

TEST(Rename, TablesColumnsIndexesAndConstraints) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE t (a int CONSTRAINT pk PRIMARY KEY, b int)\nCREATE UNIQUE INDEX ix ON t (b)\nINSERT t VALUES (1, "
      "2)\n"
      "EXEC sp_rename 't', 'u'\nEXEC sp_rename N'dbo.u.b', 'c', 'COLUMN'\nEXEC sp_rename 'u.ix', 'iy', 'INDEX'\n"
      "EXEC sp_rename @objname = 'pk', @newname = 'pk2'\nINSERT u VALUES (1, 3)\nINSERT u VALUES (3, 2)\n"
      "EXEC sp_rename 'u', 'pk2'");
  EXPECT_EQ(s.objects(), "u|U\npk2|PK\n");
  EXPECT_EQ(s.rows("select c from \"dbo.u\""), "2\n");
  ASSERT_EQ(report.failed.size(), 3u) << reasons(report.failed);
  EXPECT_EQ(report.failed[0].reason,
            "Violation of PRIMARY KEY constraint 'pk2'. Cannot insert duplicate key in object 'dbo.u'.");
  EXPECT_EQ(report.failed[1].reason, "Cannot insert duplicate key row in object 'dbo.u' with unique index 'iy'.");
}

TEST(Drop, LeavesNothingBehind) {
  Loading s;
  const auto report = s.load(
      "CREATE TABLE p (a int PRIMARY KEY)\nCREATE TABLE t (a int REFERENCES p, b int DEFAULT 1 UNIQUE, CHECK (a > b))\n"
      "CREATE INDEX ix ON t (b)\nCREATE INDEX iy ON t (b)\nGRANT SELECT ON t TO public\nGO\n"
      "CREATE TRIGGER tr ON t FOR INSERT AS PRINT 1\nGO\n"
      "DROP INDEX ix ON t\nDROP INDEX t.iy\nDROP INDEX IF EXISTS iz ON t\nDROP TABLE p, t\nDROP TABLE p\nDROP TABLE p");
  ASSERT_EQ(report.failed.size(), 2u) << reasons(report.failed);
  EXPECT_EQ(report.failed[0].reason, "Could not drop object 'p' because it is referenced by a FOREIGN KEY constraint.");
  for (const char* table :
       {"objects", "columns", "indexes", "indexkeys", "references", "referencekeys", "comments", "permissions"})
    EXPECT_EQ(s.rows("select count(*) from cat_" + std::string(table)), "0\n") << table;
  EXPECT_EQ(report.tables + report.indexes + report.triggers, 0);
}

}  // namespace
}  // namespace qrel
