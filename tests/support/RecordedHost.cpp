// A recorded machine's settings and running system; its files are in RecordedFiles.cpp, its network
// is in RecordedNetwork.cpp, its programs are in RecordedPrograms.cpp.
#include "tests/support/RecordedHost.h"

#include <linux/ethtool.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace quenlor::test {
namespace {

// The processor that the calling thread was moved to; nothing: the first one that it may run on.
thread_local std::optional<uint32_t> t_cpu;

void eachLine(const std::string& text, const std::function<void(const std::string&)>& take) {
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    if (!line.empty() && line.front() != '#') take(line);
  }
}

struct timespec timeOf(double seconds) {
  const double whole = std::floor(seconds);
  return {static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
}

}  // namespace

std::string RecordedHost::optionalFile(const std::string& name) const {
  std::ostringstream content;
  std::ifstream stream(m_directory / name, std::ios::binary);
  if (stream) content << stream.rdbuf();
  return content.str();
}

RecordedHost::RecordedHost(const std::filesystem::path& directory)
    : m_directory(directory),
      m_cpuid(optionalFile("cpuid.txt")),
      m_allowed(m_cpuid.processors()),
      m_fileSystems(parseFlatJson(optionalFile("statvfs.json"))),
      m_ethtool(parseFlatJson(optionalFile("ethtool.json"))),
      m_netlink(optionalFile("network.txt")),
      m_scope(*this) {
  if (!std::filesystem::is_directory(directory)) {
    throw std::runtime_error("no recorded machine: " + directory.string());
  }
  if (std::filesystem::is_directory(directory / "root")) m_tree.addDirectory(directory / "root");
  m_tree.addList(optionalFile("tree.txt"));
  m_tree.addFacts(optionalFile("facts"));
  eachLine(optionalFile("permissions"), [this](const std::string& line) { takePermission(line); });
  for (const auto& [interface, info] : m_netlink.driverInfos()) {
    m_ethtool[interface][std::to_string(ETHTOOL_GDRVINFO)] = info;
  }
  takeUname(optionalFile("uname"));
  takeClocks(optionalFile("clock"));
  takeEnvironment(optionalFile("environment"));
  eachLine(optionalFile("programs.txt"), [this](const std::string& line) { takeProgram(line); });
}

void RecordedHost::takePermission(const std::string& line) {
  std::istringstream words(line);
  std::string kind;
  std::string value;
  std::string pattern;
  words >> kind >> value >> pattern;
  if (kind == "user") {
    m_user = static_cast<uid_t>(std::stoul(value));
  } else if (kind == "processors") {
    m_allowed = recordedNumbers(value);
  } else if (kind == "refuse" || kind == "unreadable") {
    m_refusals.push_back({pattern, recordedErrno(value), kind == "unreadable"});
  } else {
    throw std::runtime_error("permissions, unknown line: " + line);
  }
}

void RecordedHost::takeUname(const std::string& text) {
  char* const fields[] = {m_uname.sysname, m_uname.nodename, m_uname.release, m_uname.version,
                          m_uname.machine};
  std::istringstream stream(text);
  for (char* field : fields) {
    std::string line;
    std::getline(stream, line);
    std::snprintf(field, sizeof m_uname.sysname, "%s", line.c_str());
  }
}

void RecordedHost::takeClocks(const std::string& text) {
  static const std::map<std::string, clockid_t> kClocks{
      {"realtime", CLOCK_REALTIME}, {"boottime", CLOCK_BOOTTIME}, {"monotonic", CLOCK_MONOTONIC}};
  eachLine(text, [this](const std::string& line) {
    std::istringstream words(line);
    std::string name;
    double seconds = 0;
    if (!(words >> name >> seconds)) throw std::runtime_error("clock, unknown line: " + line);
    m_clocks[kClocks.at(name)] = timeOf(seconds);
  });
}

void RecordedHost::takeEnvironment(const std::string& text) {
  eachLine(text, [this](const std::string& line) {
    const size_t sign = line.find('=');
    if (sign == std::string::npos) throw std::runtime_error("environment, no NAME=value: " + line);
    m_environment[line.substr(0, sign)] = line.substr(sign + 1);
  });
}

int RecordedHost::fail(int error) const {
  errno = error;
  return -1;
}

int RecordedHost::forbid(const std::string& what, int error) {
  const std::lock_guard lock(m_mutex);
  m_forbidden.push_back(what);
  return fail(error);
}

std::vector<std::string> RecordedHost::forbidden() const {
  const std::lock_guard lock(m_mutex);
  return m_forbidden;
}

std::map<std::string, int> RecordedHost::opens() const {
  const std::lock_guard lock(m_mutex);
  return m_opens;
}

std::map<std::string, int> RecordedHost::listings() const {
  const std::lock_guard lock(m_mutex);
  return m_listings;
}

std::vector<std::string> RecordedHost::readTwice() const {
  const std::lock_guard lock(m_mutex);
  std::vector<std::string> paths;
  for (const auto* counts : {&m_opens, &m_listings}) {
    for (const auto& [path, count] : *counts) {
      if (count > 1) paths.push_back(path);
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

int RecordedHost::openDescriptors() const {
  const std::lock_guard lock(m_mutex);
  return static_cast<int>(m_open.size());
}

int RecordedHost::uname(struct utsname* out) {
  *out = m_uname;
  return 0;
}

int RecordedHost::sysinfo(struct sysinfo* out) {
  *out = {};
  struct timespec boot {};
  clockGettime(CLOCK_BOOTTIME, &boot);
  out->uptime = boot.tv_sec;
  return 0;
}

int RecordedHost::getNprocs() { return static_cast<int>(std::max<size_t>(m_allowed.size(), 1)); }

long RecordedHost::sysconf(int name) {
  switch (name) {
    case _SC_NPROCESSORS_CONF:
    case _SC_NPROCESSORS_ONLN:
      return getNprocs();
    case _SC_PAGESIZE:
      return getpagesize();
    case _SC_CLK_TCK:
      return 100;
    default:
      return fail(EINVAL);
  }
}

const char* RecordedHost::getenv(const char* name) {
  const auto found = m_environment.find(name);
  return found == m_environment.end() ? nullptr : found->second.c_str();
}

time_t RecordedHost::time() {
  struct timespec now {};
  clockGettime(CLOCK_REALTIME, &now);
  return now.tv_sec;
}

int RecordedHost::gettimeofday(struct timeval* out) {
  *out = {time(), 0};
  return 0;
}

int RecordedHost::clockGettime(clockid_t clock, struct timespec* out) {
  const auto found = m_clocks.find(clock);
  *out = {};
  if (found == m_clocks.end()) return fail(EINVAL);
  *out = found->second;
  return 0;
}

bool RecordedHost::cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) {
  const uint32_t first = m_allowed.empty() ? 0 : m_allowed.front();
  return m_cpuid.answer(t_cpu.value_or(first), leaf, subleaf, out);
}

bool RecordedHost::runOnCpu(uint32_t cpu, const std::function<void()>& work) {
  if (std::find(m_allowed.begin(), m_allowed.end(), cpu) == m_allowed.end()) return false;
  t_cpu = cpu;
  work();
  t_cpu.reset();
  return true;
}

void RecordedHost::portInput(PortRegisters*) { forbid("port", 0); }

void* RecordedHost::dlopen(const char* path, int) {
  forbid(std::string("load ") + (path == nullptr ? "" : path), ENOENT);
  return nullptr;
}

}  // namespace quenlor::test
