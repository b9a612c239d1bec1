#include "limits/TimeoutStatvfs.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <limits>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/Event.h"
#include "limits/GetTableThread.h"
#include "tests/support/ConfiguredProgram.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using test::ConfiguredProgram;
using test::FakeHost;

constexpr int kGenerous = 60000000;
constexpr char kMount[] = "/mnt/data";

struct statvfs garbage() {
  struct statvfs bytes;
  std::memset(&bytes, 0x5A, sizeof bytes);
  return bytes;
}

bool isZero(const struct statvfs& size) {
  return size.f_frsize == 0 && size.f_blocks == 0 && size.f_bavail == 0 && size.f_namemax == 0;
}

TEST(TimeoutStatvfs, resultOfTheCallIsHandedOver) {
  FakeHost machine;
  machine.fileSystems[kMount].f_blocks = 77;
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs(kMount, &size, kGenerous), 0);
  EXPECT_EQ(size.f_blocks, 77u);
  EXPECT_EQ(size.f_bavail, 0u);
  EXPECT_EQ(machine.measured, std::vector<std::string>{kMount});
}

TEST(TimeoutStatvfs, callThatFailsAtOnceGivesSuccessAndZeros) {
  FakeHost machine;
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs("/missing", &size, kGenerous), 0);
  EXPECT_TRUE(isZero(size));
}

TEST(TimeoutStatvfs, whatFailedCallLeftBehindIsNotPassedOn) {
  FakeHost machine;
  machine.onStatvfs = [](const char*, struct statvfs* out) {
    *out = garbage();
    errno = EIO;
    return -1;
  };
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs(kMount, &size, kGenerous), 0);
  EXPECT_TRUE(isZero(size));
}

TEST(TimeoutStatvfs, nullPathIsNotAskedFor) {
  FakeHost machine;
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs(nullptr, &size, kGenerous), 0);
  EXPECT_TRUE(isZero(size));
  EXPECT_TRUE(machine.measured.empty());
}

TEST(TimeoutStatvfs, healthyFileSystemsCostFarLessThanOneStep) {
  FakeHost machine;
  machine.fileSystems[kMount];
  const auto before = Clock::now();
  struct statvfs size {};
  for (int call = 0; call < 100; ++call) {
    ASSERT_EQ(timeout_statvfs(kMount, &size, kGenerous), 0);
  }
  EXPECT_LT(Clock::now() - before, 1s);  // 100 steps are 5 s
}

TEST(TimeoutStatvfs, answerWithinTheLimitIsTaken) {
  FakeHost machine;
  machine.onStatvfs = [](const char*, struct statvfs* out) {
    std::this_thread::sleep_for(60ms);
    out->f_blocks = 5;
    return 0;
  };
  for (const int limit : {kGenerous, std::numeric_limits<int>::max()}) {
    struct statvfs size {};
    EXPECT_EQ(timeout_statvfs(kMount, &size, limit), 0);
    EXPECT_EQ(size.f_blocks, 5u);
  }
}

// A file system that does not answer the given number of workers. What they touch outlives the
// test's machine, and the machine outlives their stay in it.
class HungFileSystem {
 public:
  explicit HungFileSystem(FakeHost& machine, int workers = 1) : m_workers(workers) {
    machine.onStatvfs = [state = m_state](const char*, struct statvfs* out) {
      pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);  // the kernel does not let go either
      state->release.wait(60000);
      *out = garbage();
      ++state->left;
      return 0;
    };
  }
  ~HungFileSystem() { letGo(); }

  // Lets the calls return and waits for it.
  void letGo() {
    m_state->release.signal();
    const auto giveUp = Clock::now() + 60s;
    while (m_state->left < m_workers && Clock::now() < giveUp) std::this_thread::sleep_for(1ms);
    EXPECT_EQ(m_state->left, m_workers);
  }

 private:
  struct State {
    Event release;
    std::atomic<int> left{0};
  };

  const int m_workers;
  std::shared_ptr<State> m_state = std::make_shared<State>();
};

TEST(TimeoutStatvfs, callThatNeverReturnsGivesOneAfterTheLimit) {
  FakeHost machine;
  HungFileSystem hung(machine);
  struct statvfs size = garbage();
  const auto before = Clock::now();
  EXPECT_EQ(timeout_statvfs(kMount, &size, 100000), 1);
  const auto waited = Clock::now() - before;
  EXPECT_GE(waited, 100ms);
  EXPECT_LT(waited, 5s);
  EXPECT_EQ(size.f_blocks, garbage().f_blocks) << "out stays untouched";
}

TEST(TimeoutStatvfs, limitIsRoundedUpToWholeSteps) {
  FakeHost machine;
  HungFileSystem hung(machine, 2);
  struct statvfs size {};
  const auto before = Clock::now();
  EXPECT_EQ(timeout_statvfs(kMount, &size, 1), 1);
  EXPECT_GE(Clock::now() - before, 50ms);
  const auto second = Clock::now();
  EXPECT_EQ(timeout_statvfs(kMount, &size, 50001), 1);
  EXPECT_GE(Clock::now() - second, 100ms);
}

TEST(TimeoutStatvfs, limitOfZeroOrLessLooksOnceWithoutWaiting) {
  FakeHost machine;
  HungFileSystem hung(machine, 3);
  struct statvfs size {};
  const auto before = Clock::now();
  EXPECT_EQ(timeout_statvfs(kMount, &size, 0), 1);
  EXPECT_EQ(timeout_statvfs(kMount, &size, -1), 1);
  EXPECT_EQ(timeout_statvfs(kMount, &size, std::numeric_limits<int>::min()), 1);
  EXPECT_LT(Clock::now() - before, 50ms);
}

TEST(TimeoutStatvfs, workerThatComesBackLateTouchesOnlyWhatItOwns) {
  FakeHost machine;
  HungFileSystem hung(machine);
  {
    auto path = std::make_unique<std::string>(kMount);
    auto size = std::make_unique<struct statvfs>();
    EXPECT_EQ(timeout_statvfs(path->c_str(), size.get(), 1), 1);
  }
  hung.letGo();
}

TEST(TimeoutStatvfs, callThatCanBeCancelledIsCancelled) {
  FakeHost machine;
  int pipe[2];
  ASSERT_EQ(::pipe2(pipe, O_CLOEXEC), 0);
  struct Farewell {
    std::shared_ptr<Event> event;
    ~Farewell() { event->signal(); }
  };
  auto unwound = std::make_shared<Event>();
  machine.onStatvfs = [pipe, unwound](const char*, struct statvfs*) {
    const Farewell farewell{unwound};
    char byte = 0;
    return static_cast<int>(::read(pipe[0], &byte, 1));
  };
  struct statvfs size {};
  EXPECT_EQ(timeout_statvfs(kMount, &size, 1), 1);
  EXPECT_EQ(unwound->wait(5000), 0);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

TEST(TimeoutStatvfs, abandonedWorkerIsReported) {
  FakeHost machine;
  HungFileSystem hung(machine);
  struct statvfs size {};
  EXPECT_EQ(timeout_statvfs(kMount, &size, 1), 1);
  EXPECT_TRUE(hasAbandonedWorkers());
}

TEST(TimeoutStatvfs, withoutThreadsResultIsOne) {
  FakeHost machine;
  machine.fileSystems[kMount];
  // No machine has the memory for a stack of this size, so no thread can be made.
  pthread_attr_t previous;
  pthread_attr_t huge;
  ASSERT_EQ(pthread_getattr_default_np(&previous), 0);
  ASSERT_EQ(pthread_attr_init(&huge), 0);
  ASSERT_EQ(pthread_attr_setstacksize(&huge, size_t{1} << 46), 0);
  ASSERT_EQ(pthread_setattr_default_np(&huge), 0);
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs(kMount, &size, kGenerous), 1);
  EXPECT_EQ(size.f_blocks, garbage().f_blocks);
  EXPECT_TRUE(machine.measured.empty());
  pthread_setattr_default_np(&previous);
  pthread_attr_destroy(&huge);
  pthread_attr_destroy(&previous);
}

size_t threadsOfProcess() {
  const std::filesystem::directory_iterator all("/proc/self/task");
  return static_cast<size_t>(std::distance(begin(all), end(all)));
}

TEST(TimeoutStatvfs, finishedWorkersLeaveNothingBehind) {
  FakeHost machine;
  machine.fileSystems[kMount];
  struct statvfs size {};
  timeout_statvfs(kMount, &size,
                  kGenerous);  // a sanitizer's own thread starts with the first worker
  const size_t before = threadsOfProcess();
  for (int call = 0; call < 50; ++call) timeout_statvfs(kMount, &size, kGenerous);
  // The kernel lists a thread for a moment longer than joining it takes.
  for (int wait = 0; wait < 100 && threadsOfProcess() > before; ++wait) usleep(10000);
  EXPECT_LE(threadsOfProcess(), before);
}

TEST(TimeoutStatvfs, realRootFileSystemIsMeasured) {
  struct statvfs expected {};
  struct statvfs size {};
  ASSERT_EQ(::statvfs("/", &expected), 0);
  EXPECT_EQ(timeout_statvfs("/", &size, kGenerous), 0);
  EXPECT_EQ(size.f_blocks, expected.f_blocks);
  EXPECT_EQ(size.f_frsize, expected.f_frsize);
}

TEST(TimeoutStatvfsAutofs, mountPointIsOpenedByPathAlone_statvfsWouldMountIt) {
  struct Recorder : FakeHost {
    int open(const char* path, int flags, mode_t mode) override {
      flagsSeen = flags;
      return FakeHost::open(path, flags, mode);
    }
    std::atomic<int> flagsSeen{0};
  } machine;
  machine.fileSystems["/net"].f_blocks = 3;
  struct statvfs size {};
  EXPECT_EQ(timeout_statvfs_autofs("/net", &size, kGenerous), 0);
  EXPECT_EQ(size.f_blocks, 3u);
  EXPECT_EQ(machine.flagsSeen & (O_PATH | O_DIRECTORY), O_PATH);
  EXPECT_TRUE(machine.measured.empty());
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST(TimeoutStatvfsAutofs, mountPointThatIsGoneGivesZeros) {
  FakeHost machine;
  struct statvfs size = garbage();
  EXPECT_EQ(timeout_statvfs_autofs("/net", &size, kGenerous), 0);
  EXPECT_TRUE(isZero(size));
  EXPECT_EQ(timeout_statvfs_autofs(nullptr, &size, kGenerous), 0);
}

// What is mounted over an automounter's directory can be as dead as any other mount.
TEST(TimeoutStatvfsAutofs, hungMountPointCostsItsLimit_lateWorkerClosesWhatItOpened) {
  struct State {
    Event release;
    Event closed;
  };
  struct HungHost : FakeHost {
    int fstatvfs(int, struct statvfs*) override {
      const auto kept = state;
      kept->release.wait(60000);
      return -1;
    }
    int close(int fd) override {
      const auto kept = state;
      const int result = FakeHost::close(fd);
      kept->closed.signal();
      return result;
    }
    std::shared_ptr<State> state = std::make_shared<State>();
  } machine;
  machine.fileSystems["/net"];
  struct statvfs size {};
  const auto before = Clock::now();
  EXPECT_EQ(timeout_statvfs_autofs("/net", &size, 1), 1);
  EXPECT_GE(Clock::now() - before, 50ms);
  machine.state->release.signal();
  EXPECT_EQ(machine.state->closed.wait(60000), 0);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST(TimeoutStatvfsAutofs, realDirectoryIsMeasured) {
  struct statvfs expected {};
  struct statvfs size {};
  ASSERT_EQ(::statvfs("/", &expected), 0);
  EXPECT_EQ(timeout_statvfs_autofs("/", &size, kGenerous), 0);
  EXPECT_EQ(size.f_blocks, expected.f_blocks);
}

TEST(ThreadParams, startZeroed_pathIsCopy) {
  std::string path = kMount;
  const ThreadParams params(path.c_str());
  path[0] = 'x';
  EXPECT_STREQ(params.path, kMount);
  EXPECT_TRUE(isZero(params.result));
  EXPECT_EQ(params.rc, 0);
  EXPECT_EQ(params.finished, 0);
  EXPECT_EQ(ThreadParams(nullptr).path, nullptr);
}

TEST(HelperExecute, marksItsParametersFinished) {
  FakeHost machine;
  machine.fileSystems[kMount].f_bavail = 9;
  ThreadParams good(kMount);
  EXPECT_EQ(helper_execute(&good), nullptr);
  EXPECT_EQ(good.rc, 0);
  EXPECT_EQ(good.result.f_bavail, 9u);
  EXPECT_EQ(good.finished, 1);
  ThreadParams missing("/missing");
  helper_execute(&missing);
  EXPECT_EQ(missing.rc, -1);
  EXPECT_EQ(missing.finished, 1);
  ThreadParams none(nullptr);
  helper_execute(&none);
  EXPECT_EQ(none.rc, 0);
  EXPECT_EQ(none.finished, 1);
  EXPECT_EQ(helper_execute(nullptr), nullptr);
}

TEST(GetDOVMaxTimeout, limitIsFiveSecondsUnlessConfigured) {
  EXPECT_EQ(GetDOVMaxTimeout(), 5000000);
  const ConfiguredProgram program("hwscanner.timeout = 300000\n");
  EXPECT_EQ(GetDOVMaxTimeout(), 300000);
}

TEST(GetDOVMaxTimeout, emptyValueIsTheDefault_textIsZero_hugeIsClamped) {
  {
    const ConfiguredProgram program("hwscanner.timeout =\n");
    EXPECT_EQ(GetDOVMaxTimeout(), 5000000);
  }
  {
    const ConfiguredProgram program("hwscanner.timeout = never\n");
    EXPECT_EQ(GetDOVMaxTimeout(), 0);
  }
  const ConfiguredProgram program("hwscanner.timeout = 5000000000\n");
  EXPECT_EQ(GetDOVMaxTimeout(), std::numeric_limits<int>::max());
}

TEST(GetDOVMaxTimeout, brokenConfigurationGivesTheDefault) {
  ::testing::internal::CaptureStderr();
  const ConfiguredProgram program("hwscanner.timeout = 7\nno assignment\n");
  ::testing::internal::GetCapturedStderr();
  EXPECT_EQ(GetDOVMaxTimeout(), 5000000);
}

}  // namespace
}  // namespace quenlor
