#include "readers/storage/SgUse.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "host/ScanState.h"
#include "readers/storage/SgModule.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using test::FakeHost;

// Its list of modules is a directory of the real machine, for only that can be locked.
class LockableHost : public FakeHost {
 public:
  LockableHost() { directories["/sys/module"]; }

  int open(const char* path, int flags, mode_t mode) override {
    if (std::string(path) != "/sys/module") return FakeHost::open(path, flags, mode);
    return systemHost().open(modules.path().c_str(), flags, mode);
  }
  int close(int fd) override { return fd < 1000 ? systemHost().close(fd) : FakeHost::close(fd); }

  test::TemporaryDirectory modules;
};

TEST(SgUse, onlyScanIsTheLast) {
  const LockableHost machine;
  SgUse use;
  EXPECT_TRUE(use.isLast({}));
}

TEST(SgUse, scanThatLoadedTheModuleIsNotTheLastWhileAnotherNeedsIt) {
  const LockableHost machine;
  SgUse loader;
  {
    const SgUse other;
    EXPECT_FALSE(loader.isLast(20ms));
  }
  EXPECT_TRUE(loader.isLast({}));
}

TEST(SgUse, machineWithoutListOfModulesKnowsOfNoOtherScan_norOpensAnything) {
  const FakeHost machine;
  const SgUse other;
  SgUse use;
  EXPECT_TRUE(use.isLast({}));
  EXPECT_TRUE(machine.opened.empty());
}

TEST(SgUse, listThatCannotBeLockedKnowsOfNoOtherScan) {
  FakeHost machine;
  machine.directories["/sys/module"];  // its descriptors are none
  const SgUse other;
  SgUse use;
  EXPECT_TRUE(use.isLast({}));
}

constexpr const char* kLoad = "/sbin/modprobe --first-time sg 2>/tmp/modprobe.error";
constexpr const char* kShow = "cat /tmp/modprobe.error 2>/dev/null";
constexpr const char* kRemove = "rm -f /tmp/modprobe.error 2>/dev/null";
constexpr const char* kUnload = "/sbin/modprobe --first-time -r sg 2>/dev/null";

// What the process that outlives the scan has to know if the scan dies now.
class SgStateTest : public ::testing::Test {
 protected:
  SgStateTest() {
    useScanState(&state);
    machine.directories["/tmp"];
    machine.permissions["/tmp"] = 01777;
    machine.commands = {{kLoad, {}}, {kShow, {}}, {kRemove, {}}, {kUnload, {}}};
    machine.onCommand = [this](const std::string& command) {
      if (command == kLoad || command == kUnload) duringModprobe = state.sgLoaded;
      if (command == kLoad) fileDuringModprobe = state.temporaryMade;
    };
  }
  ~SgStateTest() override { useScanState(nullptr); }

  FakeHost machine;
  ScanState state;
  Certainty duringModprobe = Certainty::kNo;
  bool fileDuringModprobe = false;
};

TEST_F(SgStateTest, moduleIsPerhapsLoadedWhileModprobeRuns) {
  EXPECT_EQ(loadSG(), 1);
  EXPECT_EQ(duringModprobe, Certainty::kPerhaps);
  EXPECT_TRUE(fileDuringModprobe);
  EXPECT_EQ(state.sgLoaded, Certainty::kYes);
  EXPECT_FALSE(state.temporaryMade);
}

TEST_F(SgStateTest, moduleThatWasThereBeforeIsNeverOurs) {
  machine.commands[kShow] = {"modprobe: FATAL: Module sg already in kernel.\n"};
  for (const char* sign : {"/sys/module/sg", "/proc/scsi/sg"}) {
    machine.directories = {{"/tmp", {}}, {sign, {}}};
    duringModprobe = Certainty::kYes;
    EXPECT_EQ(loadSG(), 0);
    EXPECT_EQ(duringModprobe, Certainty::kNo);
    EXPECT_EQ(state.sgLoaded, Certainty::kNo);
  }
}

TEST_F(SgStateTest, modprobeThatComplainsHasLoadedNothing) {
  machine.commands[kShow] = {"modprobe: FATAL: Module sg not found.\n"};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_EQ(state.sgLoaded, Certainty::kNo);
}

TEST_F(SgStateTest, modprobeThatIsNotStartedLeavesNothingToCleanUp) {
  machine.unstartableCommands = {kLoad};
  EXPECT_EQ(loadSG(), 0);
  EXPECT_EQ(state.sgLoaded, Certainty::kNo);
  EXPECT_FALSE(state.temporaryMade);
  machine.permissions["/tmp"] = 0777;
  EXPECT_EQ(loadSG(), 0);
  EXPECT_FALSE(state.temporaryMade);
}

TEST_F(SgStateTest, moduleIsOursUntilItIsUnloadedForSure) {
  loadSG();
  machine.commands[kUnload] = {"", 1 << 8};  // in use
  unloadSG();
  EXPECT_EQ(duringModprobe, Certainty::kPerhaps);
  EXPECT_EQ(state.sgLoaded, Certainty::kYes);
  machine.commands[kUnload] = {};
  unloadSG();
  EXPECT_EQ(state.sgLoaded, Certainty::kNo);
}

}  // namespace
}  // namespace quenlor
