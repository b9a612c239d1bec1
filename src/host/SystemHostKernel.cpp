// The operations of the real machine that present-day kernels offer: typed directories, statx,
// netlink, and CPUID of a chosen CPU.
#include <dirent.h>
#include <fcntl.h>
#include <linux/netlink.h>
#include <sched.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>
#include <memory>

#include "host/Handles.h"
#include "host/SystemHost.h"

namespace quenlor {
namespace {

// The kernel fills dump datagrams up to this much when the reader's buffer holds as much.
constexpr size_t kDatagram = size_t{64} << 10;
// A dump that is larger is no dump of a machine's interfaces any more.
constexpr size_t kLargestReply = 256u << 20;
// The kernel answers from its own tables at once; whoever waits longer waits for ever.
constexpr timeval kReplyLimit{2, 0};
// CPUs that an affinity mask may name; the largest kernels are built for 8192.
constexpr size_t kMostCpus = 65536;

struct DirectoryCloser {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

EntryType typeOf(unsigned char type) {
  switch (type) {
    case DT_UNKNOWN:
      return EntryType::kUnknown;
    case DT_REG:
      return EntryType::kRegular;
    case DT_DIR:
      return EntryType::kDirectory;
    case DT_LNK:
      return EntryType::kLink;
    default:
      return EntryType::kOther;
  }
}

bool isDots(const char* name) {
  return std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0;
}

// True when a datagram ends the answer: the end of a dump, an error or acknowledgement, or a
// message that belongs to no dump.
bool endsAnswer(const char* datagram, size_t size) {
  size_t at = 0;
  while (size - at >= sizeof(nlmsghdr)) {
    nlmsghdr header{};
    std::memcpy(&header, datagram + at, sizeof header);
    if (header.nlmsg_type == NLMSG_DONE || header.nlmsg_type == NLMSG_ERROR) return true;
    if ((header.nlmsg_flags & NLM_F_MULTI) == 0) return true;
    const size_t step = NLMSG_ALIGN(header.nlmsg_len);
    if (header.nlmsg_len < sizeof header || step > size - at) return true;
    at += step;
  }
  return false;
}

int receiveAnswer(int fd, std::string& reply) {
  std::unique_ptr<char[]> buffer(new char[kDatagram]);
  while (reply.size() < kLargestReply) {
    const ssize_t size = ::recv(fd, buffer.get(), kDatagram, MSG_TRUNC);
    if (size < 0 && errno == EINTR) continue;
    if (size < 0) return errno;
    if (size == 0) return EPIPE;
    if (static_cast<size_t>(size) > kDatagram) return EMSGSIZE;
    reply.append(buffer.get(), static_cast<size_t>(size));
    if (endsAnswer(buffer.get(), static_cast<size_t>(size))) return 0;
  }
  return EOVERFLOW;
}

// An affinity mask of a size that the running kernel takes.
class CpuMask {
 public:
  CpuMask() : m_set(CPU_ALLOC(kMostCpus)), m_size(CPU_ALLOC_SIZE(kMostCpus)) {
    CPU_ZERO_S(m_size, m_set);
  }
  ~CpuMask() { CPU_FREE(m_set); }
  CpuMask(const CpuMask&) = delete;
  CpuMask& operator=(const CpuMask&) = delete;

  bool get() { return ::sched_getaffinity(0, m_size, m_set) == 0; }
  bool apply() const { return ::sched_setaffinity(0, m_size, m_set) == 0; }
  bool has(size_t cpu) const { return cpu < kMostCpus && CPU_ISSET_S(cpu, m_size, m_set); }
  void add(size_t cpu) { CPU_SET_S(cpu, m_size, m_set); }
  size_t count() const { return static_cast<size_t>(CPU_COUNT_S(m_size, m_set)); }

 private:
  cpu_set_t* m_set;
  size_t m_size;
};

// Puts a mask back whatever ends the scope.
class MaskRestorer {
 public:
  explicit MaskRestorer(const CpuMask& mask) : m_mask(mask) {}
  ~MaskRestorer() { m_mask.apply(); }
  MaskRestorer(const MaskRestorer&) = delete;
  MaskRestorer& operator=(const MaskRestorer&) = delete;

 private:
  const CpuMask& m_mask;
};

}  // namespace

bool SystemHost::listEntries(const char* path, std::vector<DirectoryEntry>& entries) {
  entries.clear();
  const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(path));
  if (directory == nullptr) return false;
  errno = 0;  // readdir tells its end from an error by errno alone
  while (const dirent* entry = ::readdir(directory.get())) {
    if (!isDots(entry->d_name)) entries.push_back({entry->d_name, typeOf(entry->d_type)});
    errno = 0;
  }
  return errno == 0;
}

bool SystemHost::readLink(const char* path, std::string& target) {
  char text[PATH_MAX];
  const ssize_t length = ::readlink(path, text, sizeof text);
  if (length < 0) return false;
  target.assign(text, static_cast<size_t>(length));
  return true;
}

int SystemHost::statx(const char* path, int flags, unsigned mask, struct statx* out) {
  return ::statx(AT_FDCWD, path, flags | AT_NO_AUTOMOUNT, mask, out);
}

int SystemHost::netlinkRequest(int protocol, const std::string& request, std::string& reply) {
  reply.clear();
  const Descriptor connection(::socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, protocol));
  if (!connection) return errno;
  ::setsockopt(connection.get(), SOL_SOCKET, SO_RCVTIMEO, &kReplyLimit, sizeof kReplyLimit);
  const ssize_t sent = ::send(connection.get(), request.data(), request.size(), MSG_NOSIGNAL);
  if (sent < 0) return errno;
  return receiveAnswer(connection.get(), reply);
}

uid_t SystemHost::geteuid() { return ::geteuid(); }

int SystemHost::clockGettime(clockid_t clock, struct timespec* out) {
  return ::clock_gettime(clock, out);
}

bool SystemHost::runOnCpu(uint32_t cpu, const std::function<void()>& work) {
  CpuMask allowed;
  if (!allowed.get() || !allowed.has(cpu)) return false;
  CpuMask only;
  only.add(cpu);
  if (!only.apply()) return false;
  const MaskRestorer restorer(allowed);
  work();
  return true;
}

std::vector<uint32_t> SystemHost::allowedCpus() {
  CpuMask allowed;
  std::vector<uint32_t> cpus;
  if (!allowed.get()) return cpus;
  const size_t count = allowed.count();
  for (uint32_t cpu = 0; cpus.size() < count; ++cpu) {
    if (allowed.has(cpu)) cpus.push_back(cpu);
  }
  return cpus;
}

}  // namespace quenlor
