// Every window's form and model name the same controls.
#include <QDir>

#include "desktop/formWindow.h"
#include "desktop/text.h"
#include "tests/desktop/allForms.h"
#include "tests/desktop/boundForm.h"

namespace qrel {
namespace {

TEST(FormsTest, EveryFormFitsItsModel) {
  TestProgram test;
  AllForms forms(test);
  std::set<QString> known;
  for (Form* form : forms.all) {
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
