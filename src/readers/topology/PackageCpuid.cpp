#include "readers/topology/PackageCpuid.h"

#include <algorithm>
#include <limits>

namespace quenlor {
namespace {

constexpr uint32_t kBasicLeaf = 1;
constexpr uint32_t kCacheLeaf = 4;
constexpr uint32_t kFeatureLeaf = 7;
constexpr uint32_t kTopologyLeaf = 0xB;
constexpr uint32_t kHypervisorLeaf = 0x40000000;
constexpr uint32_t kHypervisorClockLeaf = 0x40000010;
constexpr uint32_t kAmdCacheSizeLeaf = 0x80000006;
constexpr uint32_t kAmdCacheLeaf = 0x8000001D;

constexpr uint32_t PLAIN_LEAVES[] = {0,          kBasicLeaf, kFeatureLeaf, 0x16,
                                     0x80000001, 0x80000002, 0x80000003,   0x80000004,
                                     0x80000006, 0x80000008, 0x8000001E};

// Leaves with a list of subleaves that an empty type field ends.
struct ListLeaf {
  uint32_t leaf;
  uint32_t CpuidRegisters::*typeWord;
  uint32_t typeMask;
};
constexpr ListLeaf LIST_LEAVES[] = {{kCacheLeaf, &CpuidRegisters::eax, 0x1F},
                                    {kTopologyLeaf, &CpuidRegisters::ecx, 0xFF00},
                                    {kAmdCacheLeaf, &CpuidRegisters::eax, 0x1F}};
// For a processor, or hypervisor, that never ends a list.
constexpr uint32_t kMostSubleaves = 16;

constexpr uint32_t kEfficientCore = 0x20;
constexpr uint32_t kFastCore = 0x40;

constexpr uint32_t bits(uint32_t word, unsigned low, unsigned count) {
  return (word >> low) & ((1u << count) - 1u);
}

const CpuidRegisters* find(const CpuidLeaves& leaves, uint32_t leaf, uint32_t subleaf = 0) {
  const auto found = leaves.find({leaf, subleaf});
  return found == leaves.end() ? nullptr : &found->second;
}

bool isGuest(const CpuidLeaves& leaves) {
  const CpuidRegisters* basic = find(leaves, kBasicLeaf);
  return basic != nullptr && bits(basic->ecx, 31, 1) != 0;
}

void readList(const ListLeaf& list, CpuidLeaves& leaves) {
  for (uint32_t subleaf = 0; subleaf < kMostSubleaves; ++subleaf) {
    CpuidRegisters registers;
    if (!host().cpuid(list.leaf, subleaf, &registers)) return;
    if ((registers.*list.typeWord & list.typeMask) == 0) return;
    leaves[{list.leaf, subleaf}] = registers;
  }
}

// Only in a guest: elsewhere these leaves answer with what another leaf last said.
void readHypervisorClock(CpuidLeaves& leaves) {
  CpuidRegisters range;
  CpuidRegisters clock;
  if (!isGuest(leaves) || !host().cpuid(kHypervisorLeaf, 0, &range)) return;
  if (range.eax < kHypervisorClockLeaf || range.eax > kHypervisorLeaf + 0xFF) return;
  if (host().cpuid(kHypervisorClockLeaf, 0, &clock)) leaves[{kHypervisorClockLeaf, 0}] = clock;
}

// Deterministic cache parameters: every field holds its value minus one.
uint32_t kiloBytesOf(const CpuidRegisters& cache) {
  const uint64_t ways = bits(cache.ebx, 22, 10) + 1u;
  const uint64_t partitions = bits(cache.ebx, 12, 10) + 1u;
  const uint64_t lineBytes = bits(cache.ebx, 0, 12) + 1u;
  const uint64_t sets = uint64_t{std::min(cache.ecx, uint32_t{INT32_MAX})} + 1u;
  const uint64_t kiloBytes = ways * partitions * lineBytes * sets / 1024;
  return static_cast<uint32_t>(std::min<uint64_t>(kiloBytes, INT32_MAX));
}

std::optional<uint32_t> sizeInList(const CpuidLeaves& leaves, uint32_t leaf, uint32_t level) {
  constexpr uint32_t kInstruction = 2;
  for (uint32_t index = 0; const CpuidRegisters* cache = find(leaves, leaf, index); ++index) {
    const bool isData = bits(cache->eax, 0, 5) != kInstruction;
    if (isData && bits(cache->eax, 5, 3) == level) return kiloBytesOf(*cache);
  }
  return std::nullopt;
}

std::optional<uint32_t> notZero(uint32_t number) {
  if (number == 0) return std::nullopt;
  return number;
}

}  // namespace

CpuidLeaves readLeaves() {
  CpuidLeaves leaves;
  for (const uint32_t leaf : PLAIN_LEAVES) {
    CpuidRegisters registers;
    if (host().cpuid(leaf, 0, &registers)) leaves[{leaf, 0}] = registers;
  }
  for (const ListLeaf& list : LIST_LEAVES) readList(list, leaves);
  readHypervisorClock(leaves);
  return leaves;
}

bool isHybrid(const CpuidLeaves& leaves) {
  const CpuidRegisters* features = find(leaves, kFeatureLeaf);
  return features != nullptr && bits(features->edx, 15, 1) != 0;
}

std::optional<bool> isEfficiencyCore(const CpuidRegisters& leaf1A) {
  const uint32_t kind = bits(leaf1A.eax, 24, 8);
  if (kind != kEfficientCore && kind != kFastCore) return std::nullopt;
  return kind == kEfficientCore;
}

std::optional<uint32_t> cacheKiloBytesOfLeaves(const CpuidLeaves& leaves, uint32_t level) {
  for (const uint32_t leaf : {kCacheLeaf, kAmdCacheLeaf}) {
    if (const auto size = sizeInList(leaves, leaf, level)) return size;
  }
  constexpr uint32_t kThirdLevelUnit = 512;  // KiB
  const CpuidRegisters* amd = find(leaves, kAmdCacheSizeLeaf);
  if (amd == nullptr) return std::nullopt;
  if (level == 2) return notZero(bits(amd->ecx, 16, 16));
  return level == 3 ? notZero(bits(amd->edx, 18, 14) * kThirdLevelUnit) : std::nullopt;
}

std::optional<uint32_t> hypervisorTscKhz(const CpuidLeaves& leaves) {
  const CpuidRegisters* clock = find(leaves, kHypervisorClockLeaf);
  return clock == nullptr || !isGuest(leaves) ? std::nullopt : notZero(clock->eax);
}

}  // namespace quenlor
