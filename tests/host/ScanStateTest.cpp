#include "host/ScanState.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <thread>

#include "host/CommandRunner.h"
#include "host/Handles.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;

class ScanStateTest : public ::testing::Test {
 protected:
  ScanStateTest() { useScanState(&state); }
  ~ScanStateTest() override { useScanState(nullptr); }

  long commandsKnown() const {
    return std::count_if(state.commands.begin(), state.commands.end(),
                         [](const std::atomic<pid_t>& place) { return place != 0; });
  }

  ScanState state;
};

TEST_F(ScanStateTest, groupIsNamedWhileItIsCollected) {
  {
    const GroupInProgress inProgress(5);
    EXPECT_EQ(state.group, 5U);
    EXPECT_EQ(state.progress, 0U);
  }
  EXPECT_EQ(state.group, 0U);
  EXPECT_EQ(state.progress, 1U);
}

TEST_F(ScanStateTest, withoutOneInstalledAnotherIsWrittenTo) {
  useScanState(nullptr);
  countProgress();
  const GroupInProgress inProgress(5);
  EXPECT_EQ(state.progress, 0U);
  EXPECT_EQ(state.group, 0U);
}

TEST_F(ScanStateTest, filesDevicesAndCommandsCountAsProgress) {
  test::FakeHost machine;
  machine.files["/proc/one"] = "1";
  { const FileStream file = openFile("/proc/one"); }
  EXPECT_EQ(state.progress, 1U);
  { const Descriptor device(host().open("/proc/one", 0, 0)); }
  EXPECT_EQ(state.progress, 2U);
  { const FileStream none = openFile("/proc/none"); }
  EXPECT_EQ(state.progress, 2U) << "nothing was done";
  CommandRunner runner;
  runner.finish(runner.start("true"));
  EXPECT_EQ(state.progress, 3U);
}

TEST_F(ScanStateTest, runningCommandIsKnownByItsProcessGroup) {
  CommandRunner runner;
  FILE* const stream = runner.start("echo $$");
  ASSERT_NE(stream, nullptr);
  char text[32] = "";
  ASSERT_NE(std::fgets(text, sizeof text, stream), nullptr);
  EXPECT_EQ(state.commands[0], std::stoi(text));
  EXPECT_EQ(runner.finish(stream), 0);
  EXPECT_EQ(commandsKnown(), 0);
  EXPECT_EQ(state.commandsStarting, 0U);
}

TEST_F(ScanStateTest, commandsBeyondTheSixteenthRunUnknown) {
  for (pid_t group = 101; group <= 117; ++group) state.addCommand(group);
  EXPECT_EQ(commandsKnown(), 16);
  state.removeCommand(117);
  EXPECT_EQ(commandsKnown(), 16);
  state.removeCommand(103);
  EXPECT_EQ(commandsKnown(), 15);
  state.addCommand(118);
  EXPECT_EQ(state.commands[2], 118);
}

TEST(SharedName, isEmptyUntilItIsSet_andOnceItIsCleared) {
  SharedName shared;
  EXPECT_EQ(shared.name(), "");
  shared.set("/var/lib/out.xml.abc");
  EXPECT_EQ(shared.name(), "/var/lib/out.xml.abc");
  shared.set("b");
  EXPECT_EQ(shared.name(), "b") << "nothing of the longer one before is left";
  shared.clear();
  EXPECT_EQ(shared.name(), "");
}

TEST(SharedName, nameThatIsTooLongIsNotRemembered_norTheOneBefore) {
  SharedName shared;
  const std::string longest(511, 'x');
  shared.set(longest);
  EXPECT_EQ(shared.name(), longest);
  shared.set(longest + "x");
  EXPECT_EQ(shared.name(), "") << "half a name would be another file's";
}

TEST_F(ScanStateTest, commandOfScanThatIsToDieIsNotStarted) {
  const pid_t child = ::fork();
  if (child == 0) {
    state.isToDie = 1;
    const CommandStart start;
    ::_exit(0);
  }
  std::this_thread::sleep_for(100ms);
  EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), 0);
  ::kill(child, SIGKILL);
  ::waitpid(child, nullptr, 0);
}

}  // namespace
}  // namespace quenlor
