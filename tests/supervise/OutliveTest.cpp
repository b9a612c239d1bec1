#include "supervise/outlive.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <thread>

#include "base/ExitStatus.h"
#include "catalogue/Catalogue.h"
#include "host/Handles.h"
#include "host/ScanState.h"
#include "limits/GetTableThread.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

// How the process ended that a caller of the scan waits for.
struct End {
  int exitStatus = -1;  // -1: not by exiting
  int signal = 0;
  std::string complaints;
  Clock::duration took{};
};

// Runs the scan as main() does, in a process of its own.
class OutliveTest : public ::testing::Test {
 protected:
  pid_t start(const std::function<int()>& scan) {
    m_start = Clock::now();
    const pid_t process = ::fork();
    if (process == 0) {
      const int errors = ::open(errorFile().c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
      ::dup2(errors, STDERR_FILENO);
      const struct rlimit noCore {};
      ::setrlimit(RLIMIT_CORE, &noCore);
      ::_exit(outlive(scan));
    }
    return process;
  }

  End finish(pid_t process) {
    int status = 0;
    ::waitpid(process, &status, 0);
    End end;
    if (WIFEXITED(status)) end.exitStatus = WEXITSTATUS(status);
    if (WIFSIGNALED(status)) end.signal = WTERMSIG(status);
    end.complaints = directory.read("errors");
    end.took = Clock::now() - m_start;
    return end;
  }

  End run(const std::function<int()>& scan) { return finish(start(scan)); }

  std::string errorFile() const { return directory.path("errors"); }

  test::TemporaryDirectory directory;

 private:
  Clock::time_point m_start;
};

[[noreturn]] void hang() {
  for (;;) ::pause();
}

TEST_F(OutliveTest, statusOfTheScanIsPassedOn) {
  for (const int status : {0, 4, 21, 255}) {
    const End end = run([status] { return status; });
    EXPECT_EQ(end.exitStatus, status);
    EXPECT_EQ(end.complaints, "");
  }
}

TEST_F(OutliveTest, scanHasTheCallersSignalsAndDescriptors) {
  EXPECT_EQ(run([] {
              sigset_t blocked;
              ::pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
              const bool isBlocked =
                  sigismember(&blocked, SIGTERM) == 1 || sigismember(&blocked, SIGPIPE) == 1;
              return isBlocked || ::fcntl(STDOUT_FILENO, F_GETFD) < 0 ? 1 : 0;
            }).exitStatus,
            0);
}

TEST_F(OutliveTest, scanThatAbortsInCollectorIsSaidToHaveCrashedThere) {
  const End end = run([]() -> int {
    const GroupInProgress inProgress(group::kStorage);
    std::abort();
  });
  EXPECT_EQ(end.exitStatus, kExitCrashed);
  EXPECT_EQ(end.complaints, "quenlor: the scan crashed in Storage (signal 6)\n");
}

TEST_F(OutliveTest, scanThatCrashesBetweenGroupsNamesNone) {
  const End end = run([] { return ::raise(SIGKILL); });
  EXPECT_EQ(end.exitStatus, kExitCrashed);
  EXPECT_EQ(end.complaints, "quenlor: the scan crashed (signal 9)\n");
}

TEST_F(OutliveTest, signalThatEndsTheScanForOrdinaryReasonsEndsTheCallersChild) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT, SIGPIPE, SIGXFSZ}) {
    const End end = run([signal] { return ::raise(signal); });
    EXPECT_EQ(end.signal, signal);
    EXPECT_EQ(end.complaints, "");
  }
}

TEST_F(OutliveTest, scanWithWorkerGivenUpEndsAtOnceWithItsStatus) {
  const End end = run([] {
    std::thread(hang).detach();
    reportAbandonedWorker();
    return 4;
  });
  EXPECT_EQ(end.exitStatus, 4);
  EXPECT_EQ(end.complaints, "");
  EXPECT_LT(end.took, 10s);
}

TEST_F(OutliveTest, readerOfThePipeHasItsEndOfFileThoughTheScanHangsBeforeItsLastWord) {
  int output[2];
  ASSERT_EQ(::pipe2(output, O_CLOEXEC), 0);
  const pid_t process = start([&output] {
    ::dup2(output[1], STDOUT_FILENO);
    ::close(output[1]);
    std::thread(hang).detach();
    reportAbandonedWorker();
    return 0;
  });
  ::close(output[1]);
  char byte = 0;
  EXPECT_EQ(::read(output[0], &byte, 1), 0);
  ::close(output[0]);
  EXPECT_EQ(finish(process).exitStatus, 0);
}

TEST_F(OutliveTest, scanWithoutProgressIsGivenUpInItsGroup) {
  const End end = run([]() -> int {
    scanState().idleLimit = 200;
    const GroupInProgress inProgress(group::kPartition);
    hang();
  });
  EXPECT_EQ(end.exitStatus, kExitGivenUp);
  EXPECT_EQ(end.complaints, "quenlor: Partition does not end; the scan is given up\n");
}

TEST_F(OutliveTest, scanThatHangsBetweenGroupsIsGivenUpToo) {
  const End end = run([]() -> int {
    scanState().idleLimit = 200;
    hang();
  });
  EXPECT_EQ(end.exitStatus, kExitGivenUp);
  EXPECT_EQ(end.complaints, "quenlor: the scan does not end and is given up\n");
}

TEST_F(OutliveTest, progressKeepsScanGoing_butNotBeyondItsOwnLimit) {
  const auto work = [](int64_t scanLimit, int steps) {
    scanState().scanLimit = scanLimit;
    scanState().idleLimit = 1000;
    for (int step = 0; step < steps; ++step) {
      std::this_thread::sleep_for(50ms);
      countProgress();
    }
    return 0;
  };
  EXPECT_EQ(run([&] { return work(0, 40); }).exitStatus, 0);
  EXPECT_EQ(run([&] { return work(1000, 2000); }).exitStatus, kExitGivenUp);
}

TEST_F(OutliveTest, commandsOfScanThatCrashesAreKilled) {
  const std::string numberFile = directory.path("number");
  const End end = run([&numberFile]() -> int {
    const CommandStream command(("echo $$ > " + numberFile + "; exec sleep 600").c_str());
    while (!std::filesystem::exists(numberFile) || std::filesystem::file_size(numberFile) == 0) {
      std::this_thread::sleep_for(1ms);
    }
    std::abort();
  });
  EXPECT_EQ(end.exitStatus, kExitCrashed);
  EXPECT_EQ(::kill(std::stoi(directory.read("number")), 0), -1);
  EXPECT_EQ(errno, ESRCH);
}

TEST_F(OutliveTest, signalToTheParentEndsBoth) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT}) {
    int alive[2];
    ASSERT_EQ(::pipe2(alive, O_CLOEXEC), 0);
    const pid_t process = start([&alive]() -> int {
      static_cast<void>(!::write(alive[1], "!", 1));
      hang();
    });
    ::close(alive[1]);
    char byte = 0;
    EXPECT_EQ(::read(alive[0], &byte, 1), 1);
    ::kill(process, signal);
    EXPECT_EQ(finish(process).signal, signal);
    EXPECT_EQ(::read(alive[0], &byte, 1), 0) << "the scan is gone";
    ::close(alive[0]);
  }
}

TEST_F(OutliveTest, withoutDescriptorsTheScanRunsInTheCallersProcess) {
  const End end = run([] { return 3; });
  EXPECT_EQ(end.exitStatus, 3);
  const pid_t process = ::fork();
  if (process == 0) {
    while (::dup(STDERR_FILENO) >= 0) continue;
    const pid_t caller = ::getpid();
    ::_exit(outlive([caller] { return ::getpid() == caller ? 3 : 1; }));
  }
  EXPECT_EQ(finish(process).exitStatus, 3);
}

}  // namespace
}  // namespace quenlor
