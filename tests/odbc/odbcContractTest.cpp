// The suite of all providers by way of ODBC, and every type beside what the embedded server gives directly.
#include <gtest/gtest.h>

#include "embedded/embeddedProvider.h"
#include "tests/odbc/odbcServer.h"
#include "tests/platform/data/providerContract.h"

namespace qrel {
namespace {

class OdbcHarness : public ProviderHarness {
 public:
  DataAccess& dataAccess() override { return server_.data; }
  std::string connectionString(const std::string& database) override {
    return server_.connectionString(database.empty() ? "shop" : database);
  }

 private:
  OdbcServer server_{contractScript};
};

std::unique_ptr<ProviderHarness> makeOdbcHarness() { return std::make_unique<OdbcHarness>(); }

INSTANTIATE_TEST_SUITE_P(Odbc, ProviderContract, ::testing::Values(&makeOdbcHarness));

constexpr const char* allTypes = R"sql(
CREATE TABLE Types (Id int NOT NULL, B bit, T tinyint, S smallint, G bigint, D decimal(38,10), N numeric(5,5), M money,
  Q smallmoney, F float, R real, Dt datetime, Sd smalldatetime, Da date, Ti time, T0 time(0), T2 datetime2(3),
  O datetimeoffset, O2 datetimeoffset(2), U uniqueidentifier, C char(10), V varchar(50), Nc nchar(5), Nv nvarchar(50),
  Bi binary(4), Vb varbinary(20), W nvarchar(4000))
CREATE TABLE Longs (Id int NOT NULL, Vm varchar(max), Nm nvarchar(max), Bm varbinary(max), Te text, Nt ntext, Im image,
  X xml, Sv sql_variant, D decimal(9,2))
GO
INSERT INTO Types VALUES (1, 1, 255, -32768, -9223372036854775807, -1234567890123456789012345678.0123456789, -0.00005,
  -922337203685477.5807, 214748.3647, 0.1, 0.1, '2024-02-29 23:59:59.997', '2024-02-29 23:59', '0001-01-01',
  '23:59:59.1234567', '13:00:00', '9999-12-31 23:59:59.999', '2024-02-29 12:30:00.1200000 +02:00',
  '0099-01-01 00:00:00 -05:30', '00112233-4455-6677-8899-AABBCCDDEEFF', 'abc', 'caf' + CHAR(233), N'ж', N'zü中😀',
  0x0001FEFF, 0xDEAD, REPLICATE(N'😀', 2000))
INSERT INTO Types VALUES (2, 0, 0, 0, 0, 0.5, 0, 0, 0, 1e300, 3.4e38, '1753-01-01', '1900-01-01', '9999-12-31', '00:00',
  '00:00', '0001-01-01', '0001-01-01 00:00 +00:00', '9999-12-31 23:59:59.99 +14:00', '00000000-0000-0000-0000-000000000000',
  '', '', N'', N'', 0x, 0x, N'')
INSERT INTO Types (Id) VALUES (3)
INSERT INTO Types (Id, F, R, Dt, Ti) VALUES (4, -1.5e-7, 16777217, '2000-01-01 00:00:00.003', '00:00:00.0000001')
INSERT INTO Longs VALUES (1, REPLICATE(CAST('ab' AS varchar(max)), 100000), REPLICATE(CAST(N'中😀x' AS nvarchar(max)), 60000),
  CAST(REPLICATE(CAST('q' AS varchar(max)), 70000) AS varbinary(max)), 'text', N'ж😀', 0x00FF, N'<a>ж</a>', 42, 1.5)
INSERT INTO Longs VALUES (2, '', N'', 0x, '', N'', 0x, NULL, N'letters', -0.01)
INSERT INTO Longs (Id) VALUES (3)
)sql";

TEST(OdbcRows, EveryTypeReadsAsTheEmbeddedServerGivesIt) {
  OdbcServer server(allTypes);
  DataAccess direct;
  direct.add(std::make_unique<EmbeddedProvider>(server.servers));
  for (const std::string table : {"Types", "Longs"}) {
    for (const int location : {adUseClient, adUseServer}) {
      const std::string sql = "SELECT * FROM " + table + " ORDER BY Id";
      Recordset there = server.open(sql, location);
      Command command;
      command.ActiveConnection = std::make_shared<Connection>(direct);
      command.ActiveConnection->ConnectionString = "Provider=SQLOLEDB.1;Data Source=S;Initial Catalog=shop";
      command.ActiveConnection->Open();
      command.CommandText = sql;
      Recordset here;
      here.Open(command);
      ASSERT_EQ(there.FieldCount(), here.FieldCount());
      for (std::size_t i = 0; i < here.FieldCount(); ++i) {
        const ColumnInfo& a = there.Column(i);
        const ColumnInfo& b = here.Column(i);
        EXPECT_EQ(a.name, b.name);
        EXPECT_EQ(a.typeName + "/" + std::to_string(a.precision) + "/" + std::to_string(a.scale),
                  b.typeName + "/" + std::to_string(b.precision) + "/" + std::to_string(b.scale))
            << b.name;
      }
      for (; !here.Eof(); here.MoveNext(), there.MoveNext()) {
        ASSERT_FALSE(there.Eof());
        for (std::size_t i = 0; i < here.FieldCount(); ++i) {
          const Field expected = here.Fields(i);
          const Field got = there.Fields(i);
          EXPECT_EQ(got.IsNull(), expected.IsNull()) << expected.column->name;
          EXPECT_TRUE(got.Text() == expected.Text())
              << expected.column->name << ": " << got.Text().substr(0, 80) << " for " << expected.Text().substr(0, 80);
        }
      }
      EXPECT_TRUE(there.Eof());
    }
  }
}

// Procedures by name: what comes back of the parameters, the value that it returns, its failure.
TEST(OdbcProcedures, ParametersAndReturnValuesComeBack) {
  OdbcServer server("CREATE TABLE T (N int)");
  server.tds->switches().returnValue = 7;
  server.tds->switches().outputInteger = 41;
  const auto connection = server.data.open(server.connectionString());
  CommandRequest request{
      "sp_executesql",
      30,
      {Value::ofText("DECLARE @x int"), Value::ofText("@a int, @b int"), Value::ofInteger(5), Value::ofInteger(6)},
      true,
      {false, false, true, false}};
  CommandResult result = connection->execute(request);
  EXPECT_EQ(result.returnValue, 7);
  ASSERT_EQ(result.outputs.size(), 4u);
  EXPECT_EQ(result.outputs[2].integer, 41);
  EXPECT_EQ(result.outputs[3].integer, 6);
  const std::vector<std::string> sent = {"5", "6"};
  EXPECT_EQ(server.tds->traffic().requests().back().parameters, sent);
}

}  // namespace
}  // namespace qrel
