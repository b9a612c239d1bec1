#include "host/SystemHost.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <resolv.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <memory>

#if defined(__x86_64__) || defined(__i386__)
#include <cpuid.h>
#endif

namespace quenlor {
namespace {

// Larger than any answer of a sane resolver; a library that asks for more is not followed.
constexpr size_t kLargestHostEntry = 1 << 20;

struct DirectoryCloser {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

}  // namespace

int SystemHost::open(const char* path, int flags, mode_t mode) {
  return ::open(path, flags | O_CLOEXEC, mode);
}

int SystemHost::close(int fd) { return ::close(fd); }

ssize_t SystemHost::read(int fd, void* buffer, size_t size) { return ::read(fd, buffer, size); }

ssize_t SystemHost::write(int fd, const void* buffer, size_t size) {
  return ::write(fd, buffer, size);
}

int SystemHost::ioctl(int fd, unsigned long request, void* argument) {
  return ::ioctl(fd, request, argument);
}

int SystemHost::stat(const char* path, struct stat* out) { return ::stat(path, out); }

int SystemHost::fstat(int fd, struct stat* out) { return ::fstat(fd, out); }

int SystemHost::unlink(const char* path) { return ::unlink(path); }

void* SystemHost::mmap(size_t length, int protection, int flags, int fd, off_t offset) {
  return ::mmap(nullptr, length, protection, flags, fd, offset);
}

int SystemHost::munmap(void* address, size_t length) { return ::munmap(address, length); }

FILE* SystemHost::fopen(const char* path, const char* mode) {
  return ::fopen(path, (std::string(mode) + "e").c_str());  // "e": close-on-exec
}

bool SystemHost::listDirectory(const char* path, std::vector<std::string>& names) {
  names.clear();
  const std::unique_ptr<DIR, DirectoryCloser> directory(::opendir(path));
  if (directory == nullptr) return false;
  errno = 0;  // readdir tells its end from an error by errno alone
  while (const dirent* entry = ::readdir(directory.get())) {
    names.emplace_back(entry->d_name);
    errno = 0;
  }
  return errno == 0;
}

int SystemHost::statvfs(const char* path, struct statvfs* out) { return ::statvfs(path, out); }

int SystemHost::fstatvfs(int fd, struct statvfs* out) { return ::fstatvfs(fd, out); }

void SystemHost::tellCutOff(const std::string& commandLine) {
  std::fprintf(stderr,
               "quenlor: \"%s\" did not end in time and was killed, what it would have told is "
               "left out\n",
               commandLine.c_str());
}

int SystemHost::socket(int domain, int type, int protocol) {
  return ::socket(domain, type | SOCK_CLOEXEC, protocol);
}

std::chrono::milliseconds SystemHost::resolverRound() {
  struct __res_state resolver {};
  if (::res_ninit(&resolver) != 0) return std::chrono::seconds(RES_TIMEOUT);
  const int servers = std::max(resolver.nscount, 1);
  const std::chrono::seconds round(int64_t{resolver.retrans} * servers);
  ::res_nclose(&resolver);
  return round;
}

bool SystemHost::hostNameOfAddress(const in_addr& address, std::string& name) {
  std::string buffer(1024, '\0');
  hostent entry{};
  hostent* found = nullptr;
  int error = 0;
  while (::gethostbyaddr_r(&address, sizeof address, AF_INET, &entry, buffer.data(), buffer.size(),
                           &found, &error) == ERANGE) {
    if (buffer.size() >= kLargestHostEntry) return false;
    buffer.resize(buffer.size() * 2);
  }
  if (found == nullptr || found->h_name == nullptr) return false;
  name = found->h_name;
  return true;
}

int SystemHost::uname(struct utsname* out) { return ::uname(out); }

int SystemHost::sysinfo(struct sysinfo* out) { return ::sysinfo(out); }

int SystemHost::getpagesize() { return ::getpagesize(); }

int SystemHost::getNprocs() { return ::get_nprocs(); }

int SystemHost::getNprocsConf() { return ::get_nprocs_conf(); }

long SystemHost::sysconf(int name) { return ::sysconf(name); }

bool SystemHost::findUtmp(short type, struct utmp* record) {
  const std::lock_guard lock(m_utmp);
  struct utmp key {};
  key.ut_type = type;
  ::setutent();
  const struct utmp* found = ::getutid(&key);
  if (found != nullptr) *record = *found;
  ::endutent();
  return found != nullptr;
}

TimeZone SystemHost::timeZone() {
  const std::lock_guard lock(m_timeZoneGuard);
  const char* setting = ::getenv("TZ");
  const std::optional<std::string> current =
      setting == nullptr ? std::nullopt : std::optional<std::string>(setting);
  // localtime() and mktime() leave names and daylight behind as they are at the time converted, and
  // tzset() puts them right only when TZ has changed.
  if (!m_timeZone || m_timeZoneSetting != current) {
    ::tzset();
    m_timeZone = {::timezone, ::daylight != 0, ::tzname[0], ::tzname[1]};
    m_timeZoneSetting = current;
  }
  return *m_timeZone;
}

const char* SystemHost::setlocale(int category, const char* locale) {
  return std::setlocale(category, locale);
}

const char* SystemHost::getenv(const char* name) { return std::getenv(name); }

time_t SystemHost::time() { return ::time(nullptr); }

int SystemHost::gettimeofday(struct timeval* out) { return ::gettimeofday(out, nullptr); }

void SystemHost::sleepMicroseconds(uint32_t microseconds) { ::usleep(microseconds); }

#if defined(__x86_64__) || defined(__i386__)

namespace {

constexpr uint32_t kFirstHypervisorLeaf = 0x40000000;
constexpr uint32_t kLastHypervisorLeaf = 0x4000FFFF;
constexpr uint32_t kHypervisorLeafStep = 0x100;  // each interface that is imitated has as many
constexpr uint32_t kIsGuest = 1u << 31;          // leaf 1 ECX

// The range of these leaves is told by the first of each interface, and only in a guest: a
// processor itself answers them with what its last leaf says.
bool hypervisorCpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) {
  CpuidRegisters range;
  __cpuid(1, range.eax, range.ebx, range.ecx, range.edx);
  if ((range.ecx & kIsGuest) == 0) return false;
  const uint32_t first = leaf / kHypervisorLeafStep * kHypervisorLeafStep;
  __cpuid(first, range.eax, range.ebx, range.ecx, range.edx);
  if (leaf != first && leaf > range.eax) return false;
  __cpuid_count(leaf, subleaf, out->eax, out->ebx, out->ecx, out->edx);
  return true;
}

}  // namespace

bool SystemHost::cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) {
  *out = {};
  if (leaf >= kFirstHypervisorLeaf && leaf <= kLastHypervisorLeaf) {
    return hypervisorCpuid(leaf, subleaf, out);
  }
  return __get_cpuid_count(leaf, subleaf, &out->eax, &out->ebx, &out->ecx, &out->edx) != 0;
}

void SystemHost::portInput(PortRegisters* registers) {
  // A hypervisor that answers on the port may change all four registers, not only EAX.
  asm volatile("inl %%dx, %%eax"
               : "+a"(registers->eax), "+b"(registers->ebx), "+c"(registers->ecx),
                 "+d"(registers->edx)
               :
               : "memory");
}

#else

bool SystemHost::cpuid(uint32_t, uint32_t, CpuidRegisters* out) {
  *out = {};
  return false;
}

void SystemHost::portInput(PortRegisters*) {}

#endif

void* SystemHost::dlopen(const char* path, int flags) { return ::dlopen(path, flags); }

void* SystemHost::dlsym(void* library, const char* symbol) { return ::dlsym(library, symbol); }

int SystemHost::dlclose(void* library) { return ::dlclose(library); }

const char* SystemHost::dlerror() { return ::dlerror(); }

}  // namespace quenlor
