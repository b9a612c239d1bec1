#include "host/FileLock.h"

#include <gtest/gtest.h>

#include <optional>
#include <thread>

#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class FileLockTest : public ::testing::Test {
 protected:
  test::TemporaryDirectory directory;
  const std::string path = directory.write("file", "");
};

TEST_F(FileLockTest, manyShareIt) {
  FileLock one(path.c_str());
  FileLock other(path.c_str());
  EXPECT_TRUE(one.share());
  EXPECT_TRUE(other.share());
}

TEST_F(FileLockTest, whoHasItAloneSharesItWithNobody) {
  FileLock one(path.c_str());
  FileLock other(path.c_str());
  EXPECT_TRUE(one.takeAlone());
  EXPECT_FALSE(other.share());
  EXPECT_FALSE(other.takeAlone());
}

TEST_F(FileLockTest, sharedOneIsTakenAloneOnceTheOthersHaveGone) {
  FileLock one(path.c_str());
  EXPECT_TRUE(one.share());
  std::optional<FileLock> other(path.c_str());
  EXPECT_TRUE(other->share());
  EXPECT_FALSE(one.takeAlone());
  other.reset();
  EXPECT_TRUE(one.takeAlone());
}

TEST_F(FileLockTest, waitEndsWithItsLimit) {
  FileLock one(path.c_str());
  EXPECT_TRUE(one.takeAlone());
  const auto before = Clock::now();
  EXPECT_FALSE(FileLock(path.c_str()).share(30ms));
  EXPECT_GE(Clock::now() - before, 29ms);
  EXPECT_LT(Clock::now() - before, 5s);
}

TEST_F(FileLockTest, waitEndsWithTheOthersLock) {
  std::optional<FileLock> one(path.c_str());
  EXPECT_TRUE(one->takeAlone());
  std::thread holder([&one] {
    std::this_thread::sleep_for(30ms);
    one.reset();
  });
  EXPECT_TRUE(FileLock(path.c_str()).share(60s));
  holder.join();
}

TEST_F(FileLockTest, directoryCanBeLocked) {
  FileLock one(directory.path().c_str());
  EXPECT_TRUE(one.share());
  EXPECT_FALSE(FileLock(directory.path().c_str()).takeAlone());
}

TEST_F(FileLockTest, whereThereIsNoFileNobodyIsKnownOf) {
  FileLock none(directory.path("none").c_str());
  EXPECT_FALSE(static_cast<bool>(none));
  EXPECT_TRUE(none.share());
  EXPECT_TRUE(none.takeAlone());
}

}  // namespace
}  // namespace quenlor
