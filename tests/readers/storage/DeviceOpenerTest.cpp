#include "readers/storage/DeviceOpener.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>

#include "limits/GetTableThread.h"
#include "tests/readers/storage/HeldNodeHost.h"
#include "tests/support/NoThreads.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using test::HeldNodeHost;
using ::testing::ElementsAre;

constexpr auto kShort = 50ms;
constexpr auto kAmple = 60s;

class DeviceOpenerTest : public ::testing::Test {
 protected:
  DeviceOpenerTest() {
    machine.devices["/dev/sg0"];
    machine.devices["/dev/sg1"];
  }

  HeldNodeHost machine;
};

TEST_F(DeviceOpenerTest, nodesAreOpenedWithTheWantedAccessAndNeverWaitedFor) {
  DeviceOpener opener(kAmple);
  EXPECT_TRUE(opener.open("/dev/sg0", O_RDWR));
  EXPECT_TRUE(opener.open("/dev/sg0", O_RDONLY));
  EXPECT_THAT(machine.usedFlags, ElementsAre(O_RDWR | O_NONBLOCK, O_RDONLY | O_NONBLOCK));
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(DeviceOpenerTest, errorOfTheDriverIsPassedOn) {
  DeviceOpener opener(kAmple);
  machine.openErrors["/dev/sg0"] = EBUSY;
  EXPECT_FALSE(opener.open("/dev/sg0", O_RDWR));
  EXPECT_EQ(errno, EBUSY);
  machine.openErrors.clear();
  EXPECT_TRUE(opener.open("/dev/sg0", O_RDWR));  // an error is no hang: it may be tried again
}

TEST_F(DeviceOpenerTest, nodeThatDoesNotOpenInTimeIsLeftOutAloneAndOnce) {
  DeviceOpener opener(kShort);
  machine.hold("/dev/sg0");
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(opener.open("/dev/sg0", O_RDWR));
  EXPECT_EQ(errno, ETIMEDOUT);
  EXPECT_FALSE(opener.open("/dev/sg0", O_RDONLY));
  EXPECT_EQ(errno, ETIMEDOUT);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dev/sg0 did not open within 50 ms and is left out\n");
  EXPECT_EQ(machine.waiting(), 1);
  EXPECT_TRUE(hasAbandonedWorkers());
  machine.release();
}

TEST_F(DeviceOpenerTest, nodeThatOpensTooLateIsClosedAgain) {
  DeviceOpener opener(kShort);
  machine.hold("/dev/sg0");
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(opener.open("/dev/sg0", O_RDWR));
  ::testing::internal::GetCapturedStderr();
  machine.release();
  machine.waitUntilAllIsClosed();
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(DeviceOpenerTest, nextCollectionTriesTheNodeAgain) {
  machine.hold("/dev/sg0");
  ::testing::internal::CaptureStderr();
  EXPECT_FALSE(DeviceOpener(kShort).open("/dev/sg0", O_RDWR));
  ::testing::internal::GetCapturedStderr();
  machine.release();
  EXPECT_TRUE(DeviceOpener(kAmple).open("/dev/sg0", O_RDWR));
}

TEST_F(DeviceOpenerTest, withoutThreadsTheNodeIsOpenedAllTheSame) {
  const test::NoThreads refused;
  DeviceOpener opener(kShort);
  EXPECT_TRUE(opener.open("/dev/sg0", O_RDWR));
  EXPECT_FALSE(opener.open("/dev/sg9", O_RDWR));
  EXPECT_EQ(errno, ENOENT);
}

}  // namespace
}  // namespace quenlor
