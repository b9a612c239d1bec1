#include "supervise/ScanChild.h"

#include <linux/futex.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <csignal>
#include <initializer_list>

#include "limits/EarlierScan.h"

namespace quenlor {
namespace {

constexpr int kFirstOther = STDERR_FILENO + 1;

void say(int descriptor, int status) {
  const auto byte = static_cast<unsigned char>(status);
  static_cast<void>(!::write(descriptor, &byte, 1));  // without a parent there is nobody to tell
}

// Pipes, sockets and terminals: what somebody may wait for at the other end. Asks no file system.
bool isStream(int descriptor) { return ::lseek(descriptor, 0, SEEK_CUR) < 0 && errno == ESPIPE; }

// Closing a file on a dead file system can hang, closing a stream cannot: streams go first.
void giveUpStandardDescriptors(int word) {
  for (const bool streams : {true, false}) {
    for (const int standard : {STDOUT_FILENO, STDERR_FILENO, STDIN_FILENO}) {
      if (isStream(standard) == streams) ::dup2(word, standard);
    }
  }
}

void giveUpOtherDescriptors() {
  const int kept = EarlierScan::markDescriptor();
  if (kept < 0) return closeFrom(kFirstOther);
  ::dup2(kept, kFirstOther);
  closeFrom(kFirstOther + 1);
}

// What the caretaker needs; never freed, for it lives as long as the process.
struct Care {
  ScanState& state;
  int word;
};

// Between processes: not FUTEX_PRIVATE_FLAG.
long futex(std::atomic<uint32_t>& place, int operation, uint32_t value) {
  return ::syscall(SYS_futex, &place, operation, value, nullptr, nullptr, 0);
}

void* takeCare(void* argument) {
  const Care& care = *static_cast<const Care*>(argument);
  while (care.state.isToDie == 0) futex(care.state.isToDie, FUTEX_WAIT, 0);
  giveUpStandardDescriptors(care.word);
  care.state.hasCaretaker = false;
  return nullptr;
}

}  // namespace

// Kernels before 5.9 cannot close a range.
void closeFrom(int first) {
  if (::close_range(static_cast<unsigned>(first), ~0U, 0) == 0) return;
  const long most = ::sysconf(_SC_OPEN_MAX);
  for (long descriptor = first; descriptor < most; ++descriptor) {
    ::close(static_cast<int>(descriptor));
  }
}

void startCaretaker(ScanState& state, int word) {
  static Care care{state, word};
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, &before);  // signals are the scan's, not the caretaker's
  state.hasCaretaker = true;
  pthread_t thread{};
  if (::pthread_create(&thread, nullptr, takeCare, &care) == 0) {
    ::pthread_detach(thread);
  } else {
    state.hasCaretaker = false;
  }
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

void callCaretaker(ScanState& state) {
  state.isToDie = 1;
  futex(state.isToDie, FUTEX_WAKE, 1);
}

void dieWithParent(pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(0);
}

void leaveWorkersBehind(int status, int word) {
  say(word, status);
  giveUpStandardDescriptors(word);
  giveUpOtherDescriptors();
  static_cast<void>(!::chdir("/"));
  scanState().hasCaretaker = false;  // there is nothing left for it to do
  say(STDOUT_FILENO, status);
  ::_exit(status);
}

}  // namespace quenlor
