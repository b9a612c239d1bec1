#include "supervise/SignalWatch.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace quenlor {
namespace {

// What becomes of a process that does this: its wait status.
int waitStatusOf(const std::function<void()>& body) {
  const pid_t child = ::fork();
  if (child == 0) {
    body();
    ::_exit(0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return status;
}

bool isBlocked(int signal) {
  sigset_t blocked;
  ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
  return sigismember(&blocked, signal) == 1;
}

void block(int how, int signal) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, signal);
  ::pthread_sigmask(how, &signals, nullptr);
}

TEST(SignalWatch, signalsThatEndProgramsAreTakenOneByOne) {
  SignalWatch watch;
  ASSERT_TRUE(watch.isWatching());
  EXPECT_EQ(watch.take(), std::nullopt);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGCHLD}) {
    ::raise(signal);
    EXPECT_EQ(watch.take(), signal);
  }
  EXPECT_EQ(watch.take(), std::nullopt);
  watch.stop();
}

TEST(SignalWatch, stoppingPutsTheMaskBack) {
  SignalWatch watch;
  EXPECT_TRUE(isBlocked(SIGTERM));
  EXPECT_TRUE(isBlocked(SIGPIPE));
  watch.stop();
  EXPECT_FALSE(watch.isWatching());
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGCHLD, SIGPIPE, SIGXFSZ}) {
    EXPECT_FALSE(isBlocked(signal)) << signal;
  }
}

TEST(SignalWatch, whatTheCallerIgnoresStaysIgnored) {
  struct sigaction before {};
  struct sigaction ignored {};
  ignored.sa_handler = SIG_IGN;
  ::sigaction(SIGHUP, &ignored, &before);
  SignalWatch watch;
  EXPECT_FALSE(isBlocked(SIGHUP));
  ::raise(SIGHUP);
  EXPECT_EQ(watch.take(), std::nullopt);
  watch.stop();
  ::sigaction(SIGHUP, &before, nullptr);
}

TEST(SignalWatch, whatTheCallerHasBlockedIsNotTaken_andStaysBlocked) {
  EXPECT_EQ(waitStatusOf([] {
              block(SIG_BLOCK, SIGTERM);
              SignalWatch watch;
              ::raise(SIGTERM);
              const bool isTaken = watch.take().has_value();
              watch.stop();
              ::_exit(isTaken || !isBlocked(SIGTERM) ? 1 : 0);
            }),
            0);
}

TEST(SignalWatch, withoutDescriptorTheMaskIsAsBefore) {
  EXPECT_EQ(waitStatusOf([] {
              while (::dup(STDERR_FILENO) >= 0) continue;
              const SignalWatch watch;
              ::_exit(watch.isWatching() || isBlocked(SIGTERM) ? 1 : 0);
            }),
            0);
}

TEST(DieBy, processDiesByTheSignal_whateverItHadDoneWithIt) {
  for (const int signal : {SIGTERM, SIGINT, SIGPIPE}) {
    const int status = waitStatusOf([signal] {
      std::signal(signal, SIG_IGN);
      block(SIG_BLOCK, signal);
      dieBy(signal);
    });
    ASSERT_TRUE(WIFSIGNALED(status));
    EXPECT_EQ(WTERMSIG(status), signal);
  }
}

TEST(DieBy, leavesNoSecondCore) {
  const int status = waitStatusOf([] { dieBy(SIGQUIT); });
  EXPECT_EQ(WTERMSIG(status), SIGQUIT);
  EXPECT_FALSE(WCOREDUMP(status));
}

}  // namespace
}  // namespace quenlor
