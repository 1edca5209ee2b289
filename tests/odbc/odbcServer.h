// The program's ODBC provider in front of a TDS end, for tests.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "embedded/load/loader.h"
#include "platform/data/connectionString.h"
#include "platform/data/dataAccess.h"
#include "platform/data/odbc/odbcProvider.h"
#include "platform/data/recordset.h"
#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"
#include "tests/support/tds/server.h"

namespace qrel {

// An embedded server "S", by way of TDS as "127.0.0.1,PORT".
class OdbcServer {
 public:
  explicit OdbcServer(const std::string& script, const std::string& database = "shop") {
    servers.create("S");
    load(database, script);
    tds = std::make_unique<tds::Server>(servers, tds::ServerOptions{.instance = "S"});
    choices.driver = "FreeTDS";
    choices.loginSeconds = 5;
    data.add(makeOdbcProvider([this] { return choices; }, data.providerStop()));
  }

  void load(const std::string& database, const std::string& script) {
    const LoadReport report = loadScripts(servers, "S", database, {folder.write(database + ".sql", script)}, {});
    for (const auto* list : {&report.skipped, &report.failed})
      for (const SkippedStatement& each : *list) ADD_FAILURE() << each.firstWords << ": " << each.reason;
  }
  std::string name() const { return "127.0.0.1," + std::to_string(tds->port()); }
  // `login` takes the place of the right one.
  std::string connectionString(const std::string& database = "shop",
                               const std::string& login = "Password=secret;User ID=sa") const {
    return "Provider=SQLOLEDB.1;Persist Security Info=False;Data Source=" + name() + ";Initial Catalog=" + database +
           ";" + login + ";Encrypt=no";
  }
  std::shared_ptr<Connection> connect(const std::string& text = {}) {
    auto connection = std::make_shared<Connection>(data);
    connection->ConnectionString = text.empty() ? connectionString() : text;
    connection->Open();
    return connection;
  }
  Recordset open(const std::string& sql, int location = adUseClient, int seconds = 30) {
    Command command;
    command.ActiveConnection = connect();
    command.CommandText = sql;
    command.CommandTimeout = seconds;
    Recordset rs;
    rs.CursorLocation = location;
    rs.CacheSize = 5;
    rs.Open(command);
    return rs;
  }
  // The error of reading a query to its end; number 0 without one.
  DataError failure(const std::string& sql, int location = adUseClient, int seconds = 30) {
    try {
      Recordset rs = open(sql, location, seconds);
      while (rs.State() == adStateOpen && !rs.Eof()) rs.MoveNext();
    } catch (const DataError& error) {
      return error;
    }
    return {0, ""};
  }

  TemporaryFolder folder;
  EmbeddedServers servers{folder.path() / "servers"};
  std::unique_ptr<tds::Server> tds;
  OdbcChoices choices;
  DataAccess data;
};

}  // namespace qrel
