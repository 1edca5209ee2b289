// One type's part of a whole-database run: both lists, the pass over Source, the pass over Target.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <unordered_set>

#include "compare/structure/CompareAllReport.h"
#include "compare/structure/TableNamesakes.h"

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

class CompareAllSection {
 public:
  CompareAllSection(CompareAllRun& run, long lngType) : run_(run), program_(run.program), type_(lngType) {}

  // False: the run is over, without a report.
  bool compare();

 private:
  struct Item {
    std::string strPrinted;  // as listed
    std::string strName;     // without its owner
    long lngId = 0;
    int side = 0;
  };
  // The two texts of an object on their way through the tests.
  struct Pair {
    std::array<std::string, 2> arrTexts;
    std::array<long, 2> arrIds{};
    std::string strSuffix;    // printed behind the name
    bool blnTooLong = false;  // without comments the texts are longer than memory is
  };

  // False: stopped. blnRead: both lists are whole.
  bool loadLists(bool& blnRead);
  Item itemAt(int side, std::size_t row) const;
  bool proceed(const std::string& strListed) const;
  // Whether the name by which the item would be looked up is another than its own; told then.
  bool nameIsCut(const Item& item);
  void notCompared(const Item& item, const std::string& strWhy = {});
  bool isNotCompared(const Item& item) const { return notCompared_.contains(item.strPrinted); }
  // "table Orders"
  std::string wordsFor(const std::string& strName) const;
  // Whether the item has a namesake on the other side to be compared with. False: the run is over.
  bool findNamesake(int side, const std::string& strName, long lngId, long& lngOtherId, bool& blnProceed);

  bool sourcePass();
  bool compareItem(const Item& item);
  void decide(const Item& item, Pair& pair, const ReadWatch& reads);
  void fetchTexts(const Item& item, Pair& pair);
  std::string fetchText(int side, const Item& item, long lngId, long& lngIgnored);
  void noteIfUnreadable(int side, const Item& item, const Pair& pair);
  bool targetHas(const std::string& strName);
  bool identical(const Item& item, Pair& pair);
  bool sameWithoutComments(Pair& pair);
  bool sameButForOrder(const Item& item, const Pair& pair);

  bool targetPass();
  // Empty when the list can't be read.
  std::optional<NamesInRecordset> namesInSource();
  bool lookForItem(const Item& item, const NamesInRecordset& names);
  bool existsInSource(const std::string& strName, long lngOtherId, const NamesInRecordset& namesInSource);

  void countTotals();
  void countUnlisted();

  CompareAllRun& run_;
  Program& program_;
  long type_;
  std::optional<TableNamesakes> namesakes_;                     // of a comparison of tables
  std::unordered_set<std::string> notCompared_;                 // as listed
  std::optional<std::unordered_set<std::string>> targetNames_;  // bare, lower case; made when first asked for
};

}  // namespace qrel
