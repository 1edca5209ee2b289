#include "console/verdict.h"

#include <ostream>

#include "compare/all/modCompareAll.h"
#include "db/mdlObjects.h"
#include "platform/text.h"
#include "platform/visibleText.h"

namespace qrel {

namespace {

std::string words(long lngType, const std::string& strName) {
  return lowerCase(GetObjectTypeName(lngType, true)) + ' ' + visibleText(strName);
}

}  // namespace

bool tellIncomplete(Console& console) {
  const modCompareAllState& state = console.program.state<modCompareAllState>();
  for (const UnreadableObject& object : state.arrUnreadable)
    console.err << "qrel: the text of " << words(object.lngType, object.strName) << " in "
                << (object.side == 0 ? "Source" : "Target") << " can't be had: it is encrypted or unreadable.\n";
  for (const NotComparedObject& object : state.arrNotCompared)
    console.err << "qrel: not compared: " << words(object.lngType, object.strName)
                << (object.strWhy.empty() ? "" : ": " + visibleText(object.strWhy)) << ".\n";
  for (const NotComparedObject& object : state.arrWithoutDetails)
    console.err << "qrel: the lines that differ are not listed: " << words(object.lngType, object.strName) << ": "
                << object.strWhy << ".\n";
  return state.arrUnreadable.empty() && state.arrNotCompared.empty() && state.arrWithoutDetails.empty();
}

}  // namespace qrel
