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

TEST(ConnectionString, AQuotedValueReadsBackAsItWas) {
  for (const char* plain : {"", "s", "My Server", "(localdb)\\v11", "10.0.0.1,1433"})
    EXPECT_EQ(ConnectionString::quoted(plain), plain) << "stands as it is";
  for (const std::string value :
       {"a;b", "a=b", "{a}", "\"", "it's", " a", "a\t", "say \"hi\";Data Source=x", "}", "'"}) {
    const auto parsed =
        ConnectionString::parse("Data Source=s;Password=" + ConnectionString::quoted(value) + ";User ID=u");
    EXPECT_EQ(parsed.get("Password"), value);
    EXPECT_EQ(parsed.server() + "|" + parsed.get("User ID"), "s|u") << value;
  }
}

}  // namespace
}  // namespace qrel
