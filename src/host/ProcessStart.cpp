#include "host/ProcessStart.h"

#include <fcntl.h>
#include <malloc.h>
#include <pthread.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>

namespace quenlor {
namespace {

constexpr size_t kThreadStackSize = size_t{2} << 20;

// In ascending order: open() gives the lowest free descriptor, which then is the missing one.
void openStandardDescriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) {
    if (::fcntl(fd, F_GETFD) != -1 || errno != EBADF) continue;
    // Standard output only for reading: a document written to nowhere must show as a failed write.
    const int mode = fd == STDERR_FILENO ? O_WRONLY : O_RDONLY;
    // A root directory without devices still has itself to keep the number taken.
    if (::open("/dev/null", mode) < 0) ::open("/", O_RDONLY | O_DIRECTORY);
  }
}

void setAction(int signal, void (*handler)(int)) {
  struct sigaction action {};
  action.sa_handler = handler;
  ::sigaction(signal, &action, nullptr);
}

// A thread gets the caller's limit for the main stack otherwise, be it 16 KiB or all of the memory:
// too little for a name service module, or too much to start a thread at all.
void setThreadStackSize() {
  pthread_attr_t attributes;
  if (::pthread_attr_init(&attributes) != 0) return;
  ::pthread_attr_setstacksize(&attributes, kThreadStackSize);
  ::pthread_setattr_default_np(&attributes);
  ::pthread_attr_destroy(&attributes);
}

// Threads of a scan take turns, so they need no heaps of their own, which grow page by page.
void shareOneHeap() {
  constexpr int kGrowth = 512 << 10;
  ::mallopt(M_ARENA_MAX, 1);
  ::mallopt(M_TOP_PAD, kGrowth);
}

}  // namespace

void prepareProcess() {
  openStandardDescriptors();
  setAction(SIGCHLD, SIG_DFL);  // ignored, it would make children vanish without a wait status
  setAction(SIGPIPE, SIG_DFL);
  setAction(SIGXFSZ, SIG_IGN);  // a file that may not grow is a failed write, which has a status
  sigset_t faults;
  sigemptyset(&faults);
  sigaddset(&faults, SIGSEGV);  // blocked, the port probe's fault would kill the process
  ::pthread_sigmask(SIG_UNBLOCK, &faults, nullptr);
  setThreadStackSize();
  shareOneHeap();
}

}  // namespace quenlor
