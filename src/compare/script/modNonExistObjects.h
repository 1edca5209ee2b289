// Words of an object's text that name nothing in its database: a coarse search over a stream of words, which also
// reports columns, built-in functions, aliases and temporary tables.
#pragma once

#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "app/Program.h"
#include "app/modArrays.h"

namespace qrel {

// The first lngCount names of a list, which must outlive this: IsItDbObject's answers without a walk through the list.
class ObjectNames {
 public:
  ObjectNames(const std::vector<TwoStr>& arrObjects, long lngCount);
  bool has(std::string_view strToken) const;

 private:
  std::unordered_set<std::string_view> names_;
};

// The words behind the text's first AS that pass every filter below, in their order, each as often as it stands there.
// Comments are left out whatever IgnoreComments says. arrObjects: from GetListOfAllObjects. True when there is one. An
// error is reported and gives False: ErrorReportsState tells it from a text without any.
bool FindRefToNonExistentObjects(Program& program, long enmObjectType, std::string strText,
                                 const std::vector<TwoStr>& arrObjects, long lngObjectCount, long& lngRefCount,
                                 std::vector<std::string>& arrRefs);
// The same for many texts and one list.
bool FindRefToNonExistentObjects(Program& program, long enmObjectType, std::string strText, const ObjectNames& names,
                                 long& lngRefCount, std::vector<std::string>& arrRefs);

// All tokens, from index 0, empty ones too; lower case but for what stands in double quotes. False for an empty text.
bool GetTokens(Program& program, const std::string& strText, std::vector<std::string>& arrTokens, long& lngCount);

// The words with @ before the first AS: the parameters. Procedures and functions have them, other types none.
void GetVariables(Program& program, const std::string& strText, const std::vector<std::string>& arrTokens,
                  long lngTokenCount, long enmObjectType, std::vector<std::string>& arrVariables,
                  long& lngVariableCount);

// With an empty list nothing is a variable; with any entry every word that begins with @ is.
bool IsItVariable(std::string_view strToken, const std::vector<std::string>& arrVariables, long lngVariableCount);
bool IsItMathOperand(std::string_view strToken);
bool IsItSqlKeyword(std::string_view strToken);
bool IsItSpecialWord(std::string_view strToken);
bool IsItSqlDataType(std::string_view strToken);
// An optional sign, digits with at most one point, an optional exponent.
bool IsItNumber(std::string_view strToken);

}  // namespace qrel
