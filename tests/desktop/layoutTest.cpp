// The main window in little room: nothing lies over anything else, and what a person has moved stays.
#include "desktop/layout.h"

#include <QSplitter>
#include <QToolButton>

#include "tests/desktop/desktopFixture.h"

namespace qrel {
namespace {

class LayoutTest : public DesktopTest {
 protected:
  void startWithServer() {
    load("One", "Shop", "CREATE TABLE Orders (id int)");
    start({"One"});
  }
  // The widgets that lie over another one or stand out of the window, by name.
  std::string overlaps() {
    std::string found;
    std::vector<QWidget*> leaves;
    for (QWidget* each : main().findChildren<QWidget*>()) {
      const bool control = each->objectName().contains(QRegularExpression("^(cmd|cmb|chk|lbl|pvl|txt|srt)[A-Z]"));
      if (control && each->isVisible()) leaves.push_back(each);
    }
    const auto place = [&](QWidget* each) { return QRect(each->mapTo(&main(), QPoint()), each->size()); };
    for (std::size_t i = 0; i < leaves.size(); ++i) {
      if (!main().rect().contains(place(leaves[i]))) found += fromQt(leaves[i]->objectName()) + " stands out ";
      for (std::size_t j = i + 1; j < leaves.size(); ++j)
        if (place(leaves[i]).intersects(place(leaves[j])))
          found += fromQt(leaves[i]->objectName() + "/" + leaves[j]->objectName()) + " ";
    }
    return found;
  }
};

TEST_F(LayoutTest, NothingOverlapsHoweverNarrowTheWindowIs) {
  folder.write("debug.txt", "");  // with the button that only developers see
  startWithServer();
  press(main(), Qt::Key_F5);
  auto& compare = find<QToolButton>(main(), "cmdCompare");
  for (const int width : {1300, 800, 760, 640, 300, 1300}) {
    main().resize(width, 500);
    QTest::qWait(20);
    EXPECT_EQ(overlaps(), "") << width << " became " << main().width();
    EXPECT_EQ(compare.toolButtonStyle(), width < 900 ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon) << width;
    EXPECT_EQ(main().width(), std::max(width, main().minimumWidth()));
    EXPECT_LE(main().minimumWidth(), 640);
  }
  applySmallScreenLayout(main());
  EXPECT_TRUE(main().isMaximized());
  EXPECT_EQ(overlaps(), "");
}

TEST_F(LayoutTest, TheBordersBetweenListsAndTextsStandAtTheirUsualHeightUntilTheyAreMoved) {
  startWithServer();
  auto& source = find<QSplitter>(main(), "uiSourceSplit");
  auto& target = find<QSplitter>(main(), "uiTargetSplit");
  target.setProperty(keptProperty, true);
  source.setSizes({300, 100});
  target.setSizes({300, 100});
  const QList<int> moved = target.sizes();
  setSplitterHeight(main());
  EXPECT_NEAR(source.sizes()[0] * 3, source.sizes()[1] * 2, 6);
  EXPECT_EQ(target.sizes(), moved);
}

}  // namespace
}  // namespace qrel
