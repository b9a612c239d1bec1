// What CPUID tells of one package beyond its identity (Intel SDM volume 2 "CPUID", AMD APM volume 3
// appendix E).
#pragma once

#include <cstdint>
#include <optional>

#include "readers/cpuid/CpuidLeaves.h"

namespace quenlor {

// The leaves of the processor that the calling thread runs on.
CpuidLeaves readLeaves();

// Leaf 7: the processor has cores of several kinds.
bool isHybrid(const CpuidLeaves& leaves);
// Leaf 1A of one processor: a core of the efficient kind. Nothing where the leaf does not tell.
std::optional<bool> isEfficiencyCore(const CpuidRegisters& leaf1A);

// KiB of one data or unified cache of a level, by the list of caches (leaf 4, of AMD 8000001D),
// else by AMD's older leaf.
std::optional<uint32_t> cacheKiloBytesOfLeaves(const CpuidLeaves& leaves, uint32_t level);

// Leaf 40000010: kHz of the time stamp counter, as some hypervisors tell it. Nothing outside a
// guest.
std::optional<uint32_t> hypervisorTscKhz(const CpuidLeaves& leaves);

}  // namespace quenlor
