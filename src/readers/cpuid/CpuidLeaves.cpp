#include "readers/cpuid/CpuidLeaves.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstring>
#include <system_error>

namespace quenlor {

namespace {

constexpr uint32_t kVendorLeaf = 0;
constexpr uint32_t kSignatureLeaf = 1;
constexpr uint32_t kCacheLeaf = 4;
constexpr uint32_t kTopologyLeaf = 0xB;
constexpr uint32_t kFrequencyLeaf = 0x16;
constexpr uint32_t kExtendedFeatureLeaf = 0x80000001;
constexpr uint32_t kFirstBrandLeaf = 0x80000002;
constexpr uint32_t kLastBrandLeaf = 0x80000004;
constexpr uint32_t kAmdCacheLeaf = 0x80000006;
constexpr uint32_t kAmdCoreCountLeaf = 0x80000008;
constexpr uint32_t kAmdTopologyLeaf = 0x8000001E;

constexpr uint32_t kCacheTypeData = 1;
constexpr uint32_t kCacheTypeUnified = 3;
constexpr uint32_t kThreadLevel = 1;
constexpr uint32_t kHyperThreadingBit = 28;
// Before this family the "threads" of leaf 0x8000001E are the cores of a compute unit.
constexpr uint32_t kFirstAmdFamilyWithThreads = 0x17;

struct Named {
  const char* text;
  const char* name;
};

constexpr Named MAKERS[] = {
    {"GenuineIntel", "Intel"},     {"AuthenticAMD", "AMD"},   {"AMDisbetter!", "AMD"},
    {"HygonGenuine", "Hygon"},     {"CentaurHauls", "VIA"},   {"VIA VIA VIA ", "VIA"},
    {"  Shanghai  ", "Zhaoxin"},   {"CyrixInstead", "Cyrix"}, {"GenuineTMx86", "Transmeta"},
    {"TransmetaCPU", "Transmeta"}, {"Geode by NSC", "NSC"},   {"NexGenDriven", "NexGen"},
    {"RiseRiseRise", "Rise"},      {"SiS SiS SiS ", "SiS"},   {"UMC UMC UMC ", "UMC"},
};

// The first text found in the brand names the family. "Core" comes last and never alone: a
// "Dual-Core AMD Opteron(tm)" is no Core.
constexpr Named FAMILIES[] = {
    {"Xeon", "Xeon"},     {"Celeron", "Celeron"}, {"Pentium", "Pentium"},
    {"Atom", "Atom"},     {"EPYC", "EPYC"},       {"Threadripper", "Ryzen Threadripper"},
    {"Ryzen", "Ryzen"},   {"Opteron", "Opteron"}, {"Phenom", "Phenom"},
    {"Athlon", "Athlon"}, {"Sempron", "Sempron"}, {"Turion", "Turion"},
    {"Core(TM)", "Core"}, {"Intel Core", "Core"},
};

constexpr const char* PROCESSOR_TYPES[] = {"Original OEM Processor", "OverDrive Processor",
                                           "Dual Processor", "Reserved"};

struct FeatureBit {
  const char* name;
  uint32_t CpuidRegisters::*word;
  uint32_t leaf;
  uint32_t bit;
};

constexpr FeatureBit FEATURES[] = {
    {"FPU", &CpuidRegisters::edx, kSignatureLeaf, 0},
    {"PSE", &CpuidRegisters::edx, kSignatureLeaf, 3},
    {"TSC", &CpuidRegisters::edx, kSignatureLeaf, 4},
    {"MSR", &CpuidRegisters::edx, kSignatureLeaf, 5},
    {"PAE", &CpuidRegisters::edx, kSignatureLeaf, 6},
    {"CX8", &CpuidRegisters::edx, kSignatureLeaf, 8},
    {"APIC", &CpuidRegisters::edx, kSignatureLeaf, 9},
    {"CMOV", &CpuidRegisters::edx, kSignatureLeaf, 15},
    {"MMX", &CpuidRegisters::edx, kSignatureLeaf, 23},
    {"FXSR", &CpuidRegisters::edx, kSignatureLeaf, 24},
    {"SSE", &CpuidRegisters::edx, kSignatureLeaf, 25},
    {"SSE2", &CpuidRegisters::edx, kSignatureLeaf, 26},
    {"HTT", &CpuidRegisters::edx, kSignatureLeaf, kHyperThreadingBit},
    {"SSE3", &CpuidRegisters::ecx, kSignatureLeaf, 0},
    {"VMX", &CpuidRegisters::ecx, kSignatureLeaf, 5},
    {"SSSE3", &CpuidRegisters::ecx, kSignatureLeaf, 9},
    {"SSE41", &CpuidRegisters::ecx, kSignatureLeaf, 19},
    {"SSE42", &CpuidRegisters::ecx, kSignatureLeaf, 20},
    {"AES", &CpuidRegisters::ecx, kSignatureLeaf, 25},
    {"AVX", &CpuidRegisters::ecx, kSignatureLeaf, 28},
    {"HYPERVISOR", &CpuidRegisters::ecx, kSignatureLeaf, 31},
    {"SVM", &CpuidRegisters::ecx, kExtendedFeatureLeaf, 2},
    {"NX", &CpuidRegisters::edx, kExtendedFeatureLeaf, 20},
    {"LM", &CpuidRegisters::edx, kExtendedFeatureLeaf, 29},
};
constexpr FeatureBit kIntel64 = {"IEM64T", &CpuidRegisters::edx, kExtendedFeatureLeaf, 29};

const CpuidRegisters* find(const CpuidLeaves& leaves, uint32_t leaf, uint32_t subleaf = 0) {
  const auto found = leaves.find({leaf, subleaf});
  return found == leaves.end() ? nullptr : &found->second;
}

constexpr uint32_t bits(uint32_t word, unsigned low, unsigned count) {
  return (word >> low) & ((1u << count) - 1u);
}

void appendWord(std::string& text, uint32_t word) {
  char characters[sizeof word];
  std::memcpy(characters, &word, sizeof word);
  text.append(characters, sizeof word);
}

std::string upToZero(const std::string& text) { return text.substr(0, text.find('\0')); }

std::string trimmed(const std::string& text) {
  const size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

bool isAmd(const std::string& vendor) {
  return vendor == "AuthenticAMD" || vendor == "HygonGenuine";
}

bool hasFeature(const CpuidLeaves& leaves, const FeatureBit& feature) {
  const CpuidRegisters* registers = find(leaves, feature.leaf);
  return registers != nullptr && bits(registers->*feature.word, feature.bit, 1) != 0;
}

// Deterministic cache parameters: every field holds its value minus one.
uint32_t cacheKiloBytes(const CpuidRegisters& cache) {
  const uint64_t ways = bits(cache.ebx, 22, 10) + 1u;
  const uint64_t partitions = bits(cache.ebx, 12, 10) + 1u;
  const uint64_t lineSize = bits(cache.ebx, 0, 12) + 1u;
  const uint64_t sets = std::min(cache.ecx, uint32_t{INT32_MAX}) + 1u;  // the product fits 64 bits
  const uint64_t kiloBytes = ways * partitions * lineSize * sets / 1024;
  return static_cast<uint32_t>(std::min<uint64_t>(kiloBytes, INT32_MAX));
}

bool isLevel2(const CpuidRegisters& cache) {
  const uint32_t type = bits(cache.eax, 0, 5);
  return bits(cache.eax, 5, 3) == 2 && (type == kCacheTypeData || type == kCacheTypeUnified);
}

// A level's EBX counts the logical CPUs of everything below it, as the firmware enabled them; the
// last level listed is therefore the package.
std::optional<PackageLayout> layoutOfTopologyLeaf(const CpuidLeaves& leaves) {
  PackageLayout layout{0, 1};
  for (uint32_t level = 0; const CpuidRegisters* entry = find(leaves, kTopologyLeaf, level);
       ++level) {
    const uint32_t levelType = bits(entry->ecx, 8, 8);
    const uint32_t logical = bits(entry->ebx, 0, 16);
    if (levelType == 0 || logical == 0) break;
    if (levelType == kThreadLevel) layout.threadsPerCore = logical;
    layout.logicalPerPackage = logical;
  }
  if (layout.logicalPerPackage == 0) return std::nullopt;
  return layout;
}

std::optional<PackageLayout> layoutOfAmdLeaves(const CpuidLeaves& leaves) {
  const CpuidRegisters* counts = find(leaves, kAmdCoreCountLeaf);
  if (counts == nullptr) return std::nullopt;
  PackageLayout layout{bits(counts->ecx, 0, 8) + 1u, 1};
  const CpuidRegisters* topology = find(leaves, kAmdTopologyLeaf);
  if (topology != nullptr && familyNumberOf(signatureOf(leaves)) >= kFirstAmdFamilyWithThreads) {
    layout.threadsPerCore = bits(topology->ebx, 8, 8) + 1u;
  }
  return layout;
}

std::optional<PackageLayout> layoutOfLegacyLeaves(const CpuidLeaves& leaves) {
  const CpuidRegisters* basic = find(leaves, kSignatureLeaf);
  if (basic == nullptr) return std::nullopt;
  if (bits(basic->edx, kHyperThreadingBit, 1) == 0) return PackageLayout{};
  const CpuidRegisters* cache = find(leaves, kCacheLeaf);
  const uint32_t cores = cache == nullptr ? 1u : bits(cache->eax, 26, 6) + 1u;
  const uint32_t logical = std::max(bits(basic->ebx, 16, 8), cores);
  return PackageLayout{logical, logical / cores};
}

}  // namespace

std::string vendorOf(const CpuidLeaves& leaves) {
  const CpuidRegisters* registers = find(leaves, kVendorLeaf);
  if (registers == nullptr) return "";
  std::string vendor;
  for (const uint32_t word : {registers->ebx, registers->edx, registers->ecx}) {
    appendWord(vendor, word);
  }
  return upToZero(vendor);
}

std::string makerOf(const std::string& vendor) {
  for (const Named& maker : MAKERS) {
    if (vendor == maker.text) return maker.name;
  }
  return trimmed(vendor);
}

std::string brandOf(const CpuidLeaves& leaves) {
  std::string brand;
  for (uint32_t leaf = kFirstBrandLeaf; leaf <= kLastBrandLeaf; ++leaf) {
    const CpuidRegisters* registers = find(leaves, leaf);
    if (registers == nullptr) return "";
    for (const uint32_t word : {registers->eax, registers->ebx, registers->ecx, registers->edx}) {
      appendWord(brand, word);
    }
  }
  return trimmed(upToZero(brand));
}

uint32_t signatureOf(const CpuidLeaves& leaves) {
  const CpuidRegisters* registers = find(leaves, kSignatureLeaf);
  return registers == nullptr ? 0 : registers->eax;
}

uint32_t familyNumberOf(uint32_t signature) {
  const uint32_t base = bits(signature, 8, 4);
  return base == 0xF ? base + bits(signature, 20, 8) : base;
}

const char* processorTypeOf(uint32_t signature) { return PROCESSOR_TYPES[bits(signature, 12, 2)]; }

std::string familyNameOf(const std::string& brand, uint32_t signature) {
  for (const Named& family : FAMILIES) {
    if (brand.find(family.text) != std::string::npos) return family.name;
  }
  return "Family " + std::to_string(familyNumberOf(signature));
}

std::optional<uint32_t> brandClockMhz(const std::string& brand) {
  const size_t unit = brand.rfind("Hz");
  if (unit == std::string::npos || unit == 0) return std::nullopt;
  const char prefix = brand[unit - 1];
  const double factor = prefix == 'M' ? 1 : prefix == 'G' ? 1e3 : prefix == 'T' ? 1e6 : 0;
  const size_t last = brand.find_last_not_of(' ', unit - 2);
  if (factor == 0 || unit < 2 || last == std::string::npos) return std::nullopt;
  const size_t before = brand.find_last_not_of("0123456789.", last);
  const size_t first = before == std::string::npos ? 0 : before + 1;
  double number = 0;
  const auto parsed = std::from_chars(brand.data() + first, brand.data() + last + 1, number);
  const double mhz = number * factor;
  if (parsed.ec != std::errc() || mhz < 1 || mhz > INT32_MAX) return std::nullopt;
  return static_cast<uint32_t>(std::lround(mhz));
}

std::optional<uint32_t> baseClockMhz(const CpuidLeaves& leaves) {
  const CpuidRegisters* registers = find(leaves, kFrequencyLeaf);
  const uint32_t mhz = registers == nullptr ? 0 : bits(registers->eax, 0, 16);
  if (mhz == 0) return std::nullopt;  // hypervisors announce the leaf and leave it empty
  return mhz;
}

std::optional<uint32_t> l2KiloBytes(const CpuidLeaves& leaves) {
  for (uint32_t index = 0; const CpuidRegisters* cache = find(leaves, kCacheLeaf, index); ++index) {
    if (isLevel2(*cache)) return cacheKiloBytes(*cache);
  }
  const CpuidRegisters* amd = find(leaves, kAmdCacheLeaf);
  const uint32_t kiloBytes = amd == nullptr ? 0 : bits(amd->ecx, 16, 16);
  if (kiloBytes == 0) return std::nullopt;
  return kiloBytes;
}

std::vector<CpuFeature> featuresOf(const CpuidLeaves& leaves) {
  std::vector<CpuFeature> features;
  if (find(leaves, kSignatureLeaf) == nullptr) return features;
  for (const FeatureBit& feature : FEATURES) {
    features.push_back({feature.name, hasFeature(leaves, feature)});
  }
  if (vendorOf(leaves) == "GenuineIntel") {
    features.push_back({kIntel64.name, hasFeature(leaves, kIntel64)});
  }
  return features;
}

std::optional<PackageLayout> packageLayoutOf(const CpuidLeaves& leaves) {
  std::optional<PackageLayout> layout = layoutOfTopologyLeaf(leaves);
  if (!layout && isAmd(vendorOf(leaves))) layout = layoutOfAmdLeaves(leaves);
  if (!layout) layout = layoutOfLegacyLeaves(leaves);
  if (layout) layout->threadsPerCore = std::min(layout->threadsPerCore, layout->logicalPerPackage);
  return layout;
}

}  // namespace quenlor
