#include "host/CommandRunner.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "host/Handles.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr auto kShortCeiling = 200ms;
constexpr auto kSoon = 5s;  // far below the sleeps that the commands ask for

std::string readAll(FILE* stream) {
  std::string text;
  char buffer[4096];
  while (const size_t count = std::fread(buffer, 1, sizeof buffer, stream)) {
    text.append(buffer, count);
  }
  return text;
}

struct Result {
  std::string output;
  int status;
};

Result run(CommandRunner& runner, const char* commandLine) {
  FILE* stream = runner.start(commandLine);
  if (stream == nullptr) return {"not started", -1};
  std::string output = readAll(stream);
  return {output, runner.finish(stream)};
}

bool isKilled(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL; }

bool isRunning(const std::string& pid) {
  std::ifstream stat("/proc/" + pid + "/stat");
  std::string text;
  std::getline(stat, text);
  const size_t name = text.rfind(')');
  return name != std::string::npos && text.at(name + 2) != 'Z';
}

bool endsSoon(const std::string& pid) {
  for (const auto start = Clock::now(); Clock::now() - start < kSoon;) {
    if (!isRunning(pid)) return true;
    std::this_thread::sleep_for(5ms);
  }
  return false;
}

size_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return static_cast<size_t>(std::distance(begin(all), end(all)));
}

// Every test leaves neither child nor descriptor behind.
class CommandRunnerTest : public ::testing::Test {
 protected:
  void TearDown() override {
    EXPECT_EQ(::waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD);
    EXPECT_EQ(openDescriptors(), m_descriptors);
  }

  CommandRunner runner;
  CommandRunner shortRunner{kShortCeiling};
  const Clock::time_point started = Clock::now();

 private:
  const size_t m_descriptors = openDescriptors();
};

TEST_F(CommandRunnerTest, outputIsRead_resultIsTheWaitStatus) {
  const Result result = run(runner, "echo one; echo two; exit 3");
  EXPECT_EQ(result.output, "one\ntwo\n");
  EXPECT_EQ(result.status, 3 << 8);
}

TEST_F(CommandRunnerTest, missingCommandIsStreamThatEndsAtOnceWithStatus127) {
  const Result result = run(runner, "/no/such/command 2>/dev/null");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 127 << 8);
}

TEST_F(CommandRunnerTest, programIsStartedWithItsArgumentsAsTheyAre) {
  FILE* stream = runner.startProgram("/bin/echo", {"echo", "$HOME  'x'", ";", ""});
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream), "$HOME  'x' ; \n");
  EXPECT_EQ(runner.finish(stream), 0);
}

TEST_F(CommandRunnerTest, whatIsNoProgramIsNotStarted) {
  EXPECT_EQ(runner.startProgram("/no/such/program", {"program"}), nullptr);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(runner.startProgram("/", {"directory"}), nullptr);
  EXPECT_EQ(errno, EACCES);
}

TEST_F(CommandRunnerTest, hungProgramIsKilled) {
  FILE* stream = shortRunner.startProgram("/bin/sleep", {"sleep", "100"});
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream), "");
  EXPECT_TRUE(isKilled(shortRunner.finish(stream)));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, emptyCommandSucceeds) {
  const Result result = run(runner, "");
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.status, 0);
}

TEST_F(CommandRunnerTest, outputOfTenMegabytesArrivesWhole) {
  const Result result = run(runner, "head -c 10485760 /dev/zero");
  EXPECT_EQ(result.output.size(), 10485760u);
  EXPECT_EQ(result.status, 0);
}

TEST_F(CommandRunnerTest, nulBytesArrive) {
  EXPECT_EQ(run(runner, "printf 'a\\000b'").output, std::string("a\0b", 3));
}

TEST_F(CommandRunnerTest, hungCommandIsKilledWithItsGrandchildren) {
  FILE* stream = shortRunner.start("sleep 100 & echo $!; sleep 100");
  ASSERT_NE(stream, nullptr);
  std::string grandchild = readAll(stream);
  grandchild.pop_back();
  EXPECT_TRUE(isKilled(shortRunner.finish(stream)));
  EXPECT_TRUE(endsSoon(grandchild)) << grandchild;
  EXPECT_GE(Clock::now() - started, kShortCeiling);
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, backgroundProcessThatKeepsTheOutputOpenIsKilledToo) {
  FILE* stream = shortRunner.start("sleep 100 & echo $!; exit 4");
  ASSERT_NE(stream, nullptr);
  std::string grandchild = readAll(stream);
  grandchild.pop_back();
  EXPECT_EQ(shortRunner.finish(stream), 4 << 8);  // the shell itself had ended before
  EXPECT_TRUE(endsSoon(grandchild)) << grandchild;
  EXPECT_LT(Clock::now() - started, kSoon);
}

// What has left the process group cannot be killed with it, and may hold the output open or go on
// writing to it.
TEST_F(CommandRunnerTest, processThatLeftTheGroupDoesNotKeepTheOutputFromEnding) {
  for (const char* stray : {"exec sleep 20", "while echo y; do :; done"}) {
    const auto begin = Clock::now();
    const std::string line = "setsid sh -c 'echo $$; " + std::string(stray) + "' & exit 0";
    FILE* stream = shortRunner.start(line.c_str());
    ASSERT_NE(stream, nullptr);
    char pid[32] = "";
    ASSERT_NE(std::fgets(pid, sizeof pid, stream), nullptr);
    readAll(stream);
    EXPECT_EQ(shortRunner.finish(stream), 0);
    EXPECT_LT(Clock::now() - begin, kSoon) << stray;
    ::kill(std::atoi(pid), SIGKILL);
  }
}

TEST_F(CommandRunnerTest, outputBeforeTheCeilingIsDelivered) {
  const Result result = run(shortRunner, "echo early; sleep 100; echo late");
  EXPECT_EQ(result.output, "early\n");
  EXPECT_TRUE(isKilled(result.status));
}

TEST_F(CommandRunnerTest, slowReaderStillGetsWhatWasWrittenBeforeTheCeiling) {
  FILE* stream = shortRunner.start("echo early; exit 2");
  ASSERT_NE(stream, nullptr);
  std::this_thread::sleep_for(kShortCeiling + 100ms);
  EXPECT_EQ(readAll(stream), "early\n");
  EXPECT_EQ(shortRunner.finish(stream), 2 << 8);
}

TEST_F(CommandRunnerTest, endlessOutputEndsAtTheCeiling) {
  const Result result = run(shortRunner, "while echo y; do sleep 0.001; done");
  EXPECT_GT(result.output.size(), 0u);
  EXPECT_TRUE(isKilled(result.status));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, endlessOutputEndsBeforeItFillsTheMemory) {
  constexpr size_t kLongest = 32 << 20;
  constexpr size_t kLargestPipe = 1 << 20;
  const Result result = run(runner, "exec yes");
  EXPECT_GE(result.output.size(), kLongest);
  EXPECT_LE(result.output.size(), kLongest + kLargestPipe);
  EXPECT_TRUE(isKilled(result.status));
  EXPECT_LT(Clock::now() - started, kSoon);
}

// What was told of commands that were cut off.
class CutOffTest : public CommandRunnerTest {
 protected:
  std::vector<std::string> told;
  CommandRunner telling{kShortCeiling, [this](const std::string& line) { told.push_back(line); }};
};

TEST_F(CutOffTest, isToldOnceOfCommandThatHung) {
  EXPECT_EQ(run(telling, "echo early; sleep 100").output, "early\n");
  EXPECT_EQ(told, std::vector<std::string>{"echo early; sleep 100"});
}

TEST_F(CutOffTest, isToldOfOutputWithoutEnd) {
  run(telling, "exec yes");
  EXPECT_EQ(told, std::vector<std::string>{"exec yes"});
}

TEST_F(CutOffTest, isNotToldOfCommandThatEndedInTimeAndWasReadLate) {
  FILE* stream = telling.start("echo early; exit 2");
  ASSERT_NE(stream, nullptr);
  std::this_thread::sleep_for(kShortCeiling + 100ms);
  EXPECT_EQ(readAll(stream), "early\n");
  EXPECT_EQ(telling.finish(stream), 2 << 8);
  EXPECT_TRUE(told.empty());
}

TEST_F(CutOffTest, isNotToldOfCommandThatWasKilledWithAllOthers) {
  FILE* stream = telling.start("sleep 100");
  ASSERT_NE(stream, nullptr);
  telling.killAll();
  EXPECT_EQ(readAll(stream), "");
  EXPECT_TRUE(isKilled(telling.finish(stream)));
  EXPECT_TRUE(told.empty());
}

TEST_F(CutOffTest, commandThatHasSaidWhatIsWantedIsKilledWithoutWord) {
  CommandRunner patient{60s, [this](const std::string& line) { told.push_back(line); }};
  FILE* stream = patient.start("echo line; sleep 100");
  ASSERT_NE(stream, nullptr);
  char line[32] = "";
  ASSERT_NE(std::fgets(line, sizeof line, stream), nullptr);
  patient.limit(stream, 100ms);
  EXPECT_EQ(readAll(stream), "");
  EXPECT_TRUE(isKilled(patient.finish(stream)));
  EXPECT_LT(Clock::now() - started, kSoon);
  EXPECT_TRUE(told.empty());
}

TEST_F(CutOffTest, restDoesNotLengthenTheCeiling) {
  FILE* stream = telling.start("sleep 100");
  ASSERT_NE(stream, nullptr);
  telling.limit(stream, 60s);
  EXPECT_EQ(readAll(stream), "");
  EXPECT_TRUE(isKilled(telling.finish(stream)));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, commandThatClosesItsOutputAndGoesOnIsKilledWhenReaped) {
  const Result result = run(shortRunner, "exec >&-; sleep 100");
  EXPECT_EQ(result.output, "");
  EXPECT_TRUE(isKilled(result.status));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, commandThatIgnoresTerminationIsKilledAllTheSame) {
  EXPECT_TRUE(isKilled(run(shortRunner, "trap '' TERM HUP INT; sleep 100; sleep 100").status));
}

TEST_F(CommandRunnerTest, hungCommandClosedUnreadIsKilled) {
  FILE* stream = shortRunner.start("sleep 100");
  ASSERT_NE(stream, nullptr);
  EXPECT_TRUE(isKilled(shortRunner.finish(stream)));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, allCommandsCanBeKilledLongBeforeTheirCeiling) {
  FILE* first = runner.start("sleep 100 & echo $!; sleep 100");
  FILE* second = runner.start("exec sleep 100");
  FILE* ended = runner.start("exit 6");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  ASSERT_NE(ended, nullptr);
  char grandchild[32] = "";
  ASSERT_NE(std::fgets(grandchild, sizeof grandchild, first), nullptr);
  EXPECT_EQ(readAll(ended), "");
  runner.killAll();
  EXPECT_EQ(readAll(first), "");
  EXPECT_EQ(readAll(second), "");
  EXPECT_TRUE(isKilled(runner.finish(first)));
  EXPECT_TRUE(isKilled(runner.finish(second)));
  runner.finish(ended);  // dead or still dying when the signal came
  EXPECT_TRUE(endsSoon(std::to_string(std::atoi(grandchild))));
  runner.killAll();
  EXPECT_LT(Clock::now() - started, kSoon);
}

// A worker whose command was killed asks the next drive, and that command would outlive the
// process.
TEST_F(CommandRunnerTest, onceAllWereKilledNoOtherIsStarted) {
  FILE* first = runner.start("exec sleep 100");
  ASSERT_NE(first, nullptr);
  runner.killAll();
  errno = 0;
  FILE* next = runner.start("exec sleep 100");
  EXPECT_EQ(next, nullptr);
  EXPECT_EQ(errno, ECANCELED);
  if (next != nullptr) runner.killAll();
  if (next != nullptr) runner.finish(next);
  EXPECT_TRUE(isKilled(runner.finish(first)));
}

TEST_F(CommandRunnerTest, commandsThatAreBeingClosedAreKilledToo) {
  FILE* unread = runner.start("exec sleep 100");
  FILE* silent = runner.start("exec >&-; sleep 100");
  ASSERT_NE(unread, nullptr);
  ASSERT_NE(silent, nullptr);
  int statuses[2] = {};
  std::thread drainer([&] { statuses[0] = runner.finish(unread); });
  std::thread reaper([&] { statuses[1] = runner.finish(silent); });
  std::this_thread::sleep_for(300ms);
  runner.killAll();
  drainer.join();
  reaper.join();
  EXPECT_TRUE(isKilled(statuses[0]));
  EXPECT_TRUE(isKilled(statuses[1]));
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, unreadOutputIsDrainedSoThatTheCommandEndsByItself) {
  FILE* stream = runner.start("head -c 500000 /dev/zero && exit 5");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(runner.finish(stream), 5 << 8);
}

TEST_F(CommandRunnerTest, endlessOutputClosedUnreadIsNotReadForEver) {
  FILE* stream = runner.start("exec yes");
  ASSERT_NE(stream, nullptr);
  const int status = runner.finish(stream);
  EXPECT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGPIPE);
  EXPECT_LT(Clock::now() - started, kSoon);
}

TEST_F(CommandRunnerTest, commandInProcessGroupOfItsOwn) {
  EXPECT_EQ(run(runner, "test $$ = $(cut -d' ' -f5 /proc/$$/stat) && echo own").output, "own\n");
}

TEST_F(CommandRunnerTest, standardInputIsEmpty) {
  EXPECT_EQ(run(runner, "cat; readlink /proc/self/fd/0").output, "/dev/null\n");
}

// As in a root directory without devices.
TEST_F(CommandRunnerTest, withoutNullDeviceCommandsRunAllTheSame_theirInputIsEmpty) {
  constexpr int kNotHidden = 2;
  const pid_t pid = ::fork();
  if (pid == 0) {
    const bool hidden = ::unshare(CLONE_NEWNS) == 0 &&
                        ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
                        ::mount("none", "/dev", "tmpfs", 0, nullptr) == 0;
    if (!hidden) ::_exit(kNotHidden);
    const Result result = run(shortRunner, "cat; echo one; exit 3");
    ::_exit(result.output == "one\n" && result.status == 3 << 8 ? 0 : 1);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(pid, &status, 0), pid);
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNotHidden)
    GTEST_SKIP() << "hiding /dev needs a mount namespace of its own";
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(CommandRunnerTest, complaintsOfCommandsGoNowhere_redirectionsStillWork) {
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(run(runner, "echo oops >&2; missing-command").output, "");
  EXPECT_EQ(run(runner, "{ echo oops >&2; } 2>&1").output, "oops\n");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(CommandRunnerTest, childRunsInTheCLocale_ourEnvironmentStays) {
  ::setenv("LC_ALL", "de_DE.UTF-8", 1);
  ::setenv("QUENLOR_TEST_VARIABLE", "kept", 1);
  EXPECT_EQ(run(runner, "env | grep ^LC_ALL; echo $QUENLOR_TEST_VARIABLE").output,
            "LC_ALL=C\nkept\n");
  EXPECT_STREQ(::getenv("LC_ALL"), "de_DE.UTF-8");
  ::unsetenv("LC_ALL");
  EXPECT_EQ(run(runner, "env | grep ^LC_ALL").output, "LC_ALL=C\n");
  EXPECT_EQ(::getenv("LC_ALL"), nullptr);
}

TEST_F(CommandRunnerTest, childStartsWithDefaultSignalsAndNoneBlocked) {
  const auto oldPipe = ::signal(SIGPIPE, SIG_IGN);
  const auto oldTerm = ::signal(SIGTERM, SIG_IGN);
  sigset_t blocked;
  sigset_t old;
  sigfillset(&blocked);
  ::pthread_sigmask(SIG_BLOCK, &blocked, &old);
  const Result result = run(runner, "exec grep -E '^Sig(Blk|Ign)' /proc/self/status");
  ::pthread_sigmask(SIG_SETMASK, &old, nullptr);
  ::signal(SIGPIPE, oldPipe);
  ::signal(SIGTERM, oldTerm);
  // Bits 31 and 32 are the C library's own; its posix_spawn leaves them ignored in every child.
  unsigned long long blockedMask = 1;
  unsigned long long ignoredMask = 1;
  ASSERT_EQ(
      std::sscanf(result.output.c_str(), "SigBlk: %llx SigIgn: %llx", &blockedMask, &ignoredMask),
      2);
  EXPECT_EQ(blockedMask, 0u);
  EXPECT_EQ(ignoredMask & 0x7FFFFFFFu, 0u);
}

TEST_F(CommandRunnerTest, commandInheritsNoneOfOurDescriptors) {
  FILE* plain =
      ::popen("exec ls /proc/self/fd", "r");  // with those that we have inherited ourselves
  const std::string expected = readAll(plain);
  ::pclose(plain);
  FILE* other = runner.start("echo other");
  ASSERT_NE(other, nullptr);
  EXPECT_EQ(run(runner, "exec ls /proc/self/fd").output, expected);
  EXPECT_EQ(readAll(other), "other\n");
  EXPECT_EQ(runner.finish(other), 0);
}

TEST_F(CommandRunnerTest, twoCommandsMayBeClosedInAnyOrder) {
  FILE* first = runner.start("echo first; exit 1");
  FILE* second = runner.start("echo second; exit 2");
  ASSERT_NE(first, nullptr);
  ASSERT_NE(second, nullptr);
  EXPECT_EQ(readAll(second), "second\n");
  EXPECT_EQ(readAll(first), "first\n");
  EXPECT_EQ(runner.finish(first), 1 << 8);
  EXPECT_EQ(runner.finish(second), 2 << 8);
}

TEST_F(CommandRunnerTest, streamsOfOthersAreRefused) {
  const FileStream file(std::fopen("/dev/null", "r"));
  EXPECT_EQ(runner.finish(file.get()), -1);
  EXPECT_EQ(runner.finish(nullptr), -1);
}

TEST_F(CommandRunnerTest, withoutDescriptorsNothingIsStarted) {
  rlimit old{};
  ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &old), 0);
  const rlimit tight{3, old.rlim_max};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &tight), 0);
  errno = 0;
  FILE* stream = runner.start("echo never");
  const int error = errno;
  ::setrlimit(RLIMIT_NOFILE, &old);
  EXPECT_EQ(stream, nullptr);
  EXPECT_EQ(error, EMFILE);
}

TEST_F(CommandRunnerTest, readingPastTheEndStaysAtTheEnd) {
  FILE* stream = shortRunner.start("echo text; sleep 100");
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(readAll(stream), "text\n");
  std::clearerr(stream);
  EXPECT_EQ(readAll(stream), "");
  EXPECT_FALSE(std::ferror(stream));
  shortRunner.finish(stream);
}

TEST_F(CommandRunnerTest, threadsMayRunCommandsAtTheSameTime) {
  constexpr int kThreads = 4;
  constexpr int kRounds = 10;
  std::vector<std::thread> threads;
  std::vector<int> correct(kThreads);
  for (int thread = 0; thread < kThreads; ++thread) {
    threads.emplace_back([this, thread, &correct] {
      const std::string number = std::to_string(thread);
      const std::string line = "echo " + number + "; exit " + number;
      for (int round = 0; round < kRounds; ++round) {
        const Result result = run(runner, line.c_str());
        correct[static_cast<size_t>(thread)] +=
            result.output == number + "\n" && result.status == thread << 8;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(correct, std::vector<int>(kThreads, kRounds));
}

// The main thread of a program that was started with a small limit for stacks has no more.
TEST_F(CommandRunnerTest, outputThatNobodyWantsIsThrownAwayOnASmallStack) {
  pthread_attr_t small;
  pthread_attr_init(&small);
  ASSERT_EQ(pthread_attr_setstacksize(&small, size_t{64} << 10), 0);
  pthread_t thread{};
  const auto finishUnread = [](void* commands) -> void* {
    auto* own = static_cast<CommandRunner*>(commands);
    FILE* stream = own->start("head -c 200000 /dev/zero");
    return stream != nullptr && own->finish(stream) == 0 ? commands : nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &small, finishUnread, &runner), 0);
  void* result = nullptr;
  pthread_join(thread, &result);
  pthread_attr_destroy(&small);
  EXPECT_EQ(result, &runner);
}

}  // namespace
}  // namespace quenlor
