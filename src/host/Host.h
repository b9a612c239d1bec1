// The one seam between the program and the machine it runs on. Collectors reach the kernel, the C
// library's system facts, commands and the clock only through host(); tests install another Host.
#pragma once

#include <netinet/in.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/utsname.h>
#include <utmp.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

namespace quenlor {

// The C library's time-zone variables as tzset() first sets them: converting a time changes some.
struct TimeZone {
  long secondsWest = 0;      // `timezone`: seconds west of UTC, negative in the east
  bool daylight = false;     // `daylight`: the zone has daylight-saving rules
  std::string name;          // tzname[0]
  std::string daylightName;  // tzname[1]
};

// Registers of one CPUID leaf.
struct CpuidRegisters {
  uint32_t eax = 0;
  uint32_t ebx = 0;
  uint32_t ecx = 0;
  uint32_t edx = 0;
};

// Registers of a 32-bit port input, before and after.
struct PortRegisters {
  uint32_t eax = 0;
  uint32_t ebx = 0;
  uint32_t ecx = 0;
  uint32_t edx = 0;
};

// What kind of thing a directory entry is, as far as the directory itself tells.
enum class EntryType : uint8_t { kUnknown, kRegular, kDirectory, kLink, kOther };

// One entry of a directory.
struct DirectoryEntry {
  std::string name;
  EntryType type = EntryType::kUnknown;
};

// Where a comment says "as NAME", result, errno and argument meaning are those of the call NAME.
// Calls that open something set close-on-exec. Every operation may be called from several threads.
class Host {
 public:
  Host() = default;
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  virtual ~Host() = default;

  // --- files and devices ---
  virtual int open(const char* path, int flags, mode_t mode) = 0;        // as open
  virtual int close(int fd) = 0;                                         // as close
  virtual ssize_t read(int fd, void* buffer, size_t size) = 0;           // as read
  virtual ssize_t write(int fd, const void* buffer, size_t size) = 0;    // as write
  virtual int ioctl(int fd, unsigned long request, void* argument) = 0;  // as ioctl
  virtual int stat(const char* path, struct stat* out) = 0;              // as stat
  virtual int fstat(int fd, struct stat* out) = 0;                       // as fstat
  virtual int unlink(const char* path) = 0;                              // as unlink
  virtual void* mmap(size_t length, int protection, int flags, int fd,
                     off_t offset) = 0;                         // as mmap
  virtual int munmap(void* address, size_t length) = 0;         // as munmap
  virtual FILE* fopen(const char* path, const char* mode) = 0;  // as fopen; caller fcloses
  // Entry names in directory order, "." and ".." included; false and errno when it cannot be read.
  virtual bool listDirectory(const char* path, std::vector<std::string>& names) = 0;
  // The same with types, without "." and "..".
  virtual bool listEntries(const char* path, std::vector<DirectoryEntry>& entries) = 0;
  // Text of a symbolic link, as readlink without its length limit; false and errno.
  virtual bool readLink(const char* path, std::string& target) = 0;
  // As statx relative to the current directory; never triggers an automount (AT_NO_AUTOMOUNT).
  virtual int statx(const char* path, int flags, unsigned mask, struct statx* out) = 0;
  virtual int statvfs(const char* path, struct statvfs* out) = 0;  // as statvfs
  virtual int fstatvfs(int fd, struct statvfs* out) = 0;           // as fstatvfs

  // --- commands ---
  // As popen(commandLine, "r"), with standard input and error at /dev/null, LC_ALL=C in the child
  // and ceilings of 60 seconds and 32 MiB of output after which the child's process group is killed
  // and the output ends.
  virtual FILE* popen(const char* commandLine) = 0;
  // The same for a program by its absolute path, without a shell; arguments[0] is the name that it
  // is told. Null, with errno, where the path is none of a program.
  virtual FILE* startProgram(const char* path, const std::vector<std::string>& arguments) = 0;
  // As pclose: the wait status. The child is reaped, and killed if it outlives the ceiling.
  virtual int pclose(FILE* stream) = 0;

  // The command has told what is wanted: it is killed after so much more time, and what it prints
  // ends there.
  virtual void limitCommand(FILE* stream, std::chrono::milliseconds rest) = 0;

  // --- network ---
  virtual int socket(int domain, int type, int protocol) = 0;  // as socket
  // Sends one netlink message (linux/netlink.h) on a socket of its own and collects the datagrams
  // of the answer, one after the other, up to and with the end of a dump, an acknowledgement or the
  // single answer. 0 or an errno; what came before an error stays in the reply.
  virtual int netlinkRequest(int protocol, const std::string& request, std::string& reply) = 0;
  // As long as the resolver waits for each of its name servers once.
  virtual std::chrono::milliseconds resolverRound() = 0;
  // Official name of an IPv4 address as gethostbyaddr gives it; false when there is none.
  virtual bool hostNameOfAddress(const in_addr& address, std::string& name) = 0;

  // --- facts of the running system ---
  virtual int uname(struct utsname* out) = 0;    // as uname
  virtual int sysinfo(struct sysinfo* out) = 0;  // as sysinfo
  virtual int getpagesize() = 0;                 // as getpagesize
  virtual int getNprocs() = 0;                   // as get_nprocs
  virtual int getNprocsConf() = 0;               // as get_nprocs_conf
  virtual long sysconf(int name) = 0;            // as sysconf
  // First utmp record that getutid finds for the type; false when there is none.
  virtual bool findUtmp(short type, struct utmp* record) = 0;
  virtual TimeZone timeZone() = 0;  // to be asked once before the first time is converted
  virtual const char* setlocale(int category, const char* locale) = 0;  // as setlocale
  virtual const char* getenv(const char* name) = 0;                     // as getenv
  virtual uid_t geteuid() = 0;                                          // as geteuid

  // --- clock ---
  virtual time_t time() = 0;                                            // as time(NULL)
  virtual int gettimeofday(struct timeval* out) = 0;                    // as gettimeofday
  virtual int clockGettime(clockid_t clock, struct timespec* out) = 0;  // as clock_gettime
  virtual void sleepMicroseconds(uint32_t microseconds) = 0;            // as usleep

  // --- processor ---
  // CPUID on the current CPU; false when the leaf lies above the processor's largest one, and for
  // the hypervisor's leaves (40000000 to 4000FFFF) outside a guest.
  virtual bool cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) = 0;
  // Calls `work` once with the calling thread on the given CPU, and puts its affinity mask back;
  // false, without a call, where the mask does not allow the CPU. CPUID inside tells of that CPU.
  virtual bool runOnCpu(uint32_t cpu, const std::function<void()>& work) = 0;
  // Numbers of the CPUs that the calling thread may run on, ascending; empty when not told.
  virtual std::vector<uint32_t> allowedCpus() = 0;
  // 32-bit `in` from port DX; raises SIGSEGV where user mode has no I/O permission.
  virtual void portInput(PortRegisters* registers) = 0;

  // --- dynamic loader ---
  virtual void* dlopen(const char* path, int flags) = 0;       // as dlopen
  virtual void* dlsym(void* library, const char* symbol) = 0;  // as dlsym
  virtual int dlclose(void* library) = 0;                      // as dlclose
  virtual const char* dlerror() = 0;                           // as dlerror
};

// The host in use: the real machine unless a ScopedHost is alive.
Host& host();

// The real machine, for tests that replace only some operations of it.
Host& systemHost();

// Kills the real machine's commands that somebody still waits for, and lets no other start: nobody
// will wait, once the process ends, and their ceiling ends with it.
void killCommands();

// Installs another host for its own lifetime. For tests: not to be nested across threads.
class ScopedHost {
 public:
  explicit ScopedHost(Host& replacement);
  ~ScopedHost();
  ScopedHost(const ScopedHost&) = delete;
  ScopedHost& operator=(const ScopedHost&) = delete;

 private:
  Host* m_previous;
};

}  // namespace quenlor
