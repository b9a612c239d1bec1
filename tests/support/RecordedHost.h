// A machine that was recorded into a directory, as the present-day sources see it. What each file
// of the directory means: tests/recorded/README.md.
#pragma once

#include <chrono>
#include <filesystem>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Host.h"
#include "tests/support/FlatJson.h"
#include "tests/support/RecordedCpuid.h"
#include "tests/support/RecordedNetlink.h"
#include "tests/support/RecordedTree.h"

namespace quenlor::test {

// Answers from the directory alone and installs itself as host() for its lifetime. What a scan must
// not do (start a program that was not recorded, write, open a node below /dev, load a library,
// look up a name, touch a port, map memory) fails and is recorded. May be asked from several
// threads.
class RecordedHost : public Host {
 public:
  // Throws std::runtime_error when a file of the recording is malformed.
  explicit RecordedHost(const std::filesystem::path& directory);

  // --- what was asked for ---
  // What a scan must not do, in order: "start lspci", "write /etc/x", "node /dev/sda",
  // "load libx.so", "resolve 10.0.0.1", "port", "map".
  std::vector<std::string> forbidden() const;
  // How often each path was opened, links resolved; failed opens count too.
  std::map<std::string, int> opens() const;
  // How often each directory was listed, links resolved.
  std::map<std::string, int> listings() const;
  // Paths that were opened, or listed, more than once; sorted.
  std::vector<std::string> readTwice() const;
  int openDescriptors() const;  // not closed yet
  // Recorded programs that were started, as programs.txt has them, in order.
  std::vector<std::string> started() const;

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
  int socket(int domain, int type, int protocol) override;
  int netlinkRequest(int protocol, const std::string& request, std::string& reply) override;
  void limitCommand(FILE*, std::chrono::milliseconds) override {}
  std::chrono::milliseconds resolverRound() override { return std::chrono::milliseconds(0); }
  bool hostNameOfAddress(const in_addr& address, std::string& name) override;
  int uname(struct utsname* out) override;
  int sysinfo(struct sysinfo* out) override;
  int getpagesize() override { return 4096; }
  int getNprocs() override;
  int getNprocsConf() override { return getNprocs(); }
  long sysconf(int name) override;
  bool findUtmp(short, struct utmp*) override { return false; }
  TimeZone timeZone() override { return m_zone; }
  const char* setlocale(int, const char*) override { return "C"; }
  const char* getenv(const char* name) override;
  uid_t geteuid() override { return m_user; }
  time_t time() override;
  int gettimeofday(struct timeval* out) override;
  int clockGettime(clockid_t clock, struct timespec* out) override;
  void sleepMicroseconds(uint32_t) override {}
  bool cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) override;
  bool runOnCpu(uint32_t cpu, const std::function<void()>& work) override;
  std::vector<uint32_t> allowedCpus() override { return m_allowed; }
  void portInput(PortRegisters* registers) override;
  void* dlopen(const char* path, int flags) override;
  void* dlsym(void*, const char*) override { return nullptr; }
  int dlclose(void*) override { return 0; }
  const char* dlerror() override { return "refused"; }

 private:
  struct OpenFile {
    const RecordedNode* node = nullptr;  // null: a socket
    std::string path;                    // links resolved
    size_t position = 0;
  };
  // What the recorded user is refused, as open or as read says it.
  struct Refusal {
    std::string pattern;
    int error = 0;
    bool atRead = false;
  };

  std::optional<std::filesystem::path> fileOf(const std::string& name) const;
  std::string optionalFile(const std::string& name) const;
  void addDirectories(const std::filesystem::path& directory);
  void addFirmware(const std::string& text);
  void takePermission(const std::string& line);
  void takeUname(const std::string& text);
  void takeClocks(const std::string& text);
  void takeEnvironment(const std::string& text);
  void takeProgram(const std::string& line);
  int refusalOf(const std::string& asked, const std::string& resolved, bool atRead) const;
  int fail(int error) const;
  int forbid(const std::string& what, int error);
  int ethtool(void* argument) const;
  std::optional<std::string> netlinkAnswer(int protocol, const std::string& request);

  std::vector<std::filesystem::path> m_directories;  // what this machine is like, itself last
  RecordedTree m_tree;
  RecordedCpuid m_cpuid;
  std::vector<uint32_t> m_allowed;
  std::vector<Refusal> m_refusals;
  uid_t m_user = 0;
  struct utsname m_uname {};
  std::map<clockid_t, struct timespec> m_clocks;
  std::map<std::string, std::string> m_environment;
  TimeZone m_zone;
  FlatJson m_fileSystems;
  FlatJson m_ethtool;
  struct ProgramResult {
    int waitStatus = 0;
    std::string output;
  };
  std::map<std::string, ProgramResult> m_programs;  // path and arguments, joined by bars
  RecordedNetlink m_netlink;

  mutable std::mutex m_mutex;
  std::vector<std::string> m_forbidden;
  std::map<std::string, int> m_opens;
  std::map<std::string, int> m_listings;
  std::map<std::string, int> m_netlinkRequests;  // how often each key was asked for
  std::map<int, OpenFile> m_open;
  std::vector<std::string> m_started;
  std::map<FILE*, int> m_running;  // output to wait status
  int m_nextDescriptor = 1000;
  ScopedHost m_scope;
};

}  // namespace quenlor::test
