// The console program on a server by way of ODBC: what it prints is what it prints of the embedded server, to the byte.
#include <gtest/gtest.h>

#include <memory>

#include "platform/store/folders.h"
#include "platform/text.h"
#include "tests/console/consoleTest.h"
#include "tests/support/tds/server.h"

namespace qrel {
namespace {

std::string withoutTime(const std::string& report) { return report.substr(0, report.find("Time Elapsed: ")); }

class OdbcConsoleTest : public ConsoleTest {
 protected:
  OdbcConsoleTest() {
    setenv("QREL_PASSWORD", "secret", 1);
    for (const std::string version : {"1", "2"})
      EXPECT_EQ(run({"load", "S/V" + version, std::string(QREL_SAMPLES) + "/shop_v" + version + ".sql"}), 0) << err;
    server_ = std::make_unique<tds::Server>(servers_, tds::ServerOptions{.instance = "S"});
    name_ = "127.0.0.1," + std::to_string(server_->port());
  }
  ~OdbcConsoleTest() override { unsetenv("QREL_PASSWORD"); }
  int add(const std::vector<std::string>& more) {
    std::vector<std::string> arguments = {"servers", "add", "127.0.0.1", "--port", std::to_string(server_->port())};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return run(arguments);
  }

  EmbeddedServers servers_{findFolders("qrel").servers};
  std::unique_ptr<tds::Server> server_;
  std::string name_;
};

TEST_F(OdbcConsoleTest, PrintsWhatItPrintsOfTheEmbeddedServer) {
  ASSERT_EQ(add({"--login", "sa", "--encrypt", "no"}), 0) << err;
  const std::vector<std::vector<std::string>> commands = {
      {"databases", "S"},
      {"objects", "S/V1"},
      {"text", "S/V2", "--type", "tables", "Orders"},
      {"compare", "S/V1", "S/V2", "--types", "all", "--details"},
      {"--set", "CursorConnectionUseServer=0", "compare", "S/V1", "S/V2", "--types", "all"},
      {"compare", "S/V1", "S/V1", "--types", "all"},
      {"data", "S/V1", "S/V2", "--all"},
      {"data", "S/V1", "S/V2", "--table", "Products", "--key", "ProductId"},
      {"--set", "CursorConnectionUseServer=0", "data", "S/V1", "S/V2", "--table", "Orders"},
      {"view", "S/V1", "--table", "Customers"},
      {"analyze", "S/V2", "--table", "Products"},
      {"references", "S/V2", "--all"},
      {"script", "S/V1", "S/V2", "--table", "Customers"},
      {"compare", "S/V1", "S/Nowhere"}};
  for (const std::vector<std::string>& command : commands) {
    const int code = run(command);
    const std::string printed = out;
    std::vector<std::string> there = command;
    for (std::string& word : there)
      if (word == "S" || word.starts_with("S/")) word.replace(0, 1, name_);
    EXPECT_EQ(run(there), code) << err;
    EXPECT_EQ(withoutTime(replaceAll(out, name_, "S")), withoutTime(printed)) << command[0] << " " << command[1];
    EXPECT_EQ(printed.empty(), code == 3) << command[0];
  }
}

TEST_F(OdbcConsoleTest, AddsAndTestsServers) {
  setenv("QREL_PASSWORD", "wrong", 1);
  EXPECT_EQ(add({"--login", "sa", "--encrypt", "no"}), 3);
  EXPECT_TRUE(told("Login failed for user 'sa'") && told("QREL_PASSWORD")) << err;
  EXPECT_FALSE(told("wrong"));
  setenv("QREL_PASSWORD", "secret", 1);
  EXPECT_EQ(add({"--login", "sa"}), 3);
  EXPECT_TRUE(told("--encrypt no")) << err;
  ASSERT_EQ(add({"--login", "sa", "--encrypt", "no", "--driver", "FreeTDS", "--trust-certificate"}), 0) << err;
  // Removing another server rewrites the list: nothing of this one is lost.
  ASSERT_EQ(run({"servers", "add", "S"}), 0) << err;
  ASSERT_EQ(run({"servers", "remove", "S", "--yes"}), 0) << err;
  ASSERT_EQ(run({"servers", "test", name_}), 0) << err;
  for (const std::string line : {"driver\tFreeTDS\n", "encryption\toff\n", "authentication\tlogin sa\n",
                                 "database\tV1\n", "database\tV2\n", "round trip\t"})
    EXPECT_TRUE(printed(line)) << line << "\n" << out;
  EXPECT_EQ(run({"--set", "OdbcDriver=Nobody's", "compare", name_ + "/V1", "S/V2"}), 1) << err;
  EXPECT_EQ(run({"--set", "OdbcDriver=Nobody's", "databases", "127.0.0.1"}), 3);
  EXPECT_TRUE(told("Nobody's") && told("FreeTDS")) << err;
}

// A line that breaks in the middle of a run: never "identical".
TEST_F(OdbcConsoleTest, ALostLineMakesTheRunIncomplete) {
  ASSERT_EQ(add({"--login", "sa", "--encrypt", "no"}), 0) << err;
  server_->switches().cutAfterRows = 2;
  for (const std::vector<std::string>& command :
       {std::vector<std::string>{"compare", name_ + "/V1", name_ + "/V1", "--types", "all"},
        {"data", name_ + "/V1", name_ + "/V1", "--table", "Orders"}}) {
    const int code = run(command);
    EXPECT_TRUE(code == 3 || code == 4) << code << out;
    EXPECT_TRUE(told("was lost")) << err;
  }
}

}  // namespace
}  // namespace qrel
