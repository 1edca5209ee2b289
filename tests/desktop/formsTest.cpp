// Every window's form and model name the same controls.
#include <QDir>

#include "app/frmErrorReport.h"
#include "compare/all/frmCompareAll.h"
#include "compare/all/frmCompareAllTables.h"
#include "compare/all/frmListObjects.h"
#include "compare/data/frmCompareData.h"
#include "compare/data/frmCompareDataOptions.h"
#include "compare/data/frmCompareDataValidation.h"
#include "compare/data/frmCompareStatus.h"
#include "compare/data/frmDataAnalyze.h"
#include "compare/data/frmDataView.h"
#include "compare/structure/frmColorSchema.h"
#include "compare/structure/frmIgnoreColumnsAdd.h"
#include "compare/structure/frmIgnoreColumnsView.h"
#include "db/frmAddServer.h"
#include "db/frmDeleteServer.h"
#include "db/frmFilterBySchema.h"
#include "desktop/formWindow.h"
#include "desktop/text.h"
#include "process/frmSaveCompRun.h"
#include "process/frmSaveComparison.h"
#include "report/frmExport.h"
#include "report/frmReport.h"
#include "tests/desktop/boundForm.h"
#include "tests/support.h"
#include "ui/frmCompareAndPrint.h"
#include "ui/frmMain.h"
#include "ui/tools/frmAbout.h"
#include "ui/tools/frmAttachDb.h"
#include "ui/tools/frmGetDbInfo.h"
#include "ui/tools/frmOptions.h"
#include "ui/tools/frmSearchForObject_Gen.h"
#include "ui/tools/frmTip.h"

namespace qrel {
namespace {

TEST(FormsTest, EveryFormFitsItsModel) {
  TestProgram test;
  Program& program = test.program;
  frmMain main(program);
  MainCompare steps(program, main);
  std::vector<std::unique_ptr<Form>> others;
  others.push_back(std::make_unique<frmReport>(program));
  others.push_back(std::make_unique<frmExport>(program));
  others.push_back(std::make_unique<frmCompareAll>(program));
  others.push_back(std::make_unique<frmCompareAllTables>(program));
  others.push_back(std::make_unique<frmListObjects>(program));
  others.push_back(std::make_unique<frmAddServer>(program));
  others.push_back(std::make_unique<frmDeleteServer>(program));
  others.push_back(std::make_unique<frmErrorReport>(test.host, tErrorReport{}));
  others.push_back(std::make_unique<frmFilterBySchema>(program));
  others.push_back(std::make_unique<frmColorSchema>());
  others.push_back(std::make_unique<frmCompareAndPrint>(program, main.workspace, steps));
  others.push_back(std::make_unique<frmIgnoreColumnsAdd>(program));
  others.push_back(std::make_unique<frmIgnoreColumnsView>(program));
  others.push_back(std::make_unique<frmCompareDataOptions>(program));
  others.push_back(std::make_unique<frmCompareStatus>(program));
  others.push_back(std::make_unique<frmCompareDataValidation>(program));
  others.push_back(std::make_unique<frmCompareData>(program));
  others.push_back(std::make_unique<frmSaveComparison>(program));
  others.push_back(std::make_unique<frmSaveCompRun>(program));
  others.push_back(std::make_unique<frmDataAnalyze>(program));
  others.push_back(std::make_unique<frmDataView>(program));
  others.push_back(std::make_unique<frmAbout>(program));
  others.push_back(std::make_unique<frmAttachDb>(program));
  others.push_back(std::make_unique<frmGetDbInfo>(program));
  others.push_back(std::make_unique<frmOptions>(program));
  others.push_back(std::make_unique<frmSearchForObject_Gen>(program));
  others.push_back(std::make_unique<frmTip>(program));

  std::vector<Form*> forms{&main};
  for (const auto& each : others) forms.push_back(each.get());
  std::set<QString> known;
  for (Form* form : forms) {
    known.insert(toQt(form->name) + ".ui");
    const QByteArray text = formText(form->name);
    ASSERT_FALSE(text.isEmpty()) << form->name;
    const BoundForm bound(*form, text);
    for (const std::string& mismatch : bound.binder.mismatches()) ADD_FAILURE() << mismatch;
    EXPECT_EQ(fromQt(bound.binder.window()->objectName()), form->name);
  }
  for (const QString& file : QDir(":/forms").entryList())
    EXPECT_TRUE(known.count(file)) << fromQt(file) << " belongs to no window above";
}

// A window of one label, and a form for it with the widgets given.
class Sample : public Form {
 public:
  Sample() : Form("frmSample") {
    add(lblText);
    add(cmdGo);
    add(tmrTick);
    add(lblHidden);
    lblHidden.shown = false;
  }
  Label lblText{"lblText(0)"};
  Button cmdGo{"cmdGo"};
  Timer tmrTick{"tmrTick", 100};
  Label lblHidden{"lblHidden"};
};

std::vector<std::string> mismatchesWith(const char* widgets) {
  Sample form;
  const BoundForm bound(form, QByteArray("<ui version=\"4.0\"><class>frmSample</class>"
                                         "<widget class=\"QDialog\" name=\"frmSample\">") +
                                  widgets + "</widget></ui>");
  return bound.binder.mismatches();
}

TEST(FormsTest, WhatDoesntFitIsTold) {
  const std::string label = R"(<widget class="QLabel" name="lblText_0"/>)";
  const std::string button = R"(<widget class="QToolButton" name="cmdGo"/>)";
  // Timers and controls that aren't shown want no widget, what only arranges no control.
  EXPECT_TRUE(mismatchesWith((label + button + R"(<widget class="QFrame" name="uiBox"/>)").c_str()).empty());

  const auto one = [](const std::string& widgets, const char* word) {
    const std::vector<std::string> found = mismatchesWith(widgets.c_str());
    ASSERT_EQ(found.size(), 1U) << word;
    EXPECT_NE(found[0].find(word), std::string::npos) << found[0];
  };
  one(label, "cmdGo");
  one(label + button + R"(<widget class="QLabel" name="lblMore"/>)", "lblMore");
  one(label + button + R"(<widget class="QLabel" name="lblHidden"/>)", "lblHidden");
  one(label + button + label, "lblText_0");
  one(label + R"(<widget class="QLineEdit" name="cmdGo"/>)", "QLineEdit");
}

}  // namespace
}  // namespace qrel
