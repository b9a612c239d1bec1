#include "supervise/ParentEvents.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <thread>

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

class ParentEventsTest : public ::testing::Test {
 protected:
  ParentEventsTest() {
    if (::pipe2(pipe, O_CLOEXEC | O_NONBLOCK) != 0) ADD_FAILURE();
    events.emplace(signals, pipe[0]);
  }
  ~ParentEventsTest() override {
    closeWritingEnd();
    ::close(pipe[0]);
    signals.stop();
  }

  void say(const std::string& bytes) const {
    EXPECT_EQ(::write(pipe[1], bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
  }
  void closeWritingEnd() {
    if (pipe[1] >= 0) ::close(pipe[1]);
    pipe[1] = -1;
  }
  static pid_t childThatExits(int status) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(status);
    return child;
  }

  SignalWatch signals;
  int pipe[2] = {-1, -1};
  std::optional<ParentEvents> events;
};

TEST_F(ParentEventsTest, wordIsStatusAndThenTheEndOfAllElse) {
  say("\x05");
  events->look(60s);
  EXPECT_EQ(events->saidStatus(), 5);
  EXPECT_FALSE(events->hasSaidAll());
  say("\x05");
  events->look(60s);
  EXPECT_TRUE(events->hasSaidAll());
  EXPECT_EQ(events->saidStatus(), 5);
}

TEST_F(ParentEventsTest, statusAboveOneHundredTwentySevenIsNoNegativeNumber) {
  say("\xFF");
  events->look(60s);
  EXPECT_EQ(events->saidStatus(), 255);
}

TEST_F(ParentEventsTest, endOfTheWordAloneSaysNothing_andIsSeenOnce) {
  closeWritingEnd();
  events->look(60s);
  EXPECT_EQ(events->saidStatus(), std::nullopt);
  const auto before = Clock::now();
  events->look(30ms);
  EXPECT_GE(Clock::now() - before, 29ms) << "a closed pipe must not turn waiting into a busy loop";
}

TEST_F(ParentEventsTest, childThatIsExpectedHasItsStatusKept) {
  const pid_t child = childThatExits(7);
  events->expect(child);
  EXPECT_TRUE(events->lookUntil([&] { return events->statusOf(child).has_value(); }, 60s));
  EXPECT_EQ(WEXITSTATUS(*events->statusOf(child)), 7);
}

TEST_F(ParentEventsTest, otherChildrenAreReapedToo) {
  const pid_t stranger = childThatExits(1);
  EXPECT_TRUE(events->lookUntil(
      [&] { return ::waitpid(stranger, nullptr, WNOHANG) < 0 && errno == ECHILD; }, 60s, 1ms));
  EXPECT_EQ(events->statusOf(stranger), std::nullopt);
}

TEST_F(ParentEventsTest, firstSignalIsTold_secondOneEndsTheProcess) {
  const pid_t child = ::fork();
  if (child == 0) {
    ::raise(SIGHUP);
    events->look(60s);
    if (events->told() != SIGHUP) ::_exit(1);
    ::raise(SIGTERM);
    events->look(60s);
    ::_exit(2);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
}

TEST_F(ParentEventsTest, signalThatComesTwiceAtOnceIsOne_asTimeoutSendsItToProgramAndGroup) {
  const auto before = Clock::now();
  const pid_t child = ::fork();
  if (child == 0) {
    for (const auto pause : {0ms, 0ms, 300ms}) {
      std::this_thread::sleep_for(pause);
      ::raise(SIGTERM);
      events->look(60s);
    }
    ::_exit(1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ASSERT_TRUE(WIFSIGNALED(status)) << status;
  EXPECT_EQ(WTERMSIG(status), SIGTERM);
  EXPECT_GE(Clock::now() - before, 300ms) << "only the third one is a second order";
}

TEST_F(ParentEventsTest, waitForWhatDoesNotHappenHasItsLimit) {
  const auto before = Clock::now();
  EXPECT_FALSE(events->lookUntil([] { return false; }, 30ms));
  EXPECT_GE(Clock::now() - before, 30ms);
  EXPECT_LT(Clock::now() - before, 10s);
}

TEST_F(ParentEventsTest, conditionWithoutEventIsTestedAfterEachStep) {
  int tests = 0;
  EXPECT_TRUE(events->lookUntil([&] { return ++tests == 4; }, 60s, 1ms));
}

}  // namespace
}  // namespace quenlor
