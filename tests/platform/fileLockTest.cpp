#include "platform/fileLock.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <thread>
#include <vector>

#include "platform/error.h"
#include "tests/platform/temporaryFolder.h"

namespace qrel {
namespace {

using namespace std::chrono_literals;

class FileLockTest : public testing::Test {
 protected:
  std::filesystem::path file() const { return folder_.path() / "lock"; }
  const TemporaryFolder folder_;
};

TEST_F(FileLockTest, OneHolderAtATimeAndNothingLeft) {
  FileLock first(file());
  FileLock second(file());
  ASSERT_TRUE(first.tryLock());
  EXPECT_FALSE(second.tryLock());
  EXPECT_EQ(second.lock(30ms), FileLock::Outcome::TimedOut);
  EXPECT_EQ(second.lock(1min, [] { return true; }), FileLock::Outcome::Stopped);
  first.unlock();
  EXPECT_TRUE(second.tryLock());
  second.unlock();
  EXPECT_FALSE(std::filesystem::exists(file()));
}

// Taking, releasing and removing the file at once from many sides must never let two in.
TEST_F(FileLockTest, ManyThreadsNeverTwoInside) {
  std::atomic<int> inside = 0;
  std::atomic<bool> twice = false;
  int counted = 0;
  std::vector<std::thread> threads;
  for (int i = 0; i < 8; ++i)
    threads.emplace_back([&] {
      for (int turn = 0; turn < 50;) {
        FileLock lock(file());
        if (!lock.tryLock()) continue;
        if (++inside != 1) twice = true;
        ++counted;
        --inside;
        ++turn;
      }
    });
  for (std::thread& thread : threads) thread.join();
  EXPECT_FALSE(twice);
  EXPECT_EQ(counted, 400);
}

TEST_F(FileLockTest, AKilledHolderLeavesNoLock) {
  int ready[2];
  ASSERT_EQ(::pipe(ready), 0);
  const pid_t child = ::fork();
  if (child == 0) {
    FileLock lock(file());
    const char done = lock.tryLock() ? 'y' : 'n';
    (void)!::write(ready[1], &done, 1);
    ::pause();
    ::_exit(0);
  }
  char done = 0;
  ASSERT_EQ(::read(ready[0], &done, 1), 1);
  EXPECT_EQ(done, 'y');
  FileLock lock(file());
  EXPECT_FALSE(lock.tryLock());
  ::kill(child, SIGKILL);
  EXPECT_EQ(::waitpid(child, nullptr, 0), child);
  EXPECT_TRUE(std::filesystem::exists(file()));
  EXPECT_TRUE(lock.tryLock());
  ::close(ready[0]);
  ::close(ready[1]);
}

TEST_F(FileLockTest, AFolderThatIsNotThereIsAnErrorWithThePath) {
  FileLock lock(folder_.path() / "none" / "lock");
  try {
    lock.tryLock();
    FAIL() << "taken";
  } catch (const RuntimeError& error) {
    EXPECT_NE(error.description.find("/none'"), std::string::npos) << error.description;
  }
}

}  // namespace
}  // namespace qrel
