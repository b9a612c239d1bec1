#include "supervise/ScanChild.h"

#include <sys/prctl.h>
#include <unistd.h>

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

// Kernels before 5.9 cannot close a range.
void closeFrom(int first) {
  if (::close_range(static_cast<unsigned>(first), ~0U, 0) == 0) return;
  const long most = ::sysconf(_SC_OPEN_MAX);
  for (long descriptor = first; descriptor < most; ++descriptor) {
    ::close(static_cast<int>(descriptor));
  }
}

void giveUpOtherDescriptors() {
  const int kept = EarlierScan::markDescriptor();
  if (kept < 0) return closeFrom(kFirstOther);
  ::dup2(kept, kFirstOther);
  closeFrom(kFirstOther + 1);
}

}  // namespace

void dieWithParent(pid_t parent) {
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::getppid() != parent) ::_exit(0);
}

void leaveWorkersBehind(int status, int word) {
  say(word, status);
  giveUpStandardDescriptors(word);
  giveUpOtherDescriptors();
  static_cast<void>(!::chdir("/"));
  say(STDOUT_FILENO, status);
  ::_exit(status);
}

}  // namespace quenlor
