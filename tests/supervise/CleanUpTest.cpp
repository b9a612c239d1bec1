#include "supervise/CleanUp.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <utility>
#include <vector>

#include "host/Handles.h"
#include "tests/support/FakeHost.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// Its list of modules is a directory of the real machine, for only that can be locked.
class ModulesHost : public test::FakeHost {
 public:
  explicit ModulesHost(std::string path) : m_path(std::move(path)) { directories["/sys/module"]; }

  int open(const char* path, int flags, mode_t mode) override {
    if (std::string(path) != "/sys/module") return FakeHost::open(path, flags, mode);
    return systemHost().open(m_path.c_str(), flags, mode);
  }

 private:
  const std::string m_path;
};

class CleanUpTest : public ::testing::Test {
 protected:
  ~CleanUpTest() override {
    for (const pid_t child : children) {
      ::kill(child, SIGKILL);
      ::waitpid(child, nullptr, 0);
    }
    signals.stop();
  }

  // A process that waits for ever in a process group, or a session, of its own.
  pid_t sleeper(int (*leave)()) {
    int ready[2];
    EXPECT_EQ(::pipe2(ready, O_CLOEXEC), 0);
    const pid_t child = ::fork();
    if (child == 0) {
      leave();
      static_cast<void>(!::write(ready[1], "", 1));
      for (;;) ::pause();
    }
    char byte = 0;
    EXPECT_EQ(::read(ready[0], &byte, 1), 1);
    ::close(ready[0]);
    ::close(ready[1]);
    children.push_back(child);
    return child;
  }
  pid_t command() {
    return sleeper([] { return ::setpgid(0, 0); });
  }
  static bool isAlive(pid_t child) { return ::waitpid(child, nullptr, WNOHANG) == 0; }

  ScanState state;
  SignalWatch signals;
  ParentEvents events{signals, -1};
  CleanUp cleanUp{state, events};
  std::vector<pid_t> children;
};

TEST_F(CleanUpTest, commandsThatStillRunAreKilledAndReaped) {
  const pid_t one = command();
  const pid_t other = command();
  state.addCommand(one);
  state.addCommand(other);
  cleanUp.run();
  for (const pid_t child : {one, other}) {
    EXPECT_EQ(::waitpid(child, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
  }
  children.clear();
}

TEST_F(CleanUpTest, whatIsNoCommandOfOursIsLeftAlone_whateverTheStateSays) {
  const pid_t daemon = sleeper([] { return static_cast<int>(::setsid()); });
  const pid_t member = sleeper([] { return 0; });  // of our own group
  state.addCommand(daemon);
  state.addCommand(member);
  state.addCommand(::getpgrp());
  state.addCommand(-5);
  cleanUp.run();
  EXPECT_TRUE(isAlive(daemon));
  EXPECT_TRUE(isAlive(member));
}

TEST_F(CleanUpTest, commandThatWasBeingStartedIsWaitedForASecond) {
  const pid_t unknown = command();
  state.commandsStarting = 1;
  const auto before = Clock::now();
  cleanUp.run();
  EXPECT_GE(Clock::now() - before, 1s);
  EXPECT_TRUE(isAlive(unknown));
}

TEST_F(CleanUpTest, documentThatHasNotTakenItsPlaceIsRemoved) {
  const test::TemporaryDirectory directory;
  const std::string document = directory.write("out.xml.a1b2c3", "<?xml");
  const std::string old = directory.write("out.xml", "<?xml/>");
  state.incompleteDocument.set(document);
  cleanUp.run();
  EXPECT_FALSE(std::filesystem::exists(document));
  EXPECT_TRUE(std::filesystem::exists(old));
}

TEST_F(CleanUpTest, documentThatIsGoneAlreadyIsNoComplaint) {
  const test::TemporaryDirectory directory;
  state.incompleteDocument.set(directory.path("out.xml.a1b2c3"));
  ::testing::internal::CaptureStderr();
  cleanUp.run();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(CleanUpTest, documentThatCannotBeRemovedIsSaid) {
  const test::TemporaryDirectory directory;
  directory.write("file", "");
  state.incompleteDocument.set(directory.path("file/out.xml.a1b2c3"));
  ::testing::internal::CaptureStderr();
  cleanUp.run();
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: " + directory.path("file/out.xml.a1b2c3") + " could not be removed\n");
}

TEST_F(CleanUpTest, commandThatDoesNotEndIsSaid) {
  state.addCommand(command());
  signals.stop();  // nobody is told of its end: it stays, as one that is stuck in the kernel does
  ::testing::internal::CaptureStderr();
  const auto before = Clock::now();
  cleanUp.run();
  EXPECT_GE(Clock::now() - before, 1s);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: a command of the scan was killed and does not end\n");
}

TEST_F(CleanUpTest, signalEndsTheWaitForWhoeverHasTheModuleToHimself) {
  const test::TemporaryDirectory modules;
  const Descriptor holder(::open(modules.path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  ASSERT_EQ(::flock(holder.get(), LOCK_EX), 0);
  const auto before = Clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    const ModulesHost machine(modules.path());
    state.sgLoaded = Certainty::kYes;
    ::raise(SIGTERM);
    events.look(60s);
    ::raise(SIGINT);
    cleanUp.run();
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGINT);
  EXPECT_LT(Clock::now() - before, 5s);
}

TEST_F(CleanUpTest, nothingToDoTakesNoTime) {
  command();
  const auto before = Clock::now();
  cleanUp.run();
  EXPECT_LT(Clock::now() - before, 500ms);
}

TEST(Complain, isOneLineWithTheProgramsName) {
  ::testing::internal::CaptureStderr();
  complain("something is wrong");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "quenlor: something is wrong\n");
}

TEST(Complain, readerThatTakesNothingIsNotWaitedForLonger) {
  const pid_t child = ::fork();
  if (child == 0) {
    int full[2];
    if (::pipe2(full, O_NONBLOCK) != 0) ::_exit(1);
    while (::write(full[1], "0123456789", 10) > 0) continue;
    while (::write(full[1], "x", 1) > 0) continue;
    ::fcntl(full[1], F_SETFL, 0);
    ::dup2(full[1], STDERR_FILENO);
    complain("nobody reads this");
    ::_exit(0);
  }
  const auto before = Clock::now();
  int status = -1;
  while (::waitpid(child, &status, WNOHANG) == 0 && Clock::now() - before < 20s) ::usleep(10000);
  EXPECT_EQ(status, 0);
  ::kill(child, SIGKILL);
}

}  // namespace
}  // namespace quenlor
