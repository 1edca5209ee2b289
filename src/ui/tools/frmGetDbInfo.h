// Database information: what a database holds, listed into the report window.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "app/Program.h"
#include "compare/all/CompareAllControls.h"
#include "platform/controls/form.h"
#include "platform/controls/textPane.h"

namespace qrel {

class frmGetDbInfo : public Form {
 public:
  explicit frmGetDbInfo(Program& program);

  Label lblComparing{"lblComparing"};  // the type, and below it the object, at work
  Label lblObject{"lblObject"};
  Label lblTime{"lblTime"};                                          // elapsed, hh:mm:ss
  std::array<Label, 6> lblInfo = controlArray<Label, 6>("lblInfo");  // how many there are of each type
  TextPane txtTXProc{"txtTXProc"};                                   // the text that the report window shows, too
  Timer tmrStatus{"tmrStatus", 200};                                 // enabled: the run is on
  Button cmdCancel{"cmdCancel"};

  // Modal. strDb is a database of side Index (0 Source, 1 Target). The run begins with the first activation; stopped,
  // it shows nothing.
  void ShowUp(int Index, const std::string& strDb);

  void activate() override;
  // A run that is on is stopped first.
  bool closeRequested() override;

 private:
  void GetDbInfo();
  std::string head() const;
  // What the text says about one type; its label gets the number.
  std::string listOf(std::size_t typeIndex);
  bool cancelled() const { return mblnCancel; }

  Program& program_;
  int mlngIndex = 0;
  std::string mstrDb;
  bool mblnActivated = false;
  bool mblnCancel = false;
  std::int64_t startTicks_ = 0;
};

}  // namespace qrel
