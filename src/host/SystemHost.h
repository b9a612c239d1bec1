// The real machine: every operation forwards to the call of its name.
#pragma once

#include <chrono>
#include <mutex>
#include <optional>
#include <string>

#include "host/CommandRunner.h"
#include "host/Host.h"

namespace quenlor {

class SystemHost : public Host {
 public:
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
  FILE* popen(const char* commandLine) override { return m_commands.start(commandLine); }
  FILE* startProgram(const char* path, const std::vector<std::string>& arguments) override {
    return m_commands.startProgram(path, arguments);
  }
  int pclose(FILE* stream) override { return m_commands.finish(stream); }
  void limitCommand(FILE* stream, std::chrono::milliseconds rest) override {
    m_commands.limit(stream, rest);
  }
  int socket(int domain, int type, int protocol) override;
  int netlinkRequest(int protocol, const std::string& request, std::string& reply) override;
  std::chrono::milliseconds resolverRound() override;
  bool hostNameOfAddress(const in_addr& address, std::string& name) override;
  int uname(struct utsname* out) override;
  int sysinfo(struct sysinfo* out) override;
  int getpagesize() override;
  int getNprocs() override;
  int getNprocsConf() override;
  long sysconf(int name) override;
  bool findUtmp(short type, struct utmp* record) override;
  TimeZone timeZone() override;
  const char* setlocale(int category, const char* locale) override;
  const char* getenv(const char* name) override;
  uid_t geteuid() override;
  time_t time() override;
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

  void killCommands() { m_commands.killAll(); }

 private:
  static constexpr std::chrono::seconds kCommandCeiling{60};

  // One line on standard error: a table may be short for it.
  static void tellCutOff(const std::string& commandLine);

  CommandRunner m_commands{kCommandCeiling, tellCutOff};
  std::mutex m_utmp;           // the C library keeps one position in utmp for the whole process
  std::mutex m_timeZoneGuard;  // and one set of time-zone variables
  std::optional<TimeZone> m_timeZone;            // as first read with this setting of TZ
  std::optional<std::string> m_timeZoneSetting;  // nothing: TZ is not set
};

}  // namespace quenlor
