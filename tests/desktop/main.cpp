// The tests' own main: a QApplication on a screen that nobody sees, and a limit for each test.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>

namespace {

// A window that never closes ends the test program instead of holding it up.
class TimeLimit : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(const testing::TestInfo&) override { alarm(seconds); }
  void OnTestEnd(const testing::TestInfo&) override { alarm(0); }

 private:
  static constexpr unsigned seconds = 120;
};

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  testing::UnitTest::GetInstance()->listeners().Append(new TimeLimit);
  return RUN_ALL_TESTS();
}
