// The tables of the Processor group: flags, ratings and family names.
#include <gtest/gtest.h>

#include <iterator>
#include <memory>
#include <utility>
#include <vector>

#include "groups/processor/ProcessorFamily.h"
#include "groups/processor/RealSpeedValue.h"
#include "readers/processor/ProcessorFlags.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor::test {
namespace {

TEST(RealSpeedValue, examples) {
  for (const auto& [measured, rated] : {std::pair{2793u, 2800u},
                                        {1995u, 2000u},
                                        {733u, 733u},
                                        {866u, 866u},
                                        {1266u, 1266u},
                                        {2401u, 2400u},
                                        {0u, 0u},
                                        {1993u, 2000u},
                                        {2666u, 2666u}}) {
    EXPECT_EQ(RealSpeedValue(measured), rated) << measured;
  }
}

TEST(RealSpeedValue, everyRowOfTheUnevenTable) {
  struct Row {
    uint32_t from, to, rated;
  };
  const Row kRows[] = {{0, 9, 0},    {10, 15, 0},  {16, 19, 20}, {20, 29, 20}, {30, 39, 33},
                       {40, 49, 50}, {50, 57, 50}, {58, 59, 60}, {60, 62, 60}, {63, 69, 66},
                       {70, 70, 66}, {71, 77, 75}, {78, 79, 80}, {80, 85, 80}, {86, 89, 90},
                       {90, 91, 90}, {92, 99, 100}};
  uint32_t next = 0;
  for (const Row& row : kRows) {
    EXPECT_EQ(row.from, next++);
    for (uint32_t rest = row.from; rest <= row.to; ++rest) {
      EXPECT_EQ(RealSpeedValue(2400 + rest), 2400 + row.rated) << rest;
    }
    next = row.to + 1;
  }
}

TEST(RealSpeedValue, oldProcessorsHaveTheirOwnRatings) {
  EXPECT_EQ(RealSpeedValue(70), 66u);
  for (uint32_t mhz = 71; mhz <= 79; ++mhz) EXPECT_EQ(RealSpeedValue(mhz), 75u);
  EXPECT_EQ(RealSpeedValue(80), 80u);
  EXPECT_EQ(RealSpeedValue(185), 180u);
  for (uint32_t mhz = 186; mhz <= 189; ++mhz) EXPECT_EQ(RealSpeedValue(mhz), 188u);
  EXPECT_EQ(RealSpeedValue(190), 190u);
}

TEST(RealSpeedValue, largestMegahertzDoNotWrap) {
  EXPECT_EQ(RealSpeedValue(0xFFFFFFFF), 0xFFFFFFFF);  // 4294967300 does not fit
  EXPECT_EQ(RealSpeedValue(0xFFFFFFFF - 95), 4294967200u);
}

TEST(CpuFlags, allNamesGiveAllMasks) {
  std::string text;
  uint32_t all = 0;
  for (const X86Flag& flag : IntelX86Flags) {
    text += std::string(flag.name) + " ";
    all |= flag.mask;
    EXPECT_NE(makeCPUflagsFromString(flag.name) & flag.mask, 0u) << flag.name;
  }
  EXPECT_EQ(makeCPUflagsFromString(text.c_str()), all);
  EXPECT_EQ(all, 0x1787FBFFu);
}

// Bit numbers of CPUID leaf 1 EDX, in the order in which the names are searched.
TEST(CpuFlags, eachNameStandsForItsBit) {
  const std::pair<const char*, unsigned> expected[] = {
      {"fpu", 0},  {"vme", 1},   {"de", 2},    {"pse", 3},  {"tsc", 4},    {"msr", 5},
      {"pae", 6},  {"mce", 7},   {"cx8", 8},   {"apic", 9}, {"sep", 11},   {"mtrr", 12},
      {"pge", 13}, {"mca", 14},  {"cmov", 15}, {"pat", 16}, {"pse36", 17}, {"psn", 18},
      {"mmx", 23}, {"fxsr", 24}, {"sse", 25},  {"xmm", 25}, {"sse2", 26},  {"ht", 28}};
  ASSERT_EQ(std::size(IntelX86Flags), std::size(expected));
  for (size_t i = 0; i < std::size(expected); ++i) {
    EXPECT_STREQ(IntelX86Flags[i].name, expected[i].first);
    EXPECT_EQ(IntelX86Flags[i].mask, 1u << expected[i].second) << expected[i].first;
  }
}

TEST(CpuFlags, namesAreFoundWithinOtherNames_identityDigestsDependOnIt) {
  EXPECT_EQ(makeCPUflagsFromString("pse36"), 1u << 17 | 1u << 3);
  EXPECT_EQ(makeCPUflagsFromString("sse2"), 1u << 26 | 1u << 25);
  EXPECT_EQ(makeCPUflagsFromString("lm syscall"), 0u);
  EXPECT_EQ(makeCPUflagsFromString("light"), 1u << 28);
  EXPECT_EQ(makeCPUflagsFromString("ssse3"), 1u << 25);
  EXPECT_EQ(makeCPUflagsFromString("xmm"), 1u << 25);
  EXPECT_EQ(makeCPUflagsFromString("tsc_deadline_timer"), 1u << 4 | 1u << 2);
}

TEST(CpuFlags, emptyTextHasNone) { EXPECT_EQ(makeCPUflagsFromString(""), 0u); }

TEST(CpuFlags, traced) {
  CapturedTraces trace;
  makeCPUflagsFromString("fpu ht");
  EXPECT_TRUE(trace.contains("hardware parsing CPU flags line: fpu ht"));
  EXPECT_EQ(trace.countHolding("hardware for desc:i="), 24);
  EXPECT_TRUE(trace.contains("hardware flagVal= 10000001"));
}

class FamilyName : public testing::Test {
 protected:
  ProcessorInfo& add(const char* maker, const char* family, const char* model,
                     const char* typeEnum) {
    auto info = std::make_unique<ProcessorInfo>();
    info->manufacturer = maker;
    info->type = "0";
    info->family = family;
    info->model = model;
    info->pcx = "0";
    info->typeEnum = typeEnum;
    m_descriptions.push_back(std::move(info));
    return *m_descriptions.back();
  }
  std::string name(const char* vendor, int family, int model, const char* modelName = "") const {
    return familyNameIn(m_descriptions, vendor, family, model, modelName).str();
  }

  std::vector<std::unique_ptr<ProcessorInfo>> m_descriptions;
};

TEST_F(FamilyName, intelIsToldApartByTheClassInTheModelName) {
  add("INTEL", "6", "11", "Pentium III");
  add("INTEL", "6", "11", "Celeron").pcx = "1";
  add("INTEL", "6", "11", "Xeon").pcx = "2";
  EXPECT_EQ(name("GenuineIntel", 6, 11, "Intel(R) Pentium(R) III"), "Pentium III");
  EXPECT_EQ(name("GenuineIntel", 6, 11, "Intel(R) Celeron(TM)"), "Celeron");
  EXPECT_EQ(name("GenuineIntel", 6, 11, "Intel(R) Xeon(TM)"), "Xeon");
  EXPECT_EQ(name("GenuineIntel", 6, 11, "Celeron Xeon"), "Celeron");
}

TEST_F(FamilyName, intelNeedsTypeZero) {
  add("INTEL", "6", "11", "OverDrive").type = "1";
  EXPECT_EQ(name("GenuineIntel", 6, 11), "Unknown");
  add("INTEL", "6", "11", "Empty").type = "";
  EXPECT_EQ(name("GenuineIntel", 6, 11), "Unknown");
}

TEST_F(FamilyName, amdAndCyrixMatchOnFamilyAndModelOnly) {
  ProcessorInfo& amd = add("AMD", "23", "49", "EPYC (Rome)");
  amd.type = "1";
  amd.pcx = "2";
  add("CYRIX", "6", "2", "6x86MX").pcx = "7";
  EXPECT_EQ(name("AuthenticAMD", 23, 49, "AMD EPYC 7742"), "EPYC (Rome)");
  EXPECT_EQ(name("CyrixInstead", 6, 2), "6x86MX");
  EXPECT_EQ(name("AuthenticAMD", 23, 48), "Unknown");
}

TEST_F(FamilyName, firstMatchWins) {
  add("AMD", "23", "49", "First");
  add("AMD", "23", "49", "Second");
  EXPECT_EQ(name("AuthenticAMD", 23, 49), "First");
}

TEST_F(FamilyName, descriptionsOfAnotherMakerDoNotMatch) {
  add("INTEL", "6", "11", "Pentium III");
  EXPECT_EQ(name("AuthenticAMD", 6, 11), "Unknown");
  EXPECT_EQ(name("CentaurHauls", 6, 11), "Unknown");
  EXPECT_EQ(name("", 6, 11), "Unknown");
  EXPECT_EQ(name("genuineintel", 6, 11), "Unknown");
}

TEST_F(FamilyName, numbersOfADescriptionAreDecimal) {
  add("AMD", "0x17", "49", "Hexadecimal");
  EXPECT_EQ(name("AuthenticAMD", 23, 49), "Unknown");
  add("AMD", "", "49", "No family");
  EXPECT_EQ(name("AuthenticAMD", 0, 49), "Hexadecimal");  // "0x17" reads as 0
}

TEST_F(FamilyName, noDescriptionsGiveUnknown) { EXPECT_EQ(name("GenuineIntel", 6, 11), "Unknown"); }

}  // namespace
}  // namespace quenlor::test
