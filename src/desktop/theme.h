// The look of the program: one style and a light or a dark palette.
#pragma once

#include <string>

class QApplication;

namespace qrel {

// `theme` is "light", "dark" or empty for the desktop's own choice.
void applyTheme(QApplication& application, const std::string& theme);

}  // namespace qrel
