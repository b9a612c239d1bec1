#include "readers/topology/RatedSpeed.h"

#include <gtest/gtest.h>

namespace quenlor::test {
namespace {

const SpeedSources kAll{.cpuidBaseMhz = 2100,
                        .baseFrequencyKhz = 2200000,
                        .nominalMhz = 2300,
                        .brandMhz = 2400,
                        .smbiosMhz = 2500,
                        .maxFrequencyKhz = 4700000,
                        .hypervisorTscKhz = 1800000};

using Field = std::optional<uint32_t> SpeedSources::*;

TEST(RatedSpeed, theFirstSourceThatTellsIsBelieved) {
  struct Row {
    Field field;
    uint32_t expected;
  };
  constexpr Row ROWS[] = {
      {&SpeedSources::cpuidBaseMhz, 2100},    {&SpeedSources::baseFrequencyKhz, 2200},
      {&SpeedSources::nominalMhz, 2300},      {&SpeedSources::brandMhz, 2400},
      {&SpeedSources::smbiosMhz, 2500},       {&SpeedSources::maxFrequencyKhz, 4700},
      {&SpeedSources::hypervisorTscKhz, 1800}};
  SpeedSources sources = kAll;
  for (const Row& row : ROWS) {
    EXPECT_EQ(ratedMhz(sources), row.expected);
    sources.*row.field = 0;  // hypervisors answer so, and some firmware
  }
  EXPECT_EQ(ratedMhz(sources), 0u);
}

TEST(RatedSpeed, nothingToldIsZero) {
  EXPECT_EQ(ratedMhz({}), 0u);
  EXPECT_EQ(baseMhz({}), std::nullopt);
}

TEST(RatedSpeed, theHighestSpeedIsNoBaseSpeed) {
  EXPECT_EQ(baseMhz({.maxFrequencyKhz = 4700000, .hypervisorTscKhz = 1800000}), std::nullopt);
  EXPECT_EQ(baseMhz(kAll), 2100u);
}

TEST(RatedSpeed, aMeasuredCounterDoesNotChangeFromStartToStart) {
  for (const uint32_t khz : {2294608u, 2294450u, 2295001u, 2304998u}) {
    EXPECT_EQ(ratedMhz({.hypervisorTscKhz = khz}), 2300u);
  }
  EXPECT_EQ(ratedMhz({.hypervisorTscKhz = 0xFFFFFFFF}), 4295000u);
}

TEST(RatedSpeed, kilohertzAreRounded) {
  EXPECT_EQ(ratedMhz({.maxFrequencyKhz = 2899999}), 2900u);
  EXPECT_EQ(ratedMhz({.maxFrequencyKhz = 499}), 0u);
}

TEST(RatedSpeed, thePackageTellsItsOwnSources) {
  CpuPackage package;
  package.cpuinfo = CpuinfoBlock{};
  package.cpuinfo->modelName = "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz";
  package.maxKhz = 3300000;
  EXPECT_EQ(ratedMhz(speedSourcesOf(package, {})), 2400u);
  package.cpuinfo->modelName = "AMD EPYC 7302P 16-Core Processor";
  EXPECT_EQ(ratedMhz(speedSourcesOf(package, 3000)), 3000u);
  package.leaves[{0x16, 0}] = {2100, 4700, 100, 0};
  EXPECT_EQ(ratedMhz(speedSourcesOf(package, 3000)), 2100u);
}

}  // namespace
}  // namespace quenlor::test
