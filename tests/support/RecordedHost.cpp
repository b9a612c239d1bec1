// A recorded machine's settings and running system; its files are in RecordedFiles.cpp, its network
// is in RecordedNetwork.cpp, its programs are in RecordedPrograms.cpp.
#include "tests/support/RecordedHost.h"

#include <linux/ethtool.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "tests/support/RecordedFirmware.h"

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

// Sets the process' zone for its lifetime.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) {
    if (const char* former = std::getenv("TZ")) m_former = former;
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  ~ZoneScope() {
    m_former ? ::setenv("TZ", m_former->c_str(), 1) : ::unsetenv("TZ");
    ::tzset();
  }
  ZoneScope(const ZoneScope&) = delete;
  ZoneScope& operator=(const ZoneScope&) = delete;

  static TimeZone zone() { return {::timezone, ::daylight != 0, ::tzname[0], ::tzname[1]}; }

 private:
  std::optional<std::string> m_former;
};

std::string contentOf(const std::filesystem::path& file) {
  std::ostringstream content;
  std::ifstream stream(file, std::ios::binary);
  if (stream) content << stream.rdbuf();
  return content.str();
}

struct timespec timeOf(double seconds) {
  const double whole = std::floor(seconds);
  return {static_cast<time_t>(whole), static_cast<long>((seconds - whole) * 1e9)};
}

}  // namespace

// That of the machine itself, else of the last one that it is like.
std::optional<std::filesystem::path> RecordedHost::fileOf(const std::string& name) const {
  for (auto directory = m_directories.rbegin(); directory != m_directories.rend(); ++directory) {
    if (std::filesystem::exists(*directory / name)) return *directory / name;
  }
  return {};
}

std::string RecordedHost::optionalFile(const std::string& name) const {
  const auto file = fileOf(name);
  return file ? contentOf(*file) : std::string();
}

void RecordedHost::addDirectories(const std::filesystem::path& directory) {
  if (!std::filesystem::is_directory(directory)) {
    throw std::runtime_error("no recorded machine: " + directory.string());
  }
  eachLine(contentOf(directory / "like"),
           [&](const std::string& other) { addDirectories(directory.parent_path() / other); });
  m_directories.push_back(directory);
  if (std::filesystem::is_directory(directory / "root")) m_tree.addDirectory(directory / "root");
  m_tree.addList(contentOf(directory / "tree.txt"));
}

RecordedHost::RecordedHost(const std::filesystem::path& directory) : m_scope(*this) {
  addDirectories(directory);
  m_cpuid = RecordedCpuid(optionalFile("cpuid.txt"));
  m_allowed = m_cpuid.processors();
  m_fileSystems = parseFlatJson(optionalFile("statvfs.json"));
  m_ethtool = parseFlatJson(optionalFile("ethtool.json"));
  m_netlink = RecordedNetlink(optionalFile("network.txt"));
  for (const auto& [interface, info] : m_netlink.driverInfos()) {
    m_ethtool[interface][std::to_string(ETHTOOL_GDRVINFO)] = info;
  }
  addFirmware(optionalFile("firmware.txt"));
  m_tree.addFacts(optionalFile("facts"));
  eachLine(optionalFile("permissions"), [this](const std::string& line) { takePermission(line); });
  takeUname(optionalFile("uname"));
  takeClocks(optionalFile("clock"));
  takeEnvironment(optionalFile("environment"));
  const ZoneScope scope(getenv("TZ") == nullptr ? "UTC0" : getenv("TZ"));
  m_zone = ZoneScope::zone();
  eachLine(optionalFile("programs.txt"), [this](const std::string& line) { takeProgram(line); });
}

void RecordedHost::addFirmware(const std::string& text) {
  if (text.empty()) return;
  const RecordedFirmware firmware = parseRecordedFirmware(text);
  m_tree.addFile("/sys/firmware/dmi/tables/smbios_entry_point", firmware.entryPoint);
  m_tree.addFile("/sys/firmware/dmi/tables/DMI", firmware.table);
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
  return fail(ENOSYS);
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
