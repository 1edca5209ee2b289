// The query door: the input is a query over a small database, whose rows are read to the end.
#include "embedded/embeddedProvider.h"
#include "embedded/load/loader.h"
#include "platform/data/columnStore.h"
#include "tests/fuzz/fuzz.h"

namespace qrel {
namespace {

constexpr const char* script = R"(
CREATE TABLE a (id int IDENTITY PRIMARY KEY, name nvarchar(50) NOT NULL, price decimal(18,4), paid money, at datetime,
  day date, flag bit, key1 uniqueidentifier, bytes varbinary(20), amount float, big bigint, note varchar(max))
INSERT a (name, price, paid, at, day, flag, key1, bytes, amount, big, note) VALUES
  (N'one', 1.5, 2.25, '20200102 03:04:05.678', '20200102', 1, '6F9619FF-8B86-D011-B42D-00C04FC964FF', 0x0102, 0.1,
   9223372036854775807, 'x'),
  (N'two', -99999999999999.9999, -0.0001, '17530101', '00010101', 0, NULL, 0x, 1e300, -9223372036854775808, ''),
  (N'three', NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL, NULL)
CREATE TABLE b (id int PRIMARY KEY, a_id int REFERENCES a(id), qty smallint, code char(3), rate real, small tinyint)
INSERT b VALUES (1, 1, 5, 'ab', 1.5, 255), (2, 1, -7, 'cd', 2, 0), (3, 2, 32767, NULL, NULL, 1)
)";

struct Database {
  Database() : servers(folder.path() / "servers"), provider(servers) {
    servers.create("S", defaultProductVersion);
    loadScripts(servers, "S", "shop", {folder.write("script.sql", script)}, {});
  }
  TemporaryFolder folder;
  EmbeddedServers servers;
  EmbeddedProvider provider;
};

}  // namespace
}  // namespace qrel

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace qrel;
  static Database database;
  fuzzed([&] {
    const auto connection =
        database.provider.open(ConnectionString::parse("Provider=SQLNCLI11;Server=(localdb)\\S;Initial Catalog=shop"));
    const CommandResult result = connection->execute({std::string(textOf(data, size)), 2, {}});
    if (!result.rows) return;
    ColumnStore store(result.rows->columns());
    while (store.rowCount() < 1000 && result.rows->fetch(store, 100) > 0) {
    }
  });
  return 0;
}
