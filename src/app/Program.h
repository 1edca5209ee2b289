// The running program: what would be global is a field of one record per module, all held here.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <typeindex>
#include <vector>

#include "app/tServer.h"
#include "platform/data/dataAccess.h"
#include "platform/host/host.h"
#include "platform/store/keyStore.h"

namespace qrel {

// Version and build of this program; a report of an error names them.
inline constexpr const char* programName = "Quorrel";
extern const char* const programVersion;  // major.minor, as the build has it
inline constexpr std::int32_t programBuild = 188;

// Where things lie. All folders end in a separator once SetFilePaths has run.
struct mdlMainState {
  std::string gstrAppPath, gstrDebugFile, gstrDataPath;
  std::string gstrTablesCompsIni, gstrCompsIni;
  std::string gstrIgnoredColsDataIni, gstrIgnoredColsStructIni, gstrIgnoredColsDataAnalysisIni;
  bool gblnDebugMode = false;
  std::int32_t glngRunSavedCompId = 0;  // 0: interactive
  std::array<tServer, 2> gtypSelServ;   // 0 Source, 1 Target
  bool gblnCloseAfterRun = false;
};

// Settings that are read at start; the rest is read from the store at each use (settings.h has the table of all).
struct SettingsState {
  std::int32_t Timeout = 30;   // seconds
  std::int32_t CacheSize = 5;  // rows
  std::int32_t glngCursorLocation = 2;
  std::int32_t glngMaxRowsInDiffTable = 500;
  bool Run = false;
  bool ShowOwners = false;
  bool CaseSensitive = true;
  bool gblnDataCaseSensitive = true;
  bool IgnoreWhitespace = true;
  bool IgnoreComments = true;
  bool IgnoreIndexes = false;
  bool IgnoreSysObjects = true;
  bool FilterOfflineDbs = false;
  bool IgnoreColSeq = true;
  bool AutoSelTargetObj = false;
  bool AnalyzeConstraints = false;
  bool AutoSaveSchemas = false;
};

struct mdlDataState {
  bool gblnNoConnErrMsg = false;  // failures of GetAdoRS and GetAdoRS_Conn stay silent
};

struct ServerListState {
  std::vector<tServer> gtypServers;  // element 0 is server 1
  bool gblnServersLoaded = false;
};

struct ReportState {
  std::string gstrReportText;  // between the comparison that writes it and the report window; the caller clears it
};

class Program {
 public:
  Program(Host& programHost, DataAccess& dataAccess, KeyStore& registry)
      : host(programHost), data(dataAccess), store(registry) {}
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  Host& host;
  DataAccess& data;
  KeyStore& store;

  mdlMainState main;
  SettingsState settings;
  mdlDataState mdlData;
  ServerListState servers;
  ReportState report;
  std::string programFolder;    // of the program file; set before Main runs
  std::string documentsFolder;  // of the user; empty: the program's folder
  std::string commandLine;

  // The record of any further module: made on first use, gone with the program.
  template <class State>
  State& state() {
    auto& slot = states_[std::type_index(typeid(State))];
    if (!slot) slot = std::make_shared<State>();
    return *static_cast<State*>(slot.get());
  }

 private:
  std::map<std::type_index, std::shared_ptr<void>> states_;
};

}  // namespace qrel
