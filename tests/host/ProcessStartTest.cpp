#include "host/ProcessStart.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <functional>
#include <initializer_list>

namespace quenlor {
namespace {

// What the check says in a child process, where it may spoil descriptors and signals.
bool holdsInChild(const std::function<bool()>& check) {
  const pid_t pid = ::fork();
  if (pid == 0) ::_exit(check() ? 0 : 1);
  int status = -1;
  EXPECT_EQ(::waitpid(pid, &status, 0), pid);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

bool isNullDevice(int fd, int accessMode) {
  struct stat opened {};
  struct stat null {};
  return ::fstat(fd, &opened) == 0 && ::stat("/dev/null", &null) == 0 &&
         opened.st_rdev == null.st_rdev && (::fcntl(fd, F_GETFL) & O_ACCMODE) == accessMode;
}

TEST(ProcessStart, closedDescriptorsAreOpenedAtTheNullDevice) {
  EXPECT_TRUE(holdsInChild([] {
    for (const int fd : {0, 1, 2}) ::close(fd);
    prepareProcess();
    return isNullDevice(0, O_RDONLY) && isNullDevice(1, O_RDONLY) && isNullDevice(2, O_WRONLY);
  }));
}

TEST(ProcessStart, writingToStandardOutputThatWasClosedFails_documentIsNotLostSilently) {
  EXPECT_TRUE(holdsInChild([] {
    ::close(1);
    prepareProcess();
    return ::write(1, "x", 1) == -1;
  }));
}

TEST(ProcessStart, withoutNullDeviceTheDescriptorsAreTakenAllTheSame) {
  if (::geteuid() != 0) GTEST_SKIP() << "chroot needs root";
  EXPECT_TRUE(holdsInChild([] {
    if (::chroot("/proc/self/fdinfo") != 0) return false;
    for (const int fd : {0, 1, 2}) ::close(fd);
    prepareProcess();
    return ::write(1, "x", 1) == -1 && ::open("/", O_RDONLY | O_DIRECTORY) > 2;
  }));
}

TEST(ProcessStart, nextFileOpenedDoesNotBecomeStandardOutput) {
  EXPECT_TRUE(holdsInChild([] {
    ::close(1);
    prepareProcess();
    return ::open("/proc/version", O_RDONLY) > 2 && isNullDevice(1, O_RDONLY);
  }));
}

TEST(ProcessStart, openDescriptorsStayAsTheyAre) {
  EXPECT_TRUE(holdsInChild([] {
    struct stat before {};
    struct stat after {};
    const int file = ::open("/proc/version", O_RDONLY);
    ::dup2(file, 0);
    ::fstat(0, &before);
    prepareProcess();
    ::fstat(0, &after);
    return before.st_ino == after.st_ino && before.st_dev == after.st_dev;
  }));
}

TEST(ProcessStart, signalsGetTheirDefaultActions) {
  EXPECT_TRUE(holdsInChild([] {
    ::signal(SIGCHLD, SIG_IGN);
    ::signal(SIGPIPE, SIG_IGN);
    prepareProcess();
    struct sigaction child {};
    struct sigaction pipe {};
    ::sigaction(SIGCHLD, nullptr, &child);
    ::sigaction(SIGPIPE, nullptr, &pipe);
    return child.sa_handler == SIG_DFL && pipe.sa_handler == SIG_DFL;
  }));
}

TEST(ProcessStart, fileThatMayNotGrowIsFailedWriteAndNoDeath) {
  EXPECT_TRUE(holdsInChild([] {
    prepareProcess();
    const struct rlimit none = {0, 0};
    ::setrlimit(RLIMIT_FSIZE, &none);
    FILE* file = std::tmpfile();
    return file != nullptr && ::write(::fileno(file), "x", 1) == -1 && errno == EFBIG;
  }));
}

TEST(ProcessStart, segmentationFaultIsUnblocked_otherSignalsStayBlocked) {
  EXPECT_TRUE(holdsInChild([] {
    sigset_t blocked;
    sigemptyset(&blocked);
    sigaddset(&blocked, SIGSEGV);
    sigaddset(&blocked, SIGUSR1);
    ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
    prepareProcess();
    sigset_t now;
    ::sigprocmask(SIG_BLOCK, nullptr, &now);
    return sigismember(&now, SIGSEGV) == 0 && sigismember(&now, SIGUSR1) == 1;
  }));
}

TEST(ProcessStart, umaskAndEnvironmentStayTheCallers) {
  EXPECT_TRUE(holdsInChild([] {
    ::umask(027);
    ::setenv("LC_ALL", "xx_YY", 1);
    prepareProcess();
    return ::umask(0) == 027 && std::strcmp(::getenv("LC_ALL"), "xx_YY") == 0;
  }));
}

// Size of the stack that a new thread of this process gets.
size_t stackOfNewThread() {
  pthread_t thread{};
  size_t size = 0;
  const auto measure = [](void* result) -> void* {
    pthread_attr_t own;
    pthread_getattr_np(pthread_self(), &own);
    pthread_attr_getstacksize(&own, static_cast<size_t*>(result));
    pthread_attr_destroy(&own);
    return nullptr;
  };
  if (pthread_create(&thread, nullptr, measure, &size) != 0) return 0;
  pthread_join(thread, nullptr);
  return size;
}

TEST(ProcessStart, threadsHaveAStackOfTheirOwnSize_whateverLimitTheCallerLeft) {
  EXPECT_TRUE(holdsInChild([] {
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, size_t{64} << 10);  // as a limit of 64 KiB makes it
    pthread_setattr_default_np(&small);
    prepareProcess();
    return stackOfNewThread() >= size_t{2} << 20;
  }));
}

}  // namespace
}  // namespace quenlor
