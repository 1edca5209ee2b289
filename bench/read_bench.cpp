// The floor of a data comparison: both tables read and nothing compared, all rows in memory and row by row.
// Usage: bench_read SERVER DATABASE DATABASE TABLE, with QREL_HOME set.
#include <chrono>
#include <cstdio>
#include <iostream>

#include "app/mdlMain.h"
#include "db/mdlData.h"
#include "embedded/embeddedProvider.h"
#include "embedded/instance/instances.h"
#include "platform/host/consoleHost.h"
#include "platform/store/folders.h"

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  const qrel::Folders folders = qrel::findFolders(argv[0]);
  qrel::EmbeddedServers servers(folders.servers);
  qrel::DataAccess data;
  data.add(std::make_unique<qrel::EmbeddedProvider>(servers, data.providerStop()));
  qrel::KeyStore store(folders.settings);
  qrel::ConsoleHost host(std::cerr);
  qrel::Program program(host, data, store);
  qrel::tServer server;
  server.Name = argv[1];
  for (const int cursor : {qrel::adUseClient, qrel::adUseServer}) {
    program.settings.glngCursorLocation = cursor;
    const auto started = std::chrono::steady_clock::now();
    std::size_t rows = 0;
    qrel::RecordsetPtr sides[2];
    for (const int side : {0, 1})
      if (qrel::GetAdoRS(program, server, qrel::adCmdText, qrel::SqlText("SELECT * FROM ") << qrel::asName(argv[4]),
                         sides[side], argv[2 + side]) == -1)
        return 3;
    for (const qrel::RecordsetPtr& rs : sides)
      for (; !rs->Eof(); rs->MoveNext()) ++rows;
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - started;
    std::printf("  %zu rows read, %s: %.2f s\n", rows, cursor == qrel::adUseClient ? "all in memory" : "row by row",
                seconds.count());
  }
  return 0;
}
