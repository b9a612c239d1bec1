// What a container's control groups let it use: kernel Documentation/admin-guide/cgroup-v2.rst and
// cgroup-v1. Outside a container these are the limits of the scanner's own service.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace quenlor {

struct CgroupLimits {
  std::optional<double> cpus;  // processors' worth of time
  std::optional<uint64_t> memoryBytes;
};

// The tightest limits of the group and all groups above it that can be seen. `cgroups` is the text
// of /proc/self/cgroup.
CgroupLimits readCgroupLimits(const std::string& cgroups);

// "max 100000" or "quota period" in microseconds, as processors; nothing without a limit.
std::optional<double> parseCpuMax(std::string_view text);
// "max" or bytes; nothing without a limit, which version 1 writes as a number beyond all memory.
std::optional<uint64_t> parseMemoryMax(std::string_view text);
// Path of a group in version 2 (controller "") or of one controller in version 1; nothing when the
// text has none. One that leads out of the namespace is its root.
std::optional<std::string> cgroupPath(const std::string& cgroups, const std::string& controller);
// The path itself and all above it, "/a/b" as {"/a/b", "/a", ""}; at most 64.
std::vector<std::string> withParents(const std::string& path);

}  // namespace quenlor
