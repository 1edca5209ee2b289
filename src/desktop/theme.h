// The look of the program: one style and a light or a dark palette.
#pragma once

#include <string>

namespace qrel {

// `theme` is "light", "dark" or empty for the desktop's own choice. The application is there first.
void applyTheme(const std::string& theme);

}  // namespace qrel
