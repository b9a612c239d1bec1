#include "supervise/outlive.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <unistd.h>

#include <optional>

#include "host/Host.h"
#include "limits/GetTableThread.h"
#include "supervise/ScanChild.h"
#include "supervise/ScanParent.h"
#include "supervise/SharedPage.h"
#include "supervise/SignalWatch.h"

namespace quenlor {
namespace {

struct WordPipe {
  int readEnd = -1;
  int writeEnd = -1;

  bool open() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
    readEnd = ends[0];
    writeEnd = ends[1];
    return true;
  }
  void close() const {
    ::close(readEnd);
    ::close(writeEnd);
  }
};

int scanHere(const std::function<int()>& scan) {
  const int status = scan();
  if (!hasAbandonedWorkers()) return status;
  // Such a worker uses objects that exit handlers would destroy, and holds the lock of the stream
  // that it reads: nothing here may walk over all open streams.
  killCommands();
  ::_exit(status);
}

int scanAsChild(const std::function<int()>& scan, int word) {
  const int status = scan();
  if (!hasAbandonedWorkers()) return status;
  killCommands();
  leaveWorkersBehind(status, word);
}

// The end of a pipe is as good as nothing to read, and nobody waits for it. A document on a dead
// file system could not even be closed.
void giveUpInputAndOutput(int readEnd) {
  ::dup2(readEnd, STDIN_FILENO);
  ::dup2(readEnd, STDOUT_FILENO);
}

}  // namespace

int outlive(const std::function<int()>& scan) {
  const SharedPage page;
  SignalWatch signals;
  WordPipe word;
  if (page.state() == nullptr || !signals.isWatching() || !word.open()) {
    signals.stop();
    return scanHere(scan);
  }
  // What the scan leaves running when it dies becomes ours, to be killed and reaped.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  const pid_t parent = ::getpid();
  const pid_t child = ::fork();
  if (child > 0) {
    ::close(word.writeEnd);
    giveUpInputAndOutput(word.readEnd);
    return ScanParent(*page.state(), signals, child, word.readEnd).run();
  }
  if (child == 0) dieWithParent(parent);
  signals.stop();
  if (child == 0) {
    useScanState(page.state());
    ::close(word.readEnd);
    startCaretaker(*page.state(), word.writeEnd);
    return scanAsChild(scan, word.writeEnd);
  }
  ::prctl(PR_SET_CHILD_SUBREAPER, 0);
  word.close();
  return scanHere(scan);
}

}  // namespace quenlor
