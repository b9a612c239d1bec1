#include "readers/cpuid/CpuidCommand.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "host/Handles.h"
#include "host/Host.h"
#include "host/LineReader.h"
#include "readers/cpuid/CpuTopology.h"
#include "readers/cpuid/CpuidLeaves.h"

namespace quenlor {

namespace {

constexpr const char* kCpuDirectory = "/sys/devices/system/cpu";
constexpr const char* kCpuinfo = "/proc/cpuinfo";
constexpr size_t kSysLineSize = 4096;  // one page: a sysfs file is never longer
constexpr size_t kCpuinfoLineSize = 4096;

constexpr const char* kProcessor = "Processor";
constexpr const char* kCpuid = "Processor.CPUID";
constexpr const char* kL2Cache = "Processor.L2Cache";
constexpr const char* kFeatures = "Processor.Features";

constexpr int kNoCpuid = 1;

constexpr uint32_t PLAIN_LEAVES[] = {0,          1,          0x16,       0x80000001, 0x80000002,
                                     0x80000003, 0x80000004, 0x80000006, 0x80000008, 0x8000001E};
// Leaves with a list of subleaves that an empty type field ends; the bound is for a processor (or
// hypervisor) that never ends it.
struct ListLeaf {
  uint32_t leaf;
  uint32_t CpuidRegisters::*typeWord;
  uint32_t typeMask;
};
constexpr ListLeaf LIST_LEAVES[] = {{0x4, &CpuidRegisters::eax, 0x1F},
                                    {0xB, &CpuidRegisters::ecx, 0xFF00}};
constexpr uint32_t kMaxSubleaves = 16;

CpuidLeaves readCpuidLeaves() {
  CpuidLeaves leaves;
  for (const uint32_t leaf : PLAIN_LEAVES) {
    CpuidRegisters registers;
    if (host().cpuid(leaf, 0, &registers)) leaves[{leaf, 0}] = registers;
  }
  for (const ListLeaf& list : LIST_LEAVES) {
    for (uint32_t subleaf = 0; subleaf < kMaxSubleaves; ++subleaf) {
      CpuidRegisters registers;
      if (!host().cpuid(list.leaf, subleaf, &registers)) break;
      if ((registers.*list.typeWord & list.typeMask) == 0) break;
      leaves[{list.leaf, subleaf}] = registers;
    }
  }
  return leaves;
}

// First line of a small kernel file without its newline; nothing when the file cannot be read.
std::optional<std::string> readSysLine(const std::string& path) {
  const FileStream file = openFile(path.c_str());
  LineReader reader(file.get(), kSysLineSize);
  if (!reader.next()) return std::nullopt;
  reader.cutTrailingControl();
  return std::string(reader.line());
}

// First of several files that says something: the kernel renamed some of them over the years, and
// writes -1 where it does not know an id.
template <size_t count>
std::optional<std::string> readFirst(const std::string& directory,
                                     const std::array<const char*, count>& names) {
  for (const char* name : names) {
    std::optional<std::string> line = readSysLine(directory + name);
    if (line && *line != "-1") return line;
  }
  return std::nullopt;
}

std::string topologyDirectory(uint32_t cpu) {
  return std::string(kCpuDirectory) + "/cpu" + std::to_string(cpu) + "/topology/";
}

// Nothing for an offline CPU: the kernel removes its topology files.
//
// The list of a core's threads names the core: core ids repeat within packages of several nodes.
// Ids serve only on kernels before 2.6.25, which have no lists.
std::optional<CpuPlace> readPlace(uint32_t cpu) {
  const std::string directory = topologyDirectory(cpu);
  const auto package =
      readFirst<3>(directory, {"physical_package_id", "package_cpus_list", "core_siblings_list"});
  if (!package) return std::nullopt;
  const auto core = readFirst<3>(directory, {"thread_siblings_list", "core_cpus_list", "core_id"});
  if (!core) return std::nullopt;
  return CpuPlace{*package, *core};
}

struct KernelCpus {
  std::vector<CpuPlace> online;
  uint32_t offline = 0;
  std::optional<uint32_t> firstOnline;
};

// The kernel lists a directory per present CPU, whatever the affinity mask of the reader.
KernelCpus readKernelCpus() {
  KernelCpus cpus;
  std::vector<std::string> names;
  if (!host().listDirectory(kCpuDirectory, names)) return cpus;
  for (const std::string& name : names) {
    const std::optional<uint32_t> cpu = cpuNumberOf(name);
    if (!cpu) continue;
    if (std::optional<CpuPlace> place = readPlace(*cpu)) {
      cpus.online.push_back(std::move(*place));
      cpus.firstOnline = std::min(cpus.firstOnline.value_or(*cpu), *cpu);
    } else {
      ++cpus.offline;
    }
  }
  return cpus;
}

// Reads records until `enough` says so: /proc/cpuinfo of a large machine is slow to produce.
template <class Predicate>
std::vector<CpuinfoRecord> readCpuinfo(Predicate enough) {
  std::vector<CpuinfoRecord> records;
  const FileStream file = openFile(kCpuinfo);
  LineReader reader(file.get(), kCpuinfoLineSize);
  while (reader.next()) {
    takeCpuinfoLine(reader.line(), records);
    if (enough(records)) break;
  }
  return records;
}

std::optional<CpuTopology> readTopology(const KernelCpus& cpus,
                                        const std::optional<PackageLayout>& layout) {
  if (!cpus.online.empty()) {
    return withOfflineCpus(countPlaces(cpus.online), cpus.offline, layout);
  }
  const auto records = readCpuinfo([](const auto&) { return false; });
  if (std::optional<CpuTopology> counted = countCpuinfo(records, layout)) return counted;
  if (!layout && records.empty()) return std::nullopt;
  const auto cpuCount = records.empty() ? static_cast<uint32_t>(std::max(1, host().getNprocs()))
                                        : static_cast<uint32_t>(records.size());
  return countByLayout(layout.value_or(PackageLayout{}), cpuCount);
}

std::optional<uint32_t> readClockMhz(const CpuidLeaves& leaves, const std::string& brand) {
  if (const auto mhz = baseClockMhz(leaves)) return mhz;
  if (const auto mhz = brandClockMhz(brand)) return mhz;
  const auto records = readCpuinfo(
      [](const std::vector<CpuinfoRecord>& read) { return !read.empty() && read.back().mhz; });
  if (records.empty() || !records.back().mhz) return std::nullopt;
  const double mhz = *records.back().mhz;
  if (!(mhz >= 0 && mhz <= INT32_MAX)) return std::nullopt;
  return static_cast<uint32_t>(std::lround(mhz));
}

std::optional<uint32_t> readL2KiloBytes(const CpuidLeaves& leaves, uint32_t cpu) {
  if (const auto kiloBytes = l2KiloBytes(leaves)) return kiloBytes;
  const std::string caches =
      std::string(kCpuDirectory) + "/cpu" + std::to_string(cpu) + "/cache/index";
  for (unsigned index = 0;; ++index) {
    const std::string cache = caches + std::to_string(index);
    const std::optional<std::string> level = readSysLine(cache + "/level");
    if (!level) return std::nullopt;
    if (*level != "2") continue;
    return cacheSizeKiloBytes(readSysLine(cache + "/size").value_or(""));
  }
}

class ResultWriter {
 public:
  explicit ResultWriter(VtExecInfo& result) : m_result(result) {}

  void text(const char* section, const char* key, const std::string& value) {
    if (!value.empty()) m_result.values[{section, key}] = value;
  }
  void number(const char* section, const char* key, const std::optional<uint32_t>& value) {
    if (value) m_result.values[{section, key}] = std::to_string(*value);
  }

 private:
  VtExecInfo& m_result;
};

void putIdentity(ResultWriter& out, const CpuidLeaves& leaves, const std::string& brand) {
  const uint32_t signature = signatureOf(leaves);
  char hex[9];
  std::snprintf(hex, sizeof hex, "%08X", signature);
  out.text(kProcessor, "Manufacturer", makerOf(vendorOf(leaves)));
  out.text(kProcessor, "Family", familyNameOf(brand, signature));
  out.text(kProcessor, "Type", processorTypeOf(signature));
  out.text(kCpuid, "BrandString", brand);
  out.text(kCpuid, "Signature", hex);
  for (const CpuFeature& feature : featuresOf(leaves)) {
    out.number(kFeatures, feature.name, feature.present ? 1u : 0u);
  }
}

void putTopology(ResultWriter& out, const CpuTopology& topology) {
  out.number("", "PhysicalPackageCount", topology.packages);
  out.number("", "ActiveCoreCount", topology.activeCores);
  out.number(kCpuid, "CorePerPackageCount", topology.coresPerPackage);
  out.number(kCpuid, "HtPerCoreCount", topology.threadsPerCore);
}

}  // namespace

std::unique_ptr<VtExecInfo> runCpuidCommand() {
  const CpuidLeaves leaves = readCpuidLeaves();
  const KernelCpus cpus = readKernelCpus();
  const std::optional<CpuTopology> topology = readTopology(cpus, packageLayoutOf(leaves));
  if (leaves.empty() && !topology) return nullptr;

  auto result = std::make_unique<VtExecInfo>();
  result->status = leaves.empty() ? kNoCpuid : 0;
  ResultWriter out(*result);
  const std::string brand = brandOf(leaves);
  if (!leaves.empty()) putIdentity(out, leaves, brand);
  if (topology) putTopology(out, *topology);
  out.number(kProcessor, "CpuClockMHz", readClockMhz(leaves, brand));
  out.number(kL2Cache, "Size", readL2KiloBytes(leaves, cpus.firstOnline.value_or(0)));
  return result;
}

}  // namespace quenlor
