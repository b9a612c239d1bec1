// A machine made of texts: files, commands, directories, devices and a clock that tests set.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "host/Host.h"

namespace quenlor::test {

// Output and wait status of a fake command.
struct CommandResult {
  std::string output;
  int waitStatus = 0;  // as wait() gives it: exit code << 8
};

// Answers of a fake device node; unset operations fail with ENOTTY or EINVAL.
struct FakeDevice {
  std::function<int(unsigned long request, void* argument)> ioctl;
  std::function<ssize_t(const void* data, size_t size)> write;
  std::function<ssize_t(void* data, size_t size)> read;
  std::set<int> deniedAccessModes;  // O_RDONLY, O_RDWR: open fails with EACCES for these
  // Content of a mapping; no value fails with EPERM, as unset does with ENODEV.
  std::function<std::optional<std::string>(size_t length, off_t offset)> map;
  mode_t type = S_IFBLK;  // or S_IFCHR
  dev_t number = 0;       // st_rdev
};

// Everything that is not set is missing: files give ENOENT, commands print nothing and exit with
// 127 as the shell does. Installs itself as host() for its lifetime. Records what was asked for.
// May be asked from several threads; the maps are to be changed only while nobody asks.
class FakeHost : public Host {
 public:
  FakeHost();
  ~FakeHost() override;

  // --- what the machine holds ---
  std::map<std::string, std::string> files;  // path to content; also for stat and open
  std::map<std::string, std::vector<std::string>>
      directories;                                // path to names, without "." and ".."
  std::map<std::string, CommandResult> commands;  // command line to result
  // What startProgram runs, and its result; unset: ENOENT.
  std::map<std::vector<std::string>, CommandResult> programs;
  std::set<std::string> unstartableCommands;          // popen gives null for these
  std::function<void(const std::string&)> onCommand;  // runs at each popen: side effects
  std::map<std::string, FakeDevice> devices;          // node to answers
  std::map<std::string, int> openErrors;              // path to errno of open and fopen
  std::map<std::string, mode_t> permissions;          // default 0644, directories 0755
  FakeDevice socketDevice;                            // ioctls on any socket
  bool socketsFail = false;
  std::map<std::string, std::string> hostNames;  // dotted quad to name
  std::map<std::string, std::string> links;  // path to link text; only readLink and listEntries see
  std::map<std::string, struct statx> fileFacts;  // path to statx result; unset: ENOENT
  std::function<int(int protocol, const std::string& request, std::string& reply)> netlink;
  std::map<clockid_t, struct timespec> clocks;  // unset: `now`
  uid_t user = 0;
  // Leaves of each CPU instead of cpuidLeaves, while runOnCpu runs there; also the allowed CPUs.
  std::map<uint32_t, std::map<std::pair<uint32_t, uint32_t>, CpuidRegisters>> cpuidOfCpus;
  std::chrono::milliseconds resolverPatience{60000};
  std::map<std::string, struct statvfs> fileSystems;           // mount point to statvfs result
  std::function<int(const char*, struct statvfs*)> onStatvfs;  // instead of fileSystems, if set
  std::optional<struct utsname> unameResult;
  std::optional<struct sysinfo> sysinfoResult;
  std::map<short, struct utmp> utmpRecords;
  TimeZone zone;
  std::map<int, std::optional<std::string>> locales;  // category to name; unset: "C"
  std::map<std::string, std::string> environment;
  time_t now = 0;
  int pageSize = 4096;
  int nprocs = 1;
  int nprocsConf = 1;
  std::map<int, long> sysconfValues;  // default: from the three above
  std::map<std::pair<uint32_t, uint32_t>, CpuidRegisters> cpuidLeaves;  // (leaf, subleaf)
  std::function<void(PortRegisters*)> port;                             // unset: raises SIGSEGV
  std::function<void*(const char* path, int flags)> loadLibrary;        // unset: null
  std::function<void*(void* library, const char* symbol)> findSymbol;

  // --- what was asked for ---
  std::vector<std::string> opened;   // paths of open and fopen, in order, found or not
  std::vector<std::string> started;  // command lines in order, programs' joined by blanks
  std::vector<std::chrono::milliseconds> limited;  // time that commands were left with, in order
  std::vector<std::string> unlinked;
  std::vector<std::string> measured;           // paths of statvfs, in order
  std::atomic<uint64_t> sleptMicroseconds{0};  // sleeps return at once and are added here
  int openDescriptors() const;                 // descriptors, sockets and streams not closed yet
  int openStreams() const;                     // streams of fopen not closed yet
  int openCommands() const;                    // command streams not closed yet
  int openMappings() const;                    // mappings not unmapped yet
  int openLibraries() const;                   // successful dlopen less dlclose

  // Sets uname from three texts.
  void setUname(const std::string& node, const std::string& release, const std::string& machine);

  int open(const char* path, int flags, mode_t mode) override;
  int close(int fd) override;
  ssize_t read(int fd, void* buffer, size_t size) override;
  ssize_t write(int fd, const void* buffer, size_t size) override;
  int ioctl(int fd, unsigned long request, void* argument) override;
  int stat(const char* path, struct stat* out) override;
  int fstat(int fd, struct stat* out) override;
  int unlink(const char* path) override;
  void* mmap(size_t length, int protection, int flags, int fd, off_t offset) override;
  int munmap(void* address, size_t length) override;
  FILE* fopen(const char* path, const char* mode) override;
  bool listDirectory(const char* path, std::vector<std::string>& names) override;
  bool listEntries(const char* path, std::vector<DirectoryEntry>& entries) override;
  bool readLink(const char* path, std::string& target) override;
  int statx(const char* path, int flags, unsigned mask, struct statx* out) override;
  int statvfs(const char* path, struct statvfs* out) override;
  int fstatvfs(int fd, struct statvfs* out) override;
  FILE* popen(const char* commandLine) override;
  FILE* startProgram(const char* path, const std::vector<std::string>& arguments) override;
  int pclose(FILE* stream) override;
  void limitCommand(FILE* stream, std::chrono::milliseconds rest) override;
  int socket(int domain, int type, int protocol) override;
  int netlinkRequest(int protocol, const std::string& request, std::string& reply) override;
  std::chrono::milliseconds resolverRound() override { return resolverPatience; }
  bool hostNameOfAddress(const in_addr& address, std::string& name) override;
  int uname(struct utsname* out) override;
  int sysinfo(struct sysinfo* out) override;
  int getpagesize() override { return pageSize; }
  int getNprocs() override { return nprocs; }
  int getNprocsConf() override { return nprocsConf; }
  long sysconf(int name) override;
  bool findUtmp(short type, struct utmp* record) override;
  TimeZone timeZone() override { return zone; }
  const char* setlocale(int category, const char* locale) override;
  const char* getenv(const char* name) override;
  uid_t geteuid() override { return user; }
  time_t time() override { return now; }
  int gettimeofday(struct timeval* out) override;
  int clockGettime(clockid_t clock, struct timespec* out) override;
  void sleepMicroseconds(uint32_t microseconds) override;
  bool cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) override;
  bool runOnCpu(uint32_t cpu, const std::function<void()>& work) override;
  std::vector<uint32_t> allowedCpus() override;
  void portInput(PortRegisters* registers) override;
  void* dlopen(const char* path, int flags) override;
  void* dlsym(void* library, const char* symbol) override;
  int dlclose(void* library) override;
  const char* dlerror() override;

 private:
  struct OpenFile {
    std::string path;
    size_t position = 0;
    bool isSocket = false;
    bool isPathOnly = false;
  };

  bool isDirectory(const std::string& path) const;
  bool exists(const std::string& path) const;
  int openError(const std::string& path, int flags) const;
  void fillStatus(const std::string& path, struct stat* out) const;
  int seek(int fd, off64_t* offset, int whence);
  FakeDevice* deviceOf(const OpenFile& file);
  std::optional<std::string> mappedBytes(int fd, size_t length, off_t offset);

  mutable std::mutex m_mutex;
  std::map<int, OpenFile> m_open;
  std::map<FILE*, CommandResult> m_commandStreams;
  std::map<void*, size_t> m_mappings;
  std::optional<uint32_t> m_currentCpu;  // inside runOnCpu
  int m_nextDescriptor = 1000;
  std::shared_ptr<std::atomic<int>> m_streams = std::make_shared<std::atomic<int>>(0);
  std::atomic<int> m_libraries{0};
  ScopedHost m_scope;
};

}  // namespace quenlor::test
