// The legend of the colours that mark differences.
#pragma once

#include <array>

#include "platform/controls/form.h"

namespace qrel {

class Program;

class frmColorSchema : public Form {
 public:
  frmColorSchema();

  Label lblIntro{"lblIntro"};
  // Patches of colour, and the words beside them.
  std::array<Label, 5> lblCol{Label{"lblCol(0)"}, Label{"lblCol(1)"}, Label{"lblCol(2)"}, Label{"lblCol(3)"},
                              Label{"lblCol(4)"}};
  std::array<Label, 5> lblText{Label{"lblText(0)"}, Label{"lblText(1)"}, Label{"lblText(2)"}, Label{"lblText(3)"},
                               Label{"lblText(4)"}};
  Button cmdCancel{"cmdCancel"};
};

// Opens the legend and waits until it is closed.
void ShowColorSchema(Program& program);

}  // namespace qrel
