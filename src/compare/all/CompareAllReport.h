// The report of a whole-database run: its wording, and what decides it.
#pragma once

#include <array>
#include <string>
#include <utility>

#include "compare/all/modCompareAll.h"

namespace qrel {

// One pass over a run: begin, for each type beginType, the objects and an end..., then finish. Names come as printed.
class CompareAllReport {
 public:
  // arrNames: server and database of each side. strFiltering may be empty.
  // `input` must outlive the report.
  void begin(const CompareAllInput& input, const std::array<std::string, 2>& arrNames, const std::string& strFiltering);

  void beginType(long lngType, const CompareAllInput& input);
  // The same for the data of tables.
  void beginData(const CompareAllInput& input);
  void addCounts(std::size_t sourceCount, std::size_t targetCount);

  void addIdentical(const std::string& strName);
  void addDifferent(const std::string& strName);
  void addSourceOnly(const std::string& strName);
  // The lines that differ of the object added as different last; strName is its bare name.
  void addDetails(const Program& program, const std::string& strName, const std::string& strSource,
                  const std::string& strTarget);
  // Behind the last Source object: what was found so far goes to the report.
  void endSourcePass();
  void addTargetOnly(const std::string& strName);
  // Without a verdict: in none of the other lists, and the type can't end as if all were the same.
  void addNotCompared(const std::string& strName);
  // The names of the Source that the Target's were to be held against couldn't be read.
  void addUnreadList();
  void endTargetPass();

  // The rest of a compared type: the sentence about identical objects and the details.
  void endType(bool blnSomeColumnsIgnored);
  // The rest of a type of which a list couldn't be read: nothing is said about its objects.
  void endUnreadType();
  // The rest of a type without objects on both sides. One with objects on one side needs none.
  void endEmptyType();

  // The report as it stands, and with the line about the time behind it.
  std::string finish() { return std::move(strReport); }
  std::string finish(const std::string& strElapsed);

  long differentCount() const { return lngDifferentCount; }
  long sourceOnlyCount() const { return lngSourceOnlyCount; }
  long targetOnlyCount() const { return lngTargetOnlyCount; }

 private:
  std::string singular() const { return type.substr(0, type.size() - 1); }
  std::string unreadLine() const { return "Couldn't retrieve list of all " + type + "."; }
  std::string countLine(std::size_t count, const std::string& strSide) const;
  void reset(long lngType, const CompareAllInput& input);
  void appendSelected(const CompareAllInput& input);
  void appendFound(long lngCount);
  void appendNameLine(std::string& text, const std::string& strName) const;
  void appendIdenticalSummary();
  void appendCleanSentence(bool blnSomeColumnsIgnored);

  const CompareAllInput* input_ = nullptr;
  std::string strReport;

  // Of the type at work.
  bool blnTables = false;
  bool blnData = false;  // the data of tables, not their structure
  bool blnSelective = false;
  std::string type;  // plural
  std::string strSourceOnly, strTargetOnly, strNotCompared, strIdentical, strDetails;
  long lngIdenticalCount = 0, lngDifferentCount = 0, lngSourceOnlyCount = 0, lngTargetOnlyCount = 0;
  long lngNotComparedCount = 0;
  bool blnFindings = false;  // an object that differs, is in Target only or has no verdict; one in Source only is none
};

}  // namespace qrel
