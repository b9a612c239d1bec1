// Packages, cores and threads of a machine, counted from what the kernel and the processor tell.
// Pure: texts and numbers in, counts out.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "readers/cpuid/CpuidLeaves.h"

namespace quenlor {

struct CpuTopology {
  uint32_t packages = 0;
  uint32_t coresPerPackage = 0;  // of the largest package
  uint32_t threadsPerCore = 0;   // of the largest core
  uint32_t activeCores = 0;      // cores with at least one online CPU, whole machine
  uint32_t cpusPerPackage = 0;   // online ones of the largest package
  uint32_t onlineCpus = 0;
};

// Where one online CPU sits. CPUs with equal texts share the package, or the core within it.
struct CpuPlace {
  std::string package;
  std::string core;
};

// One "processor" record of /proc/cpuinfo; what the kernel does not print is absent.
struct CpuinfoRecord {
  std::optional<std::string> physicalId;
  std::optional<std::string> coreId;
  std::optional<uint32_t> siblings;  // online CPUs of this package
  std::optional<uint32_t> cores;     // cores of this package, "cpu cores"
  std::optional<double> mhz;
};

// Number of a directory name "cpu12"; nothing for any other name ("cpufreq", "cpu", "cpu1x").
std::optional<uint32_t> cpuNumberOf(const std::string& directoryName);
// Kilobytes of a cache size file, "2048K" or "4M"; nothing when it is none.
std::optional<uint32_t> cacheSizeKiloBytes(const std::string& text);
// Adds one line of /proc/cpuinfo to the records; a "processor" line begins the next record.
void takeCpuinfoLine(const char* line, std::vector<CpuinfoRecord>& records);

CpuTopology countPlaces(const std::vector<CpuPlace>& places);
// Nothing when a record lacks its package: kernels print it only where they know a topology.
std::optional<CpuTopology> countCpuinfo(const std::vector<CpuinfoRecord>& records,
                                        const std::optional<PackageLayout>& layout);
// Without any topology from the kernel: CPUs spread over packages of the layout's size.
CpuTopology countByLayout(const PackageLayout& layout, uint32_t onlineCpus);
// Adds what offline CPUs hide: the kernel knows no place for them, so the processor's own layout
// fills in, but never more than the number of offline CPUs can account for. Where a whole package
// is online, its cores and threads are as counted.
CpuTopology withOfflineCpus(CpuTopology topology, uint32_t offlineCpus,
                            const std::optional<PackageLayout>& layout);

}  // namespace quenlor
