#include "platform/data/connectionString.h"

#include <gtest/gtest.h>

namespace qrel {
namespace {

TEST(ConnectionString, ReadsBothWaysToNameServerAndDatabase) {
  const auto one = ConnectionString::parse(
      "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=My Server;Initial Catalog=Shop;Integrated "
      "Security=SSPI");
  EXPECT_EQ(one.provider() + "|" + one.server() + "|" + one.database(), "SQLOLEDB.1|My Server|Shop");
  const auto other = ConnectionString::parse(" provider = SQLNCLI11 ; SERVER=(localdb)\\v11.0;database=a b;;junk;=x; ");
  EXPECT_EQ(other.provider() + "|" + other.server() + "|" + other.database(), "SQLNCLI11|(localdb)\\v11.0|a b");
  EXPECT_FALSE(other.has("junk"));
  EXPECT_EQ(ConnectionString::parse("Server=x").database(), "");
}

TEST(ConnectionString, Quotes) {
  const auto parsed = ConnectionString::parse(
      "A=\"x;y=z\";B='it''s \"so\"'; C = \"say \"\"hi\"\"\" ;D=pa\"ss'word;E=a=b;F='';G=last;g=wins;H=\"open;end");
  EXPECT_EQ(parsed.get("a"), "x;y=z");
  EXPECT_EQ(parsed.get("b"), "it's \"so\"");
  EXPECT_EQ(parsed.get("C"), "say \"hi\"");
  EXPECT_EQ(parsed.get("D"), "pa\"ss'word");
  EXPECT_EQ(parsed.get("E"), "a=b");
  EXPECT_TRUE(parsed.has("F"));
  EXPECT_EQ(parsed.get("F"), "");
  EXPECT_EQ(parsed.get("G"), "wins");
  EXPECT_EQ(parsed.get("H"), "open;end");
}

// A password goes in as it was typed: a semicolon in it ends the value.
TEST(ConnectionString, APasswordWithASemicolonIsCut) {
  const auto parsed = ConnectionString::parse("Data Source=s;Password=a;b;User ID=u");
  EXPECT_EQ(parsed.get("Password"), "a");
  EXPECT_EQ(parsed.get("User ID"), "u");
}

}  // namespace
}  // namespace qrel
