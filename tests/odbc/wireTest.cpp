// What goes over the wire between a client of ODBC and the TDS end: types, values, results, parameters, errors.
#include <gtest/gtest.h>

#include "tests/odbc/odbcClient.h"

namespace qrel {
namespace {

TEST_F(TdsFixture, First) {
  load(
      "CREATE TABLE T (N int NOT NULL, Name nvarchar(20) NULL)\nGO\nINSERT T VALUES (1, N'é中😀')\nINSERT T VALUES (2, "
      "NULL)");
  serve();
  OdbcClient client(connectionString());
  ASSERT_TRUE(client.connected) << client.errors << client.errorText;
  EXPECT_EQ(client.run("SELECT * FROM T ORDER BY N"), SQL_SUCCESS) << client.errorText;
  EXPECT_EQ(client.rows(), "1|é中😀 2|NULL");
}

}  // namespace
}  // namespace qrel
