// Scripts by menu, context menu and button.
#include <QPlainTextEdit>

#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

TEST_F(DesktopTest, ScriptsComeUpInTheReportWindow) {
  load("One", "Shop", "CREATE TABLE Orders (id int NOT NULL, placed date)");
  load("Two", "Shop", "CREATE TABLE Orders (id int NOT NULL, placed datetime)");
  folder.write("debug.txt", "");
  start({"One", "Two"});
  press(main(), Qt::Key_F5);
  choose(main(), "pvlDb_0", "Shop");
  chooseInCombo(main(), "cmbServer_1", "Two");
  choose(main(), "pvlDb_1", "Shop");
  std::string title, text;
  const auto read = [&](QWidget& window) {
    title = fromQt(window.windowTitle());
    text = fromQt(find<QPlainTextEdit>(window, "txtReport").toPlainText());
    EXPECT_FALSE(find<QWidget>(window, "cmdSave").isVisible());
    press(window, Qt::Key_Escape);
  };
  when("frmReport", read);
  chooseInMenu(main(), "S&QL", "Build SQL CREATE Statement - &Target");
  EXPECT_EQ(title, "SQL CREATE Statement");
  EXPECT_NE(text.find("CREATE TABLE [dbo].[Orders] (\n[id] [int] NOT NULL,\n[placed] [datetime] NULL"),
            std::string::npos)
      << text;
  when("frmReport", read);
  click(main(), "cmdDebugScript");
  EXPECT_EQ(title, "Generate Update Script");
  EXPECT_EQ(text, "ALTER TABLE Orders ALTER COLUMN [placed] [date] NULL\n");
}

}  // namespace
}  // namespace qrel
