// Pure decoding of CPUID leaves (Intel SDM volume 2 "CPUID", AMD APM volume 3 appendix E). Nothing
// here executes the instruction: the leaves are read by the "cpuid" command and handed in.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/Host.h"

namespace quenlor {

// The leaves of one processor by (leaf, subleaf); those it does not have are missing.
using CpuidLeaves = std::map<std::pair<uint32_t, uint32_t>, CpuidRegisters>;

// How many CPUs one package holds, as the processor itself announces it.
struct PackageLayout {
  uint32_t logicalPerPackage = 1;
  uint32_t threadsPerCore = 1;
};

// One feature bit of the processor.
struct CpuFeature {
  const char* name;
  bool present;
};

std::string vendorOf(const CpuidLeaves& leaves);  // leaf 0: "GenuineIntel"; empty when missing
std::string makerOf(const std::string& vendor);   // "Intel"; the vendor text when it is not known
std::string brandOf(const CpuidLeaves& leaves);  // leaves 0x80000002-4, trimmed; empty when missing
uint32_t signatureOf(const CpuidLeaves& leaves);  // leaf 1 EAX; 0 when missing
uint32_t familyNumberOf(uint32_t signature);      // base and extended family together
const char* processorTypeOf(uint32_t signature);  // text of bits 12 and 13
// Product family that the brand names, else "Family n".
std::string familyNameOf(const std::string& brand, uint32_t signature);
// Number before the last MHz, GHz or THz of the brand, in MHz; nothing when it has none.
std::optional<uint32_t> brandClockMhz(const std::string& brand);
std::optional<uint32_t> baseClockMhz(
    const CpuidLeaves& leaves);  // leaf 0x16; nothing when it says 0
std::optional<uint32_t> l2KiloBytes(const CpuidLeaves& leaves);  // leaf 4, else 0x80000006
std::vector<CpuFeature> featuresOf(const CpuidLeaves& leaves);   // empty without leaf 1
// Leaf 0xB, else AMD's 0x80000008 and 0x8000001E, else leaves 4 and 1 (upper bounds). Nothing when
// none is there; always at least one thread per core and never more threads than logical CPUs.
std::optional<PackageLayout> packageLayoutOf(const CpuidLeaves& leaves);

}  // namespace quenlor
