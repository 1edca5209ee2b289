// The embedded server under the suite of all providers, and how a connection string finds it.
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "embedded/load/loader.h"
#include "platform/data/dataAccess.h"
#include "platform/error.h"
#include "platform/files.h"
#include "tests/platform/data/providerContract.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

class EmbeddedHarness : public ProviderHarness {
 public:
  EmbeddedHarness() {
    servers_.create("Contract");
    files::writeAtomically(folder_.path() / "contract.sql", contractScript);
    const LoadReport report = loadScripts(servers_, "Contract", "Filled", {folder_.path() / "contract.sql"}, {});
    for (const SkippedStatement& one : report.skipped)
      ADD_FAILURE() << one.line << " " << one.firstWords << ": " << one.reason;
    for (const SkippedStatement& one : report.failed)
      ADD_FAILURE() << one.line << " " << one.firstWords << ": " << one.reason;
    EXPECT_EQ(report.tables, 3);
    dataAccess_.add(std::make_unique<EmbeddedProvider>(servers_, dataAccess_.providerStop()));
  }
  DataAccess& dataAccess() override { return dataAccess_; }
  std::string connectionString(const std::string& database) override {
    return "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=Contract;Initial Catalog=" +
           (database.empty() ? "Filled" : database) + ";Integrated Security=SSPI";
  }

 private:
  TemporaryFolder folder_;
  EmbeddedServers servers_{folder_.path() / "servers"};
  DataAccess dataAccess_;
};

std::unique_ptr<ProviderHarness> makeEmbeddedHarness() { return std::make_unique<EmbeddedHarness>(); }

INSTANTIATE_TEST_SUITE_P(Embedded, ProviderContract, ::testing::Values(&makeEmbeddedHarness));

TEST(DataAccess, TheConnectionStringAloneDecides) {
  EmbeddedHarness harness;
  const auto opens = [&](const std::string& text) -> std::string {
    try {
      harness.dataAccess().open(text);
      return "";
    } catch (const DataError& error) {
      EXPECT_EQ(error.number, errorNumber::cannotConnect);
      return error.description;
    }
  };
  EXPECT_EQ(opens("Provider=SQLOLEDB.1;Data Source=contract;Initial Catalog=FILLED;Integrated Security=SSPI"), "");
  EXPECT_EQ(opens("Provider=SQLOLEDB.1;Data Source=Contract;Password=x;User ID=sa"), "");
  EXPECT_EQ(opens("Provider=SQLNCLI11;Server=(localdb)\\Contract;Initial Catalog=Filled;Integrated Security=SSPI"), "");
  EXPECT_EQ(opens("Provider=SQLNCLI11;Server=(LocalDB)\\CONTRACT;Integrated Security=SSPI"), "");
  EXPECT_NE(opens("Provider=SQLOLEDB.1;Data Source=(localdb)\\Contract;Initial Catalog=Filled").find("(localdb)"),
            std::string::npos);
  EXPECT_NE(
      opens("Provider=SQLOLEDB.1;Data Source=Elsewhere;Initial Catalog=Shop").find("qrel load Elsewhere/Shop FILE"),
      std::string::npos);
  EXPECT_NE(opens("Provider=SQLNCLI11;Server=(localdb)\\Other").find("qrel load Other/DATABASE FILE"),
            std::string::npos);
  EXPECT_NE(opens("Provider=MSDASQL;Data Source=Contract").find("MSDASQL"), std::string::npos);
  EXPECT_NE(opens("Provider=SQLOLEDB.1;Initial Catalog=Filled").find("Data Source"), std::string::npos);
}

}  // namespace
}  // namespace qrel
