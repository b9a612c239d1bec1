#include "readers/topology/SysfsCpus.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <system_error>

#include "base/Text.h"
#include "host/Host.h"
#include "host/WholeFile.h"
#include "readers/cpuid/CpuTopology.h"

namespace quenlor {
namespace {

const std::string kCpuDirectory = "/sys/devices/system/cpu";
const std::string kNodeDirectory = "/sys/devices/system/node";

// Kernels before 5.3 have the second names, those before 2.6.25 no lists but maps.
struct ListNames {
  const char* list;
  const char* oldList;
  const char* map;
};
constexpr ListNames kPackageLists = {"topology/package_cpus_list", "topology/core_siblings_list",
                                     "topology/core_siblings"};
constexpr ListNames kCoreLists = {"topology/core_cpus_list", "topology/thread_siblings_list",
                                  "topology/thread_siblings"};

std::optional<uint32_t> wholeNumber(std::string_view text) {
  uint32_t number = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return number;
}

std::optional<CpuList> listOf(uint32_t cpu, const ListNames& names) {
  for (const char* name : {names.list, names.oldList}) {
    if (std::optional<CpuList> list = cpuListAttribute(cpu, name)) return list;
  }
  const std::optional<std::string> map = cpuAttribute(cpu, names.map);
  return map ? parseCpuMap(*map) : std::nullopt;
}

// Number of a directory name such as "node12".
std::optional<uint32_t> numberBehind(std::string_view prefix, const std::string& name) {
  if (!std::string_view(name).starts_with(prefix)) return std::nullopt;
  return wholeNumber(std::string_view(name).substr(prefix.size()));
}

CpuList readNumbered(const std::string& directory, std::string_view prefix) {
  std::vector<DirectoryEntry> entries;
  CpuList numbers;
  if (!host().listEntries(directory.c_str(), entries)) return numbers;
  for (const DirectoryEntry& entry : entries) {
    const std::optional<uint32_t> number = numberBehind(prefix, entry.name);
    if (number && *number <= kLargestCpuNumber) numbers.push_back(*number);
  }
  std::sort(numbers.begin(), numbers.end());
  return numbers;
}

std::vector<CpuCore> readCores(const CpuList& cpus, const CoreKinds& kinds) {
  const CpuPartition cores =
      partitionCpus(cpus, [](uint32_t cpu) { return listOf(cpu, kCoreLists); });
  std::vector<CpuCore> result;
  for (const CpuList& core : cores.groups) {
    result.push_back({core[0], static_cast<uint32_t>(core.size()), kinds.of(core[0]), core});
  }
  for (const uint32_t cpu : cores.unknown) result.push_back({cpu, 1, kinds.of(cpu), {cpu}});
  return result;
}

std::optional<uint32_t> countLists(const CpuList& cpus, const char* name) {
  const CpuPartition parts =
      partitionCpus(cpus, [name](uint32_t cpu) { return cpuListAttribute(cpu, name); });
  if (!parts.unknown.empty() || parts.groups.empty()) return std::nullopt;
  return static_cast<uint32_t>(parts.groups.size());
}

// The core that speaks for a package: cores of the efficient kind are slower.
const CpuCore& leadingCore(const CpuPackage& package) {
  const auto found =
      std::find_if(package.cores.begin(), package.cores.end(),
                   [](const CpuCore& core) { return core.kind != CoreKind::kEfficiency; });
  return found == package.cores.end() ? package.cores.front() : *found;
}

CpuPackage readPackage(CpuList cpus, const CoreKinds& kinds) {
  CpuPackage package;
  package.cpus = std::move(cpus);
  const uint32_t first = package.cpus[0];
  package.id = cpuNumberAttribute(first, "topology/physical_package_id");
  package.dies = countLists(package.cpus, "topology/die_cpus_list");
  package.clusters = countLists(package.cpus, "topology/cluster_cpus_list");
  package.cores = readCores(package.cpus, kinds);
  package.serialNumber = cpuAttribute(first, "topology/ppin");
  return package;
}

bool shareAny(const CpuList& left, const CpuList& right) {
  CpuList common;
  std::set_intersection(left.begin(), left.end(), right.begin(), right.end(),
                        std::back_inserter(common));
  return !common.empty();
}

void readNodes(std::vector<CpuPackage>& packages) {
  for (const uint32_t node : readNumbered(kNodeDirectory, "node")) {
    const auto text = readAttribute(kNodeDirectory + "/node" + std::to_string(node) + "/cpulist");
    const std::optional<CpuList> cpus = text ? parseCpuList(*text) : std::nullopt;
    if (!cpus) continue;
    for (CpuPackage& package : packages) {
      if (shareAny(package.cpus, *cpus)) package.nodes = package.nodes.value_or(0) + 1;
    }
  }
}

CpuList readKind(const char* name) {
  const auto text = readAttribute(std::string("/sys/devices/") + name + "/cpus");
  return text ? parseCpuList(*text).value_or(CpuList{}) : CpuList{};
}

}  // namespace

std::optional<std::string> cpuAttribute(uint32_t cpu, const std::string& name) {
  return readAttribute(kCpuDirectory + "/cpu" + std::to_string(cpu) + "/" + name);
}

std::optional<uint32_t> cpuNumberAttribute(uint32_t cpu, const std::string& name) {
  const std::optional<std::string> text = cpuAttribute(cpu, name);
  return text ? wholeNumber(*text) : std::nullopt;
}

std::optional<CpuList> cpuListAttribute(uint32_t cpu, const std::string& name) {
  const std::optional<std::string> text = cpuAttribute(cpu, name);
  return text ? parseCpuList(*text) : std::nullopt;
}

// Cores of one package may reach different speeds; a package without the first core's file has no
// such directory at all, as in most guests.
void readSysfsSpeeds(CpuPackage& package) {
  const uint32_t leader = leadingCore(package).firstCpu;
  package.nominalMhz = cpuNumberAttribute(leader, "acpi_cppc/nominal_freq");
  package.maxKhz = cpuNumberAttribute(leader, "cpufreq/cpuinfo_max_freq");
  if (!package.maxKhz) return;
  package.baseKhz = cpuNumberAttribute(leader, "cpufreq/base_frequency");
  for (const CpuCore& core : package.cores) {
    if (core.firstCpu == leader) continue;
    const auto khz = cpuNumberAttribute(core.firstCpu, "cpufreq/cpuinfo_max_freq");
    package.maxKhz = std::max(*package.maxKhz, khz.value_or(0));
  }
}

CpuPartition partitionCpus(const CpuList& cpus,
                           const std::function<std::optional<CpuList>(uint32_t cpu)>& listOf) {
  CpuPartition parts;
  if (cpus.empty()) return parts;
  std::vector<bool> isLeft(cpus.back() + size_t{1});
  for (const uint32_t cpu : cpus) isLeft[cpu] = true;
  for (const uint32_t cpu : cpus) {
    if (!isLeft[cpu]) continue;
    isLeft[cpu] = false;
    const std::optional<CpuList> list = listOf(cpu);
    if (!list) {
      parts.unknown.push_back(cpu);
      continue;
    }
    CpuList group{cpu};
    for (const uint32_t other : *list) {
      if (other >= isLeft.size() || !isLeft[other]) continue;
      isLeft[other] = false;
      group.push_back(other);
    }
    parts.groups.push_back(std::move(group));
  }
  return parts;
}

CoreKind CoreKinds::of(uint32_t cpu) const {
  if (performance.empty() || efficiency.empty()) return CoreKind::kUniform;
  const bool isFast = std::binary_search(performance.begin(), performance.end(), cpu);
  return isFast ? CoreKind::kPerformance : CoreKind::kEfficiency;
}

CoreKinds readCoreKinds() {
  CoreKinds kinds{readKind("cpu_core"), {}};
  if (kinds.performance.empty()) return kinds;
  for (const char* name : {"cpu_atom", "cpu_lowpower"}) {
    const CpuList cpus = readKind(name);
    kinds.efficiency.insert(kinds.efficiency.end(), cpus.begin(), cpus.end());
  }
  return kinds;
}

std::optional<SysfsCpus> readSysfsCpus() {
  SysfsCpus cpus;
  cpus.present = readNumbered(kCpuDirectory, "cpu");
  CpuPartition packages =
      partitionCpus(cpus.present, [](uint32_t cpu) { return listOf(cpu, kPackageLists); });
  if (packages.groups.empty()) return std::nullopt;
  cpus.offline = std::move(packages.unknown);
  const CoreKinds kinds = readCoreKinds();
  for (CpuList& group : packages.groups) {
    std::sort(group.begin(), group.end());
    cpus.packages.push_back(readPackage(std::move(group), kinds));
  }
  readNodes(cpus.packages);
  return cpus;
}

}  // namespace quenlor
