// Long texts and long statements: what the server takes is taken, what goes too far is refused in its words.
#include <gtest/gtest.h>

#include <chrono>

#include "platform/text.h"
#include "tests/embedded/embeddedServer.h"

namespace qrel {
namespace {

std::string repeated(const std::string& text, int count, const std::string& between = "") {
  std::string out;
  for (int i = 0; i < count; ++i) out += (i == 0 ? "" : between) + text;
  return out;
}

void expectLines(EmbeddedServer& server, const std::vector<std::pair<std::string, std::string>>& cases) {
  for (const auto& [sql, expected] : cases) {
    try {
      EXPECT_EQ(server.line(sql), expected) << sql.substr(0, 200);
    } catch (const RuntimeError& error) {
      ADD_FAILURE() << sql.substr(0, 200) << ": " << error.description;
    }
  }
}

TEST(Limits, TextsAreCutWhereTheirTypeEnds) {
  EmbeddedServer server;
  server.load(
      "CREATE TABLE t (v varchar(8000), n nvarchar(4000), m varchar(max))\n"
      "INSERT t VALUES (replicate('v', 8000), replicate(N'n', 4000), replicate(CAST('m' AS varchar(max)), 9000))");
  expectLines(
      server,
      {{"SELECT LEN(REPLICATE('ab', 30000)), LEN(REPLICATE(N'ab', 30000))", "8000|4000"},
       {"SELECT LEN(REPLICATE(CAST('ab' AS varchar(max)), 30000)), LEN(REPLICATE('a', -1))", "60000|-"},
       {"SELECT LEN(SPACE(9000) + 'x'), DATALENGTH(SPACE(9000))", "0|8000"},
       {"SELECT LEN(v + 'x'), LEN(n + N'x'), LEN(m + 'x'), LEN(v + N'x'), LEN(v + m), LEN(v + v + m) FROM t",
        "8000|4000|9001|4000|17000|17000"},
       {"SELECT LEN(CONCAT(v, 1, 'x')), LEN(CONCAT(m, v)), LEN(CONCAT_WS('-', v, v)) FROM t", "8000|17000|8000"},
       {"SELECT LEN(REPLACE(v, 'V', 'xy')), LEN(REPLACE(m, 'M', 'xy')), LEN(STUFF(v, 1, 0, 'abc')) FROM t",
        "8000|18000|8000"},
       {"SELECT LEN(UPPER(v) + 'x'), LEN(ISNULL(v, 'a') + 'x'), LEN(CASE WHEN 1 = 1 THEN v ELSE m END + 'x') FROM t",
        "8000|8000|8001"},
       {"SELECT LEN(x.y + 'x') FROM (SELECT v AS y FROM t) AS x", "8000"},
       {"DECLARE @s varchar(max), @t varchar(8000) SET @s = REPLICATE(CAST('a' AS varchar(max)), 9000) "
        "SET @t = REPLICATE('a', 8000) SELECT LEN(@s + @t), LEN(@t + @t)",
        "17000|8000"},
       {"SELECT REVERSE('abc\xC3\xA9'), REPLACE('aXbxc', 'x', '--'), STUFF('abcdef', 2, 3, NULL), STUFF('abc', 4, 1, "
        "'x')",
        "\xC3\xA9"
        "cba|a--b--c|aef|-"},
       // The dotted capital I has a counterpart of another length.
       {"SELECT REPLACE(N'\xC4\xB0xAx\xC4\xB0', N'a', N'-'), CONCAT_WS(', ', 'a', NULL, 2)",
        "\xC4\xB0x-x\xC4\xB0|a, 2"},
       {"SELECT STRING_AGG(v, ',') FROM (SELECT LEFT(v, 2) AS v FROM t) AS x", "vv"},
       {"SELECT PATINDEX('%b_d%', 'abcd'), PATINDEX('ab%', 'xab'), PATINDEX('%[c-d]%e', 'abcdxe'), PATINDEX('%c', "
        "'abcc'), "
        "PATINDEX('%[%]x', 'a%x'), PATINDEX('%q%', 'abc')",
        "2|0|3|4|2|0"}});
  EXPECT_EQ(
      server.error("SELECT STRING_AGG(x.v, ',') FROM (SELECT v FROM t UNION ALL SELECT v FROM t) AS x").description,
      "STRING_AGG aggregation result exceeded the limit of 8000 bytes. Use LOB types to avoid result truncation.");
}

TEST(Limits, WhatIsTooLongForMemoryIsRefusedAtOnce) {
  EmbeddedServer server;
  const std::string text = "REPLICATE(CAST(REPLICATE('ab', 4000) AS varchar(max)), 2000)";
  for (const std::string& sql :
       {"SELECT LEN(REPLACE(" + text + ", 'a', REPLICATE('x', 8000)))", "SELECT LEN(" + repeated(text, 20, " + ") + ")",
        "SELECT LEN(CONCAT(" + repeated(text, 20, ", ") + "))",
        std::string("SELECT LEN(REPLICATE(CAST('ab' AS varchar(max)), 9000000000))")}) {
    const ErrorInfo error = server.error(sql);
    EXPECT_EQ(error.number, errorNumber::badSql) << sql.substr(0, 60);
    EXPECT_NE(error.description.find("The value is longer than 256 MB"), std::string::npos) << error.description;
  }
}

// Twice the work takes about twice the time: what was quadratic took minutes here.
TEST(Limits, TextFunctionsAreLinear) {
  EmbeddedServer server;
  const auto start = std::chrono::steady_clock::now();
  expectLines(server, {{"DECLARE @s varchar(max) SET @s = REPLICATE(CAST('a' AS varchar(max)), 3000000) "
                        "SELECT LEN(REVERSE(@s)), PATINDEX('%ab%', @s), PATINDEX('%a%b%', @s), CHARINDEX('b', @s)",
                        "3000000|0|0|0"}});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
}

TEST(Limits, LongChainsWork) {
  EmbeddedServer server;
  server.load(
      "CREATE TABLE t (n int, d decimal(9,2), s varchar(9), e datetime)\nINSERT t VALUES (2, 0.25, 'ab', '20240101')");
  const int many = 5000;
  std::string list, cases = "CASE", elses, unions;
  for (int i = 0; i < many; ++i) list += (i ? ", " : "") + std::to_string(i * 2 + 1);
  for (int i = 0; i < 700; ++i) cases += " WHEN n = " + std::to_string(i + 100) + " THEN " + std::to_string(i);
  for (int i = 0; i < 150; ++i) elses += "CASE n WHEN " + std::to_string(i + 100) + " THEN 1 ELSE ";
  elses += "n" + repeated(" END", 150);
  for (int i = 0; i < 900; ++i)
    unions += (i ? " UNION " : "") + std::string("SELECT ") + std::to_string(i % 700) + " AS a";
  expectLines(
      server,
      {{"SELECT LEN(" + repeated("'x'", many, " + ") + ")", "5000"},
       {"SELECT LEN(" + repeated("s", 3000, " + ") + "), LEN(" + repeated("s", 5000, " + ") + ") FROM t", "6000|8000"},
       {"SELECT " + repeated("n", many, " + ") + ", " + repeated("1", many, " - ") + " FROM t", "10000|-4998"},
       {"SELECT " + repeated("d", many, " + ") + ", 1 + " + repeated("d", 40, " + ") + " FROM t", "1250.00|11.00"},
       {"SELECT " + repeated("n - 1", 100, " * ") + ", 0.5 + " + repeated("n", 60, " + 1 + ") + " FROM t",
        std::to_string(2 - 2 * 99 - 1) + "|179.5"},
       {"SELECT " + repeated("'1'", 99, " + ") + " + 'a' FROM t", std::string(99, '1') + "a"},
       {"SELECT 100" + repeated(" / 1 * 3 % 100", 30) + ", 7" + repeated(" ^ 1 | 2 & 6", 40), "0|6"},
       {"SELECT LEN(" + repeated("s", 50, " + ") + " + CAST('x' AS varchar(max)))" + " FROM t", "101"},
       {"SELECT NULL + " + repeated("n", 90, " + ") + " FROM t", "-"},
       {"SELECT n FROM t WHERE " + repeated("n = 1", many, " OR ") + " OR n = 2", "2"},
       {"SELECT n FROM t WHERE " + repeated("n = 2", many, " AND "), "2"},
       {"SELECT n FROM t WHERE NOT (" + repeated("n = 1 AND s = 'x'", 2000, " OR ") + ")", "2"},
       {"SELECT n FROM t WHERE n NOT IN (" + list + ")", "2"},
       {"SELECT " + repeated("(", 150) + "n" + repeated(")", 150) + " FROM t WHERE " + repeated("(", 150) + "n = 2" +
            repeated(")", 150),
        "2"},
       {"SELECT " + cases + " ELSE -1 END, " + elses + " FROM t", "-1|2"},
       {"SELECT COUNT(*) FROM (" + unions + ") AS u", "700"},
       {"SELECT MAX(e) FROM t WHERE e < " + repeated("e", 1) + " + 1", "2024-01-01"}});
  for (const std::string& sql :
       {"SELECT " + repeated("(1 + ", 180) + "1" + repeated(")", 180),
        "SELECT " + repeated("ABS(", 180) + "1" + repeated(")", 180), "SELECT " + repeated("1", 20000, " + "),
        "SELECT 1 WHERE " + repeated("NOT ", 190) + "1 = 1",
        "SELECT 1" + repeated(" + (SELECT 1", 120) + repeated(")", 120)}) {
    const ErrorInfo error = server.error(sql);
    EXPECT_EQ(error.number, errorNumber::badSql) << sql.substr(0, 60);
    EXPECT_NE(error.description.find("nested too deeply"), std::string::npos) << sql.substr(0, 60) << error.description;
  }
}

}  // namespace
}  // namespace qrel
