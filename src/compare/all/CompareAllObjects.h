// What the passes of a run over the listed objects of one type have in common, whether structure or data is compared.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>

#include "compare/all/CompareAllReport.h"
#include "compare/all/TableNamesakes.h"

namespace qrel {

// What lasts for a whole run.
struct CompareAllRun {
  CompareAllRun(Program& theProgram, CompareAllControls& controls, const CompareAllInput& theInput)
      : program(theProgram),
        frm(controls),
        input(theInput),
        selected(theInput.selection),
        pulse(theProgram, controls) {}

  Program& program;
  CompareAllControls& frm;
  const CompareAllInput& input;
  const SelectedNames selected;
  RunPulse pulse;
  std::array<ConnectionPtr, 2> arrConnections;
  CompareAllReport report;
  bool blnSomeColumnsIgnored = false;

  tServer& server(int side) { return program.main.gtypSelServ[static_cast<std::size_t>(side)]; }
  const ConnectionPtr& connection(int side) const { return arrConnections[static_cast<std::size_t>(side)]; }
  const std::string& database(int side) const { return input.arrDatabases[static_cast<std::size_t>(side)]; }
};

// What the end of a run owes in any case.
class CompareAllRunEnd {
 public:
  explicit CompareAllRunEnd(CompareAllRun& run) : run_(run) {}
  ~CompareAllRunEnd();
  CompareAllRunEnd(const CompareAllRunEnd&) = delete;
  CompareAllRunEnd& operator=(const CompareAllRunEnd&) = delete;

 private:
  CompareAllRun& run_;
};

// Switches the window to its progress view, starts the clock and removes the log of the run before.
void ShowRunProgress(CompareAllRun& run);

// "server.database" of both sides, as the report's head has them.
std::array<std::string, 2> RunDatabaseNames(CompareAllRun& run);

class CompareAllObjects {
 public:
  // Both lists, the pass over Source, the pass over Target and the type's part of the report. False: the run is over,
  // without a report.
  bool compare();

 protected:
  struct Item {
    std::string strPrinted;  // as listed
    std::string strName;     // without its owner
    long lngId = 0;
    int side = 0;
  };

  CompareAllObjects(CompareAllRun& run, long lngType) : run_(run), program_(run.program), type_(lngType) {}
  virtual ~CompareAllObjects() = default;

  virtual void beginReport() = 0;
  // One object of Source. False: the run is over.
  virtual bool compareItem(const Item& item) = 0;
  virtual bool targetPass() = 0;

  // Reads ahead what an item of a side's pass will ask for, and keeps it for so many further items.
  virtual void readAhead(const Item&, std::size_t) {}
  // The other side's namesake of a table as far as it is known without asking; 0: not known.
  long knownNamesake(int side, const Item& item) const;

  // Hands over the items of a side that take part, with the name shown and time for events before each. False: the run
  // is over.
  bool eachItem(int side, const std::function<bool(const Item&)>& handle);
  // Whether the name by which the item would be looked up is another than its own; told then.
  bool nameIsCut(const Item& item);
  void notCompared(const Item& item, const std::string& strWhy = {});
  void noteVerdict(const Item& item, VerdictState state);
  bool isNotCompared(const Item& item) const { return notCompared_.contains(item.strPrinted); }
  // "table Orders"
  std::string wordsFor(const std::string& strName) const;
  // Whether the item has a namesake on the other side to be compared with. False: the run is over.
  bool findNamesake(int side, const std::string& strName, long lngId, long& lngOtherId, bool& blnProceed);
  static std::string bareName(const std::string& strName);

  CompareAllRun& run_;
  Program& program_;
  const long type_;

 private:
  std::size_t countOfItems(int side) const;  // those that take part
  // False: stopped. blnRead: both lists are whole.
  bool loadLists(bool& blnRead);
  Item itemAt(int side, std::size_t row) const;
  bool proceed(const std::string& strListed) const;
  void readAheadOf(int side, std::size_t row, std::size_t& ahead);
  bool sourcePass();
  void countTotals();
  void countUnlisted();

  std::optional<TableNamesakes> namesakes_;      // of a comparison of tables
  std::unordered_set<std::string> notCompared_;  // as listed
};

}  // namespace qrel
