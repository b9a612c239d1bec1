// File systems whose server is slow, dead or stopped: tests mount them and see what the scanner
// does. Speaks the kernel's protocol (linux/fuse.h) on /dev/fuse itself, so it runs where no
// library is.
//
//   fuse_server answer|never|<milliseconds> <directory>...
//
// Mounts an empty file system on each directory, prints "ready" once the kernel has greeted them
// all, and serves until SIGTERM or SIGINT, which takes the mounts away. "never" takes every request
// and answers none; a number answers each that late. Killed by SIGKILL it leaves mounts behind that
// fail at once; stopped by SIGSTOP it leaves requests that nobody takes.
#include <fcntl.h>
#include <linux/fuse.h>
#include <poll.h>
#include <sys/mount.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <optional>
#include <string>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

// Of 4096-byte blocks; half of them free, a quarter for everybody.
constexpr uint64_t kBlocks = 16384;

struct Behaviour {
  bool answers = true;
  milliseconds delay{0};
};

// A reply that is due; its bytes as the kernel reads them.
struct Reply {
  Clock::time_point due;
  std::string bytes;
};

template <class Value>
std::string bytesOf(const Value& value) {
  return {reinterpret_cast<const char*>(&value), sizeof value};
}

std::string replyTo(const fuse_in_header& request, int error, const std::string& body = {}) {
  fuse_out_header header{};
  header.len = static_cast<uint32_t>(sizeof header + body.size());
  header.error = -error;
  header.unique = request.unique;
  return bytesOf(header) + body;
}

std::string replyToInit(const fuse_in_header& request, const char* body) {
  fuse_init_in asked{};
  std::memcpy(&asked, body, offsetof(fuse_init_in, flags2));
  fuse_init_out answer{};
  answer.major = FUSE_KERNEL_VERSION;
  answer.minor = FUSE_KERNEL_MINOR_VERSION;
  answer.max_readahead = asked.max_readahead;
  answer.max_write = 4096;
  return replyTo(request, 0, bytesOf(answer));
}

std::string replyToStatfs(const fuse_in_header& request) {
  fuse_statfs_out answer{};
  answer.st.blocks = kBlocks;
  answer.st.bfree = kBlocks / 2;
  answer.st.bavail = kBlocks / 4;
  answer.st.bsize = 4096;
  answer.st.frsize = 4096;
  answer.st.namelen = 255;
  return replyTo(request, 0, bytesOf(answer));
}

std::string replyToGetattr(const fuse_in_header& request) {
  fuse_attr_out answer{};
  answer.attr.ino = FUSE_ROOT_ID;
  answer.attr.mode = S_IFDIR | 0755;
  answer.attr.nlink = 2;
  return replyTo(request, 0, bytesOf(answer));
}

std::string replyToRequest(const fuse_in_header& request) {
  switch (request.opcode) {
    case FUSE_STATFS:
      return replyToStatfs(request);
    case FUSE_GETATTR:
      return replyToGetattr(request);
    case FUSE_LOOKUP:
      return replyTo(request, ENOENT);
    case FUSE_OPENDIR:
      return replyTo(request, 0, bytesOf(fuse_open_out{}));
    case FUSE_READDIR:
    case FUSE_RELEASEDIR:
      return replyTo(request, 0);
    default:
      return replyTo(request, ENOSYS);
  }
}

bool wantsNoReply(uint32_t opcode) {
  return opcode == FUSE_FORGET || opcode == FUSE_BATCH_FORGET || opcode == FUSE_INTERRUPT;
}

// One mounted directory and the server's end of it.
class Mount {
 public:
  explicit Mount(const char* directory) : m_directory(directory) {
    m_fd = ::open("/dev/fuse", O_RDWR | O_CLOEXEC | O_NONBLOCK);
    const std::string options =
        "fd=" + std::to_string(m_fd) + ",rootmode=40000,user_id=0,group_id=0,allow_other";
    if (m_fd < 0 || ::mount("dead:/share", directory, "fuse", 0, options.c_str()) != 0) {
      std::perror(directory);
      std::exit(1);
    }
  }

  int fd() const { return m_fd; }
  bool isGreeted() const { return m_isGreeted; }
  void unmount() const { ::umount2(m_directory, MNT_DETACH); }

  // Takes what the kernel asks. False when the file system is gone.
  bool take(const Behaviour& behaviour) {
    std::array<char, FUSE_MIN_READ_BUFFER + 65536> buffer;
    for (;;) {
      const ssize_t size = ::read(m_fd, buffer.data(), buffer.size());
      if (size < 0 && errno == ENODEV) return false;
      if (size < static_cast<ssize_t>(sizeof(fuse_in_header))) return true;
      fuse_in_header request{};
      std::memcpy(&request, buffer.data(), sizeof request);
      takeRequest(request, buffer.data() + sizeof request, behaviour);
    }
  }

  // Sends what is due; when the next one is.
  std::optional<Clock::time_point> sendDue() {
    while (!m_replies.empty() && m_replies.front().due <= Clock::now()) {
      send(m_replies.front().bytes);
      m_replies.pop_front();
    }
    if (m_replies.empty()) return std::nullopt;
    return m_replies.front().due;
  }

 private:
  void takeRequest(const fuse_in_header& request, const char* body, const Behaviour& behaviour) {
    if (request.opcode == FUSE_INIT) {
      send(replyToInit(request, body));
      m_isGreeted = true;
    } else if (behaviour.answers && !wantsNoReply(request.opcode)) {
      m_replies.push_back({Clock::now() + behaviour.delay, replyToRequest(request)});
    }
  }

  // Who asked may be gone by now: then the kernel refuses the reply.
  void send(const std::string& bytes) const {
    if (::write(m_fd, bytes.data(), bytes.size()) < 0 && errno != ENOENT) std::perror("reply");
  }

  const char* m_directory;
  int m_fd = -1;
  bool m_isGreeted = false;
  std::deque<Reply> m_replies;  // all are as late, so they are due in order
};

// Descriptor that becomes readable by a signal to end.
int openEndSignals() {
  sigset_t ends;
  sigemptyset(&ends);
  sigaddset(&ends, SIGTERM);
  sigaddset(&ends, SIGINT);
  ::sigprocmask(SIG_BLOCK, &ends, nullptr);
  return ::signalfd(-1, &ends, SFD_CLOEXEC);
}

// Milliseconds until the first reply is due; -1 when there is none.
int sendAllDue(std::vector<Mount>& mounts) {
  int wait = -1;
  for (Mount& mount : mounts) {
    const auto due = mount.sendDue();
    if (!due) continue;
    const auto left = std::chrono::ceil<milliseconds>(*due - Clock::now()).count();
    const int next = left < 0 ? 0 : static_cast<int>(left);
    wait = wait < 0 || next < wait ? next : wait;
  }
  return wait;
}

void serve(std::vector<Mount>& mounts, const Behaviour& behaviour) {
  std::vector<pollfd> events{{openEndSignals(), POLLIN, 0}};
  for (const Mount& mount : mounts) events.push_back({mount.fd(), POLLIN, 0});
  size_t greeted = 0;
  for (;;) {
    ::poll(events.data(), events.size(), sendAllDue(mounts));
    if (events[0].revents != 0) return;
    for (size_t i = 0; i < mounts.size(); ++i) {
      if (events[i + 1].revents == 0) continue;
      const bool wasGreeted = mounts[i].isGreeted();
      if (!mounts[i].take(behaviour)) events[i + 1].fd = -1;  // no longer to be looked at
      if (!wasGreeted && mounts[i].isGreeted() && ++greeted == mounts.size()) {
        std::puts("ready");
        std::fflush(stdout);
      }
    }
  }
}

std::optional<Behaviour> parseBehaviour(const char* text) {
  if (std::strcmp(text, "answer") == 0) return Behaviour{};
  if (std::strcmp(text, "never") == 0) return Behaviour{.answers = false};
  char* end = nullptr;
  const long delay = std::strtol(text, &end, 10);
  if (end == text || *end != '\0' || delay < 0) return std::nullopt;
  return Behaviour{.answers = true, .delay = milliseconds(delay)};
}

}  // namespace

int main(int argc, char* argv[]) {
  const auto behaviour = argc > 2 ? parseBehaviour(argv[1]) : std::nullopt;
  if (!behaviour) {
    std::fputs("usage: fuse_server answer|never|<milliseconds> <directory>...\n", stderr);
    return 2;
  }
  std::vector<Mount> mounts;
  for (int i = 2; i < argc; ++i) mounts.emplace_back(argv[i]);
  serve(mounts, *behaviour);
  for (const Mount& mount : mounts) mount.unmount();
  return 0;
}
