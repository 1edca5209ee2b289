// The pages of the options: their tree and the texts beside the settings.
#pragma once

#include <array>
#include <cstddef>

namespace qrel {

struct OptionsPage {
  const char* strGroup;  // the node above it
  const char* strTitle;
  const char* strHelp;  // paragraphs with a blank line between; empty: none
};

// Where each page stands in the list below, and its frame among fraPage.
enum OptionsPageIndex : std::size_t {
  pageFilterOfflineDbs,
  pageTimeout,
  pageColumnsOrder,
  pageAnalyzeConstraints,
  pageAutoSave,
  pageIgnoreSysObjects,
  pageIgnoreIndexes,
  pageIgnoreComments,
  pageWhitespace,
  pageCaseSensitivity,
  pageComparisonOptions,
  pageRowsToDisplay,
  pageCacheSize,
  pageCursorLocation,
  pageDataCaseSensitivity,
  optionsPageCount
};

// In the order of the tree; pages of one group follow each other.
const std::array<OptionsPage, optionsPageCount>& OptionsPages();

}  // namespace qrel
