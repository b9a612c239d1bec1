// The processors of the machine: packages, dies, cores, threads, kinds of cores, caches and nodes,
// from /sys/devices/system/cpu and /sys/devices/system/node, CPUID and /proc/cpuinfo. Neither the
// affinity mask nor a container's share of the processors changes what is counted.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/Outcome.h"
#include "readers/cpuid/CpuidLeaves.h"
#include "readers/topology/CpuList.h"
#include "readers/topology/CpuinfoBlocks.h"

namespace quenlor {

// What a core is in a processor with cores of several kinds; low-power cores count as efficiency.
enum class CoreKind : uint8_t { kUniform, kPerformance, kEfficiency };

enum class CacheType : uint8_t { kData, kInstruction, kUnified };

// One cache.
struct CpuCache {
  uint32_t level = 0;
  CacheType type = CacheType::kUnified;
  uint32_t kiloBytes = 0;  // KiB
  std::optional<uint32_t> ways;
  std::optional<uint32_t> lineBytes;
  uint32_t sharedBy = 0;  // online processors
  CoreKind kind = CoreKind::kUniform;
};

struct CpuCore {
  uint32_t firstCpu = 0;
  uint32_t threads = 0;  // online ones
  CoreKind kind = CoreKind::kUniform;
  CpuList cpus{};  // the same processors; empty without /sys
};

// A package with at least one online processor.
struct CpuPackage {
  std::optional<uint32_t> id;  // the kernel's number of it
  CpuList cpus;                // online
  std::vector<CpuCore> cores;  // with at least one online processor
  std::optional<uint32_t> dies, clusters;
  std::vector<CpuCache> caches;
  std::optional<uint32_t> nodes;            // NUMA nodes that its processors belong to
  std::optional<uint32_t> baseKhz;          // base_frequency of a performance core
  std::optional<uint32_t> nominalMhz;       // of the firmware's performance table
  std::optional<uint32_t> maxKhz;           // the highest of its cores
  std::optional<std::string> serialNumber;  // PPIN, hexadecimal; root only
  std::optional<std::string> microcode;     // "0x2b000590"
  CpuidLeaves leaves;                       // of a processor in it; empty where none may be asked
  std::optional<CpuinfoBlock> cpuinfo;      // of a processor in it
};

struct CpuInventory {
  std::vector<CpuPackage> packages;  // in the order of their first processors
  uint32_t online = 0;
  uint32_t offline = 0;  // present, but without a place that the kernel knows
  Outcome outcome;

  // Threads of a package, offline ones included; nothing where it is not known whose they are.
  std::optional<uint32_t> threadsOf(const CpuPackage& package) const;
};

// Reads each file once. Runs on other processors for moments; the affinity mask is put back.
CpuInventory readCpus();

uint32_t mostThreadsOfACore(const CpuPackage& package);
// Nothing for a package whose cores are all of one kind.
std::optional<uint32_t> coresOfKind(const CpuPackage& package, CoreKind kind);

// Caches of one level, type and size in the whole machine. What differs among them is absent.
struct CacheSummary {
  uint32_t level = 0;
  CacheType type = CacheType::kUnified;
  uint32_t kiloBytes = 0;
  uint32_t count = 0;
  std::optional<uint32_t> ways, lineBytes, sharedBy;
};

// By level, then data, instruction, unified, then size.
std::vector<CacheSummary> summarizeCaches(const CpuInventory& inventory);

// KiB of all caches of a level and type in the package; nothing when none is known.
std::optional<uint32_t> sumOfCaches(const CpuPackage& package, uint32_t level, CacheType type);
// KiB of one data or unified cache of a level, by /sys, else by CPUID: the largest that performance
// cores have, for efficiency cores share theirs.
std::optional<uint32_t> largestCache(const CpuPackage& package, uint32_t level);

}  // namespace quenlor
