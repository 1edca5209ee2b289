// The structure of one type's objects in a whole-database run.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <unordered_set>

#include "compare/all/CompareAllObjects.h"

namespace qrel {

class CompareAllSection : public CompareAllObjects {
 public:
  CompareAllSection(CompareAllRun& run, long lngType) : CompareAllObjects(run, lngType) {}

 private:
  // The two texts of an object on their way through the tests.
  struct Pair {
    std::array<std::string, 2> arrTexts;
    std::array<long, 2> arrIds{};
    std::string strSuffix;    // printed behind the name
    bool blnTooLong = false;  // without comments the texts are longer than memory is
  };

  void beginReport() override { run_.report.beginType(type_, run_.input); }

  void readAhead(const Item& item, std::size_t steps) override;
  bool compareItem(const Item& item) override;
  void decide(const Item& item, Pair& pair, const ReadWatch& reads);
  void fetchTexts(const Item& item, Pair& pair);
  std::string fetchText(int side, const Item& item, long lngId, long& lngIgnored);
  void noteIfUnreadable(int side, const Item& item, const Pair& pair);
  bool targetHas(const std::string& strName);
  bool identical(const Item& item, Pair& pair);
  bool sameWithoutComments(Pair& pair);
  bool sameButForOrder(const Item& item, const Pair& pair);

  bool targetPass() override;
  // Empty when the list can't be read.
  std::optional<NamesInRecordset> namesInSource();
  bool lookForItem(const Item& item, const NamesInRecordset& names);
  bool existsInSource(const std::string& strName, long lngOtherId, const NamesInRecordset& namesInSource);

  std::optional<std::unordered_set<std::string>> targetNames_;  // bare, lower case; made when first asked for
};

}  // namespace qrel
