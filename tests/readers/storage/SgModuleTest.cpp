#include "readers/storage/SgModule.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kLoad = "/sbin/modprobe --first-time sg 2>/tmp/modprobe.error";
constexpr const char* kShow = "cat /tmp/modprobe.error 2>/dev/null";
constexpr const char* kRemove = "rm -f /tmp/modprobe.error 2>/dev/null";

class SgModuleTest : public ::testing::Test {
 protected:
  SgModuleTest() {
    machine.directories["/tmp"];
    machine.permissions["/tmp"] = 01777;
    machine.commands[kLoad] = {};
    machine.commands[kShow] = {};
  }

  FakeHost machine;
};

TEST_F(SgModuleTest, silentModprobeHasLoadedTheModule) {
  EXPECT_EQ(loadSG(), 1);
  EXPECT_THAT(machine.started, ElementsAre(kLoad, kShow, kRemove));
  EXPECT_EQ(machine.openCommands(), 0);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(SgModuleTest, complainingModprobeMeansThatTheModuleWasThere) {
  machine.commands[kShow] = {"modprobe: FATAL: Module sg already in kernel.\n"};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_THAT(machine.started, ElementsAre(kLoad, kShow, kRemove));
}

TEST_F(SgModuleTest, errorFileIsOursBeforeModprobeWritesToIt) {
  machine.files["/tmp/modprobe.error"] = "planted";
  bool secured = false;
  machine.onCommand = [&](const std::string& command) {
    if (command == kLoad) {
      secured = machine.files["/tmp/modprobe.error"].empty() &&
                machine.permissions["/tmp/modprobe.error"] == 0600;
    }
  };
  loadSG();
  EXPECT_TRUE(secured);
}

TEST_F(SgModuleTest, errorFileThatCannotBeSecuredCountsAsAModprobeThatDidNotRun) {
  machine.permissions["/tmp"] = 0777;
  EXPECT_EQ(loadSG(), 0);
  EXPECT_THAT(machine.started, IsEmpty());
}

TEST_F(SgModuleTest, modprobeThatCannotBeStartedLeavesNothingBehind) {
  machine.unstartableCommands = {kLoad};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_THAT(machine.started, ElementsAre(kLoad));
  EXPECT_EQ(machine.files.count("/tmp/modprobe.error"), 0U);
}

TEST_F(SgModuleTest, unreadableErrorFileNeverMeansThatWeLoadedTheModule) {
  machine.unstartableCommands = {kShow};
  EXPECT_EQ(loadSG(), 0);
  machine.unstartableCommands = {};
  machine.commands[kShow] = {"", 1 << 8};  // cat itself failed, and said so where nobody listens
  EXPECT_EQ(loadSG(), 0);
  EXPECT_EQ(machine.openCommands(), 0);
}

// A full /tmp or a limit on file sizes keeps the complaint out of the file.
TEST_F(SgModuleTest, silentModprobeThatFailedHasNotLoadedTheModule) {
  machine.commands[kLoad] = {"", 1 << 8};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_THAT(machine.started, ElementsAre(kLoad, kShow, kRemove));
}

TEST_F(SgModuleTest, modprobeThatWasKilledHasNotLoadedTheModule) {
  for (const int signal : {SIGKILL, SIGXFSZ}) {
    machine.commands[kLoad] = {"", signal};
    EXPECT_EQ(loadSG(), 0) << signal;
    machine.commands[kLoad] = {"", (128 + signal) << 8};  // as the shell reports it
    EXPECT_EQ(loadSG(), 0) << signal;
  }
}

TEST_F(SgModuleTest, modprobeThatCannotBeReapedHasNotLoadedTheModule) {
  machine.commands[kLoad] = {"", -1};
  EXPECT_EQ(loadSG(), 0);
}

TEST_F(SgModuleTest, errorFileIsRemovedAlsoWhereNoFurtherCommandCanBeStarted) {
  machine.unstartableCommands = {kShow, kRemove};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_EQ(machine.files.count("/tmp/modprobe.error"), 0U);
}

TEST_F(SgModuleTest, errorFileIsRemovedAlsoWhereRmFails) {
  machine.commands[kRemove] = {"", 1 << 8};
  loadSG();
  EXPECT_EQ(machine.files.count("/tmp/modprobe.error"), 0U);
}

TEST_F(SgModuleTest, waitEndsAtOnceWhenTheDriverIsThere) {
  machine.directories["/proc/scsi"];
  machine.directories["/proc/scsi/sg"];
  waitForSG();
  EXPECT_EQ(machine.sleptMicroseconds, 0U);
}

TEST_F(SgModuleTest, waitIsGivenUpAfter51Checks) {
  machine.directories["/proc/scsi"];
  waitForSG();
  EXPECT_EQ(machine.sleptMicroseconds, 51U * 100000U);
}

TEST_F(SgModuleTest, kernelWithoutTheDirectoryIsNotWaitedFor) {
  waitForSG();
  EXPECT_EQ(machine.sleptMicroseconds, 0U);
}

TEST_F(SgModuleTest, unloadRunsModprobe) {
  unloadSG();
  EXPECT_THAT(machine.started, ElementsAre("/sbin/modprobe --first-time -r sg 2>/dev/null"));
  EXPECT_EQ(machine.openCommands(), 0);
}

}  // namespace
}  // namespace quenlor
