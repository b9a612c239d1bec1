#include "readers/cpuid/CpuidLeaves.h"

#include <gtest/gtest.h>

#include "tests/readers/cpuid/CpuMachine.h"

namespace quenlor::test {
namespace {

constexpr uint32_t kHtt = 1u << 28;

CpuidLeaves withVendor(const std::string& vendor) { return {{{0, 0}, vendorLeaf(vendor)}}; }

// Deterministic cache parameters of leaf 4.
CpuidRegisters cache(uint32_t type, uint32_t level, uint32_t ways, uint32_t lineSize, uint32_t sets,
                     uint32_t coresOfPackage = 1) {
  return {.eax = type | level << 5 | (coresOfPackage - 1) << 26,
          .ebx = (ways - 1) << 22 | (lineSize - 1),
          .ecx = sets - 1,
          .edx = 0};
}

TEST(CpuidLeaves, vendorIsTheTwelveCharactersOfEbxEdxEcx) {
  EXPECT_EQ(vendorOf(withVendor("GenuineIntel")), "GenuineIntel");
  EXPECT_EQ(vendorOf(withVendor("AuthenticAMD")), "AuthenticAMD");
  EXPECT_EQ(vendorOf(withVendor("Short")), "Short");
  EXPECT_EQ(vendorOf({}), "");
}

TEST(CpuidLeaves, makerIsTheUsualNameOrTheVendorText) {
  EXPECT_EQ(makerOf("GenuineIntel"), "Intel");
  EXPECT_EQ(makerOf("AuthenticAMD"), "AMD");
  EXPECT_EQ(makerOf("HygonGenuine"), "Hygon");
  EXPECT_EQ(makerOf("  Shanghai  "), "Zhaoxin");
  EXPECT_EQ(makerOf(" Fresh Chips"), "Fresh Chips");
  EXPECT_EQ(makerOf(""), "");
}

TEST(CpuidLeaves, brandIsTrimmedAndNeedsAllThreeLeaves) {
  FakeHost host;
  setBrand(host, "      Intel(R) Xeon(R) CPU  5160  @ 3.00GHz ");
  EXPECT_EQ(brandOf(host.cpuidLeaves), "Intel(R) Xeon(R) CPU  5160  @ 3.00GHz");
  host.cpuidLeaves.erase({0x80000003, 0});
  EXPECT_EQ(brandOf(host.cpuidLeaves), "");
}

TEST(CpuidLeaves, brandOfBlanksOrZerosIsEmpty) {
  FakeHost host;
  setBrand(host, "");
  EXPECT_EQ(brandOf(host.cpuidLeaves), "");
  setBrand(host, std::string(48, ' '));
  EXPECT_EQ(brandOf(host.cpuidLeaves), "");
}

TEST(CpuidLeaves, brandOfFortyEightCharactersWithoutZeroIsTakenWhole) {
  FakeHost host;
  setBrand(host, std::string(48, 'x'));
  EXPECT_EQ(brandOf(host.cpuidLeaves), std::string(48, 'x'));
}

TEST(CpuidLeaves, familyNumberAddsTheExtendedFamilyOnlyToFifteen) {
  EXPECT_EQ(familyNumberOf(0x000406F1), 6u);
  EXPECT_EQ(familyNumberOf(0x00800F12), 0x17u);
  EXPECT_EQ(familyNumberOf(0x00A20F10), 0x19u);
  EXPECT_EQ(familyNumberOf(0x00000F29), 15u);
}

TEST(CpuidLeaves, familyNameComesFromTheBrand) {
  const std::pair<const char*, const char*> kExpected[] = {
      {"Intel(R) Xeon(R) Gold 6338 CPU @ 2.00GHz", "Xeon"},
      {"Intel(R) Core(TM) i7-8700 CPU @ 3.20GHz", "Core"},
      {"Intel(R) Core(TM)2 Duo CPU     E8400  @ 3.00GHz", "Core"},
      {"Intel(R) Celeron(R) CPU  G1610 @ 2.60GHz", "Celeron"},
      {"Intel(R) Pentium(R) 4 CPU 3.00GHz", "Pentium"},
      {"Intel(R) Atom(TM) CPU  C2750  @ 2.40GHz", "Atom"},
      {"Dual-Core AMD Opteron(tm) Processor 2218", "Opteron"},
      {"AMD EPYC 7742 64-Core Processor", "EPYC"},
      {"AMD Ryzen Threadripper 3990X 64-Core Processor", "Ryzen Threadripper"},
      {"AMD Ryzen 9 5950X 16-Core Processor", "Ryzen"},
      {"QEMU Virtual CPU version 2.5+", "Family 6"},
      {"", "Family 6"},
  };
  for (const auto& [brand, family] : kExpected) {
    EXPECT_EQ(familyNameOf(brand, 0x000406F1), family) << brand;
  }
}

TEST(CpuidLeaves, processorTypeIsBitsTwelveAndThirteen) {
  EXPECT_STREQ(processorTypeOf(0x000406F1), "Original OEM Processor");
  EXPECT_STREQ(processorTypeOf(0x00001632), "OverDrive Processor");
  EXPECT_STREQ(processorTypeOf(0x00002000), "Dual Processor");
  EXPECT_STREQ(processorTypeOf(0x00003000), "Reserved");
}

TEST(CpuidLeaves, brandClockIsTheNumberBeforeTheUnit) {
  EXPECT_EQ(brandClockMhz("Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz"), 2400u);
  EXPECT_EQ(brandClockMhz("Intel(R) Pentium(R) III CPU family 1133MHz"), 1133u);
  EXPECT_EQ(brandClockMhz("Some CPU @ 1.5 GHz"), 1500u);
  EXPECT_EQ(brandClockMhz("Some CPU @ 0.001THz"), 1000u);
  EXPECT_EQ(brandClockMhz("2.93GHz"), 2930u);
}

TEST(CpuidLeaves, brandWithoutAClockGivesNone) {
  for (const char* brand : {"", "Hz", "GHz", " GHz", "@ GHz", "CPU 5Hz", "AMD EPYC 7742", "..GHz",
                            "CPU @ 0GHz", "99999999999999999999THz", "x @ .GHz"}) {
    EXPECT_EQ(brandClockMhz(brand), std::nullopt) << brand;
  }
}

TEST(CpuidLeaves, emptyFrequencyLeafOfAHypervisorIsNoClock) {
  EXPECT_EQ(baseClockMhz({}), std::nullopt);
  EXPECT_EQ(baseClockMhz({{{0x16, 0}, {}}}), std::nullopt);
  EXPECT_EQ(baseClockMhz({{{0x16, 0}, {.eax = 0xABCD0000u | 2400u}}}), 2400u);
}

TEST(CpuidLeaves, level2SizeIsTheProductOfTheCacheParameters) {
  CpuidLeaves leaves;
  leaves[{4, 0}] = cache(1, 1, 8, 64, 64);
  leaves[{4, 1}] = cache(2, 1, 8, 64, 64);
  leaves[{4, 2}] = cache(3, 2, 16, 64, 2048);
  leaves[{4, 3}] = cache(3, 3, 16, 64, 65536);
  leaves[{0x80000006, 0}] = {.ecx = 512u << 16};
  EXPECT_EQ(l2KiloBytes(leaves), 2048u);
}

TEST(CpuidLeaves, instructionCacheOfLevel2IsNotTheLevel2Cache) {
  CpuidLeaves leaves;
  leaves[{4, 0}] = cache(2, 2, 8, 64, 64);
  EXPECT_EQ(l2KiloBytes(leaves), std::nullopt);
}

TEST(CpuidLeaves, level2SizeOfAmdComesFromTheExtendedLeaf) {
  EXPECT_EQ(l2KiloBytes({{{0x80000006, 0}, {.ecx = 512u << 16 | 0x6140}}}), 512u);
  EXPECT_EQ(l2KiloBytes({{{0x80000006, 0}, {.ecx = 0x6140}}}), std::nullopt);
  EXPECT_EQ(l2KiloBytes({}), std::nullopt);
}

TEST(CpuidLeaves, absurdCacheParametersDoNotOverflow) {
  CpuidLeaves leaves;
  leaves[{4, 0}] = {.eax = 3 | 2u << 5, .ebx = 0xFFFFFFFF, .ecx = 0xFFFFFFFF, .edx = 0};
  EXPECT_EQ(l2KiloBytes(leaves), static_cast<uint32_t>(INT32_MAX));
}

bool feature(const CpuidLeaves& leaves, const std::string& name, bool* listed = nullptr) {
  if (listed != nullptr) *listed = false;
  for (const CpuFeature& known : featuresOf(leaves)) {
    if (name != known.name) continue;
    if (listed != nullptr) *listed = true;
    return known.present;
  }
  return false;
}

TEST(CpuidLeaves, longModeIsListedForEveryMakerAndIntel64ForIntelOnly) {
  for (const char* vendor : {"GenuineIntel", "AuthenticAMD"}) {
    CpuidLeaves leaves = withVendor(vendor);
    leaves[{1, 0}] = {.edx = kHtt};
    leaves[{0x80000001, 0}] = {.edx = 1u << 29};
    bool listed = false;
    EXPECT_TRUE(feature(leaves, "LM"));
    EXPECT_TRUE(feature(leaves, "HTT"));
    EXPECT_FALSE(feature(leaves, "MMX"));
    EXPECT_EQ(feature(leaves, "IEM64T", &listed), listed);
    EXPECT_EQ(listed, std::string(vendor) == "GenuineIntel");
  }
}

TEST(CpuidLeaves, thirtyTwoBitProcessorListsLongModeAsAbsent) {
  CpuidLeaves leaves = withVendor("GenuineIntel");
  leaves[{1, 0}] = {};
  bool listed = false;
  EXPECT_FALSE(feature(leaves, "LM", &listed));
  EXPECT_TRUE(listed);
  EXPECT_TRUE(featuresOf({}).empty());
}

TEST(CpuidLeaves, layoutIsThatOfTheLastTopologyLevel) {
  CpuidLeaves leaves;
  leaves[{0xB, 0}] = {.eax = 1, .ebx = 2, .ecx = 0x100};
  leaves[{0xB, 1}] = {.eax = 5, .ebx = 28, .ecx = 0x201};
  leaves[{0xB, 2}] = {};
  const auto layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 28u);
  EXPECT_EQ(layout->threadsPerCore, 2u);
}

TEST(CpuidLeaves, topologyLevelsInImpossibleNumbersStayInBounds) {
  CpuidLeaves leaves;
  leaves[{0xB, 0}] = {.ebx = 8, .ecx = 0x100};
  leaves[{0xB, 1}] = {.ebx = 4, .ecx = 0x201};
  const auto layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 4u);
  EXPECT_EQ(layout->threadsPerCore, 4u);
}

TEST(CpuidLeaves, amdThreadsCountFromFamily17hOn) {
  CpuidLeaves leaves = withVendor("AuthenticAMD");
  leaves[{1, 0}] = {.eax = 0x00800F12, .edx = kHtt};
  leaves[{0x80000008, 0}] = {.ecx = 63};
  leaves[{0x8000001E, 0}] = {.ebx = 1u << 8};
  auto layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 64u);
  EXPECT_EQ(layout->threadsPerCore, 2u);
  leaves[{1, 0}].eax = 0x00600F12;  // family 15h: cores of a compute unit
  layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->threadsPerCore, 1u);
}

TEST(CpuidLeaves, legacyLeavesDivideLogicalProcessorsByCores) {
  CpuidLeaves leaves = withVendor("GenuineIntel");
  leaves[{1, 0}] = {.ebx = 8u << 16, .edx = kHtt};
  leaves[{4, 0}] = cache(1, 1, 8, 64, 64, 4);
  auto layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 8u);
  EXPECT_EQ(layout->threadsPerCore, 2u);

  leaves[{1, 0}].ebx = 0;  // no count, but four cores
  layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 4u);
  EXPECT_EQ(layout->threadsPerCore, 1u);

  leaves[{1, 0}] = {.ebx = 8u << 16};  // the count means nothing without the flag
  layout = packageLayoutOf(leaves);
  ASSERT_TRUE(layout);
  EXPECT_EQ(layout->logicalPerPackage, 1u);
  EXPECT_FALSE(packageLayoutOf({}));
}

}  // namespace
}  // namespace quenlor::test
