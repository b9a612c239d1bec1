#include "readers/guest/CgroupLimits.h"

#include <algorithm>
#include <charconv>
#include <sstream>
#include <system_error>

#include "base/Text.h"
#include "host/WholeFile.h"

namespace quenlor {
namespace {

const std::string kMount = "/sys/fs/cgroup";
constexpr uint64_t kNoMemoryLimit = uint64_t{1} << 62;  // version 1 writes LONG_MAX, page-aligned
constexpr size_t kMostParents = 64;

std::optional<uint64_t> wholeNumber(std::string_view text) {
  uint64_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<double> share(std::string_view quota, std::string_view period) {
  const std::optional<uint64_t> time = wholeNumber(quota);  // "max" and -1 are no numbers
  const std::optional<uint64_t> of = wholeNumber(period);
  if (!time || !of || *time == 0 || *of == 0) return std::nullopt;
  return static_cast<double>(*time) / static_cast<double>(*of);
}

template <class Number>
void tighten(std::optional<Number>& limit, std::optional<Number> other) {
  if (other && (!limit || *other < *limit)) limit = other;
}

// A file of a group, in version 1 below the directory of its controller.
std::string groupValue(const char* controller, const std::string& group, const char* file) {
  std::string path = kMount;
  path.append(controller).append(group).append(file);
  return readAttribute(path).value_or("");
}

bool hasController(const std::string& controllers, const std::string& controller) {
  std::istringstream stream(controllers);
  for (std::string name; std::getline(stream, name, ',');) {
    if (name == controller) return true;
  }
  return false;
}

void readVersion2(const std::string& path, CgroupLimits& limits) {
  for (const std::string& group : withParents(path)) {
    tighten(limits.cpus, parseCpuMax(groupValue("", group, "/cpu.max")));
    tighten(limits.memoryBytes, parseMemoryMax(groupValue("", group, "/memory.max")));
  }
}

void readVersion1(const std::string& cgroups, CgroupLimits& limits) {
  const auto cpu = cgroupPath(cgroups, "cpu");
  for (const std::string& group : cpu ? withParents(*cpu) : std::vector<std::string>{}) {
    const std::string quota = groupValue("/cpu", group, "/cpu.cfs_quota_us");
    if (quota.empty() || quota == "-1") continue;
    tighten(limits.cpus, share(quota, groupValue("/cpu", group, "/cpu.cfs_period_us")));
  }
  const auto memory = cgroupPath(cgroups, "memory");
  for (const std::string& group : memory ? withParents(*memory) : std::vector<std::string>{}) {
    tighten(limits.memoryBytes,
            parseMemoryMax(groupValue("/memory", group, "/memory.limit_in_bytes")));
  }
}

}  // namespace

std::optional<double> parseCpuMax(std::string_view text) {
  const std::string_view line = trimmed(text);
  const size_t blank = line.find(' ');
  if (blank == std::string_view::npos) return std::nullopt;
  return share(line.substr(0, blank), line.substr(blank + 1));
}

std::optional<uint64_t> parseMemoryMax(std::string_view text) {
  const std::optional<uint64_t> bytes = wholeNumber(trimmed(text));
  if (!bytes || *bytes >= kNoMemoryLimit) return std::nullopt;
  return bytes;
}

std::optional<std::string> cgroupPath(const std::string& cgroups, const std::string& controller) {
  std::istringstream stream(cgroups);
  for (std::string line; std::getline(stream, line);) {
    const size_t first = line.find(':');
    const size_t second = line.find(':', first + 1);
    if (first == std::string::npos || second == std::string::npos) continue;
    const std::string controllers = line.substr(first + 1, second - first - 1);
    const bool isMeant =
        controller.empty() ? controllers.empty() : hasController(controllers, controller);
    if (!isMeant) continue;
    const std::string path = line.substr(second + 1);
    return path.find("/..") == std::string::npos ? path : "/";
  }
  return std::nullopt;
}

std::vector<std::string> withParents(const std::string& path) {
  std::vector<std::string> groups;
  std::string group = path;
  while (!group.empty() && group.back() == '/') group.pop_back();
  while (!group.empty() && groups.size() + 1 < kMostParents) {
    groups.push_back(group);
    const size_t slash = group.rfind('/');
    group.resize(slash == std::string::npos ? 0 : slash);
  }
  groups.emplace_back();
  return groups;
}

CgroupLimits readCgroupLimits(const std::string& cgroups) {
  CgroupLimits limits;
  if (const auto path = cgroupPath(cgroups, "")) readVersion2(*path, limits);
  readVersion1(cgroups, limits);
  return limits;
}

}  // namespace quenlor
