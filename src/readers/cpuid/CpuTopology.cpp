#include "readers/cpuid/CpuTopology.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <system_error>

namespace quenlor {

namespace {

constexpr std::string_view kCpuPrefix = "cpu";

constexpr uint32_t roundedUp(uint32_t dividend, uint32_t divisor) {
  return dividend / divisor + (dividend % divisor == 0 ? 0 : 1);
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

template <class Number>
std::optional<Number> numberOf(std::string_view text) {
  Number number{};
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || rest != text.data() + text.size()) return std::nullopt;
  return number;
}

// A package of /proc/cpuinfo: what its records say, and what they amount to.
struct CpuinfoPackage {
  uint32_t cpus = 0;
  uint32_t siblings = 0;
  uint32_t announcedCores = 0;
  std::set<std::string> coreIds;
};

uint32_t coresOf(const CpuinfoPackage& package, const std::optional<PackageLayout>& layout) {
  // Core ids repeat within packages of several nodes; "cpu cores" counts them right.
  if (package.announcedCores > 0) return package.announcedCores;
  if (!package.coreIds.empty()) return static_cast<uint32_t>(package.coreIds.size());
  // 2.4 kernels tell the package and its siblings only.
  return roundedUp(package.siblings, layout ? layout->threadsPerCore : package.siblings);
}

void fillPackage(CpuTopology& topology, uint32_t offlineCpus, const PackageLayout& layout) {
  uint32_t& threads = topology.threadsPerCore;
  uint32_t& cores = topology.coresPerPackage;
  threads = std::max(threads, std::min(layout.threadsPerCore, threads + offlineCpus));
  cores = std::max(cores, std::min(layout.logicalPerPackage / threads, cores + offlineCpus));
}

}  // namespace

std::optional<uint32_t> cpuNumberOf(const std::string& directoryName) {
  const std::string_view name = directoryName;
  if (!name.starts_with(kCpuPrefix)) return std::nullopt;
  return numberOf<uint32_t>(name.substr(kCpuPrefix.size()));
}

std::optional<uint32_t> cacheSizeKiloBytes(const std::string& text) {
  std::string_view number = trimmed(text);
  if (number.empty() || (number.back() != 'K' && number.back() != 'M')) return std::nullopt;
  const uint64_t factor = number.back() == 'M' ? 1024 : 1;
  number.remove_suffix(1);
  const std::optional<uint32_t> value = numberOf<uint32_t>(number);
  if (!value || *value * factor > INT32_MAX) return std::nullopt;
  return static_cast<uint32_t>(*value * factor);
}

void takeCpuinfoLine(const char* line, std::vector<CpuinfoRecord>& records) {
  const std::string_view text = line;
  const size_t colon = text.find(':');
  if (colon == std::string_view::npos) return;
  const std::string_view key = trimmed(text.substr(0, colon));
  const std::string_view value = trimmed(text.substr(colon + 1));
  if (key == "processor") records.emplace_back();
  if (records.empty()) return;
  CpuinfoRecord& record = records.back();
  if (key == "physical id") record.physicalId = value;
  if (key == "core id") record.coreId = value;
  if (key == "siblings") record.siblings = numberOf<uint32_t>(value);
  if (key == "cpu cores") record.cores = numberOf<uint32_t>(value);
  if (key == "cpu MHz") record.mhz = numberOf<double>(value);
}

CpuTopology countPlaces(const std::vector<CpuPlace>& places) {
  std::map<std::string, std::map<std::string, uint32_t>> packages;
  CpuTopology topology;
  for (const CpuPlace& place : places) {
    const uint32_t threads = ++packages[place.package][place.core];
    topology.threadsPerCore = std::max(topology.threadsPerCore, threads);
  }
  for (const auto& [name, cores] : packages) {
    const auto count = static_cast<uint32_t>(cores.size());
    uint32_t cpus = 0;
    for (const auto& [core, threads] : cores) cpus += threads;
    topology.cpusPerPackage = std::max(topology.cpusPerPackage, cpus);
    topology.coresPerPackage = std::max(topology.coresPerPackage, count);
    topology.activeCores += count;
  }
  topology.packages = static_cast<uint32_t>(packages.size());
  topology.onlineCpus = static_cast<uint32_t>(places.size());
  return topology;
}

std::optional<CpuTopology> countCpuinfo(const std::vector<CpuinfoRecord>& records,
                                        const std::optional<PackageLayout>& layout) {
  if (records.empty()) return std::nullopt;
  std::map<std::string, CpuinfoPackage> packages;
  for (const CpuinfoRecord& record : records) {
    if (!record.physicalId) return std::nullopt;
    CpuinfoPackage& package = packages[*record.physicalId];
    ++package.cpus;
    package.siblings = std::max({package.siblings, package.cpus, record.siblings.value_or(0)});
    package.announcedCores = std::max(package.announcedCores, record.cores.value_or(0));
    if (record.coreId) package.coreIds.insert(*record.coreId);
  }
  CpuTopology topology;
  for (const auto& [id, package] : packages) {
    const uint32_t cores = coresOf(package, layout);
    topology.coresPerPackage = std::max(topology.coresPerPackage, cores);
    topology.threadsPerCore = std::max(topology.threadsPerCore, roundedUp(package.siblings, cores));
    topology.activeCores += std::min(cores, package.cpus);
    topology.cpusPerPackage = std::max(topology.cpusPerPackage, package.cpus);
  }
  topology.packages = static_cast<uint32_t>(packages.size());
  topology.onlineCpus = static_cast<uint32_t>(records.size());
  return topology;
}

CpuTopology countByLayout(const PackageLayout& layout, uint32_t onlineCpus) {
  const uint32_t threads = layout.threadsPerCore;
  return {.packages = std::max(1u, roundedUp(onlineCpus, layout.logicalPerPackage)),
          .coresPerPackage = layout.logicalPerPackage / threads,
          .threadsPerCore = threads,
          .activeCores = roundedUp(onlineCpus, threads),
          .cpusPerPackage = std::min(onlineCpus, layout.logicalPerPackage),
          .onlineCpus = onlineCpus};
}

CpuTopology withOfflineCpus(CpuTopology topology, uint32_t offlineCpus,
                            const std::optional<PackageLayout>& layout) {
  if (offlineCpus == 0 || !layout) return topology;
  if (topology.cpusPerPackage < layout->logicalPerPackage) {
    fillPackage(topology, offlineCpus, *layout);
  }
  const uint32_t logicalPerPackage = std::max(topology.cpusPerPackage, layout->logicalPerPackage);
  const uint32_t present = topology.onlineCpus + offlineCpus;
  topology.packages = std::max(topology.packages, roundedUp(present, logicalPerPackage));
  return topology;
}

}  // namespace quenlor
