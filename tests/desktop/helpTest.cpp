// The help window: topics by number, links between them, and what isn't there.
#include "desktop/help.h"

#include <QAction>
#include <QTextBrowser>

#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

class HelpTest : public DesktopTest {
 protected:
  HelpTest() {
    std::filesystem::create_directory(folder.path() / "help");
    folder.write("help/010-index.md", "# Contents\n\n[Support](230-support.md) [Nowhere](40-none.md)\n");
    folder.write("help/230-support.md", "# Support\n\nWrite to us.\n");
    folder.write("help/23-other.md", "# Other\n");
    host.helpFolder = (folder.path() / "help").string();
  }
  static QWidget& window() {
    for (QWidget* each : QApplication::topLevelWidgets())
      if (each->objectName() == "uiHelp") return *each;
    throw std::runtime_error("no help window");
  }
  static QTextBrowser& page() { return *window().findChild<QTextBrowser*>(); }
  static std::string text() { return fromQt(page().toPlainText()); }
  static void act(const char* caption) {
    for (QAction* action : window().findChildren<QAction*>())
      if (action->text() == caption) action->trigger();
  }
  static void follow(const char* link) { page().setSource(page().source().resolved(QUrl(link))); }
};

TEST_F(HelpTest, TopicsAreFoundByTheirNumberAndLinkedToEachOther) {
  load("One", "Shop", "CREATE TABLE a (b int)");
  start({"One"});
  press(main(), Qt::Key_F1);
  EXPECT_NE(text().find("Contents"), std::string::npos) << text();
  QPointer<QWidget> opened(&window());
  follow("230-support.md");
  EXPECT_NE(text().find("Write to us."), std::string::npos);
  act("Back");
  EXPECT_NE(text().find("Contents"), std::string::npos);
  act("Forward");
  EXPECT_NE(text().find("Write to us."), std::string::npos);
  follow("40-none.md");
  EXPECT_NE(text().find("There is no help topic \"40-none.md\"."), std::string::npos) << text();
  chooseInMenu(main(), "&Help", "Technical &Support");
  EXPECT_NE(text().find("Write to us."), std::string::npos);
  EXPECT_EQ(&window(), opened) << "one window for all topics";

  host.showHelp(7);
  EXPECT_NE(text().find("There is no help topic \"7.md\"."), std::string::npos) << text();
  EXPECT_NE(text().find(host.helpFolder), std::string::npos);
  host.closeOtherWindows();
  EXPECT_FALSE(opened);
  EXPECT_TRUE(main().isVisible());
}

TEST_F(HelpTest, HelpThatIsNotInstalledIsTold) {
  host.helpFolder.clear();
  host.showHelp(10);
  EXPECT_NE(text().find("The help isn't installed"), std::string::npos) << text();
  host.closeOtherWindows();
}

}  // namespace
}  // namespace qrel
