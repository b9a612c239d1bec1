#include "readers/cpuid/CpuTopology.h"

#include <gtest/gtest.h>

#include <sstream>

#include "tests/readers/cpuid/CpuMachine.h"

namespace quenlor::test {
namespace {

std::vector<CpuinfoRecord> recordsOf(const std::string& text) {
  std::vector<CpuinfoRecord> records;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    takeCpuinfoLine((line + "\n").c_str(), records);
  }
  return records;
}

void expectCounts(const CpuTopology& topology, uint32_t packages, uint32_t cores, uint32_t threads,
                  uint32_t active) {
  EXPECT_EQ(topology.packages, packages);
  EXPECT_EQ(topology.coresPerPackage, cores);
  EXPECT_EQ(topology.threadsPerCore, threads);
  EXPECT_EQ(topology.activeCores, active);
}

TEST(CpuTopology, onlyNumberedDirectoriesAreCpus) {
  EXPECT_EQ(cpuNumberOf("cpu0"), 0u);
  EXPECT_EQ(cpuNumberOf("cpu255"), 255u);
  for (const char* name :
       {"cpu", "cpufreq", "cpuidle", "cpu1x", "cpu-1", "1", "", "cpu4294967296"}) {
    EXPECT_EQ(cpuNumberOf(name), std::nullopt) << name;
  }
}

TEST(CpuTopology, cacheSizesAreKilobytesOrMegabytes) {
  EXPECT_EQ(cacheSizeKiloBytes("2048K\n"), 2048u);
  EXPECT_EQ(cacheSizeKiloBytes("4M"), 4096u);
  for (const char* text : {"", "K", "2048", "xK", "-1K", "99999999999K", "4000000000M"}) {
    EXPECT_EQ(cacheSizeKiloBytes(text), std::nullopt) << text;
  }
}

TEST(CpuTopology, placesCountPackagesCoresAndThreads) {
  expectCounts(countPlaces({{"0", "0,4"},
                            {"0", "1,5"},
                            {"1", "2,6"},
                            {"1", "3,7"},
                            {"0", "0,4"},
                            {"0", "1,5"},
                            {"1", "2,6"},
                            {"1", "3,7"}}),
               2, 2, 2, 4);
}

TEST(CpuTopology, equalCoreTextsInTwoPackagesAreTwoCores) {
  expectCounts(countPlaces({{"0", "0"}, {"1", "0"}}), 2, 1, 1, 2);
}

TEST(CpuTopology, hybridProcessorGivesTheLargestCore) {
  expectCounts(countPlaces({{"0", "0-1"}, {"0", "0-1"}, {"0", "2"}, {"0", "3"}}), 1, 3, 2, 3);
}

TEST(CpuTopology, unequalPackagesGiveTheLargestPackage) {
  expectCounts(countPlaces({{"0", "0"}, {"0", "1"}, {"0", "2"}, {"1", "3"}}), 2, 3, 1, 4);
}

TEST(CpuTopology, noPlacesAreNothing) { expectCounts(countPlaces({}), 0, 0, 0, 0); }

TEST(CpuTopology, cpuinfoRecordsAreCounted) {
  CpuMachine machine;
  machine.packages = 2;
  const auto topology = countCpuinfo(recordsOf(machine.cpuinfo()), std::nullopt);
  ASSERT_TRUE(topology);
  expectCounts(*topology, 2, 4, 2, 8);
}

TEST(CpuTopology, cpuCoresCountWhereCoreIdsRepeatWithinAPackage) {
  std::string text;
  for (const char* core : {"0", "1", "0", "1"}) {
    text += std::string("processor\t: 0\nphysical id\t: 0\nsiblings\t: 4\ncore id\t\t: ") + core +
            "\ncpu cores\t: 4\n\n";
  }
  const auto topology = countCpuinfo(recordsOf(text), std::nullopt);
  ASSERT_TRUE(topology);
  expectCounts(*topology, 1, 4, 1, 4);
}

TEST(CpuTopology, cpuinfoWithoutCoreCountsUsesCoreIds) {
  const std::string text =
      "processor: 0\nphysical id: 0\nsiblings: 2\ncore id: 0\n"
      "processor: 1\nphysical id: 0\nsiblings: 2\ncore id: 0\n";
  const auto topology = countCpuinfo(recordsOf(text), std::nullopt);
  ASSERT_TRUE(topology);
  expectCounts(*topology, 1, 1, 2, 1);
}

TEST(CpuTopology, cpuinfoOfOldKernelsHasSiblingsOnly) {
  const std::string text =
      "processor: 0\nphysical id: 0\nsiblings: 2\nprocessor: 1\nphysical id: 0\nsiblings: 2\n";
  auto topology = countCpuinfo(recordsOf(text), std::nullopt);
  ASSERT_TRUE(topology);
  expectCounts(*topology, 1, 1, 2, 1);
  topology = countCpuinfo(recordsOf(text), PackageLayout{2, 1});  // the processor says two cores
  ASSERT_TRUE(topology);
  expectCounts(*topology, 1, 2, 1, 2);
}

TEST(CpuTopology, cpuinfoWithoutPackagesIsNoTopology) {
  EXPECT_FALSE(countCpuinfo({}, std::nullopt));
  EXPECT_FALSE(countCpuinfo(recordsOf("processor: 0\nsiblings: 2\n"), std::nullopt));
  EXPECT_FALSE(
      countCpuinfo(recordsOf("processor: 0\nphysical id: 0\n\nprocessor: 1\n"), std::nullopt));
}

TEST(CpuTopology, uselessCpuinfoNumbersCountAsAbsent) {
  const std::string text =
      "processor: 0\nphysical id: x\nsiblings: many\ncpu cores: 0\ncpu MHz: fast\n";
  const auto records = recordsOf(text);
  ASSERT_EQ(records.size(), 1u);
  EXPECT_FALSE(records[0].mhz);
  const auto topology = countCpuinfo(records, std::nullopt);
  ASSERT_TRUE(topology);
  expectCounts(*topology, 1, 1, 1, 1);
}

TEST(CpuTopology, linesBeforeTheFirstProcessorAreIgnored) {
  EXPECT_TRUE(recordsOf("physical id: 0\nno colon\n:\n\n").empty());
}

TEST(CpuTopology, clockIsReadWithADecimalPointWhateverTheLocale) {
  const auto records = recordsOf("processor\t: 0\ncpu MHz\t\t: 2399.998\n");
  ASSERT_EQ(records.size(), 1u);
  EXPECT_DOUBLE_EQ(records[0].mhz.value_or(0), 2399.998);
}

TEST(CpuTopology, layoutAloneSpreadsTheCpusOverPackages) {
  expectCounts(countByLayout({8, 2}, 16), 2, 4, 2, 8);
  expectCounts(countByLayout({8, 2}, 12), 2, 4, 2, 6);
  expectCounts(countByLayout({1, 1}, 3), 3, 1, 1, 3);
  expectCounts(countByLayout({8, 2}, 0), 1, 4, 2, 0);
}

constexpr CpuTopology kTwoCoresOnline{.packages = 1,
                                      .coresPerPackage = 2,
                                      .threadsPerCore = 1,
                                      .activeCores = 2,
                                      .cpusPerPackage = 2,
                                      .onlineCpus = 2};

TEST(CpuTopology, offlineCpusFillUpToWhatTheProcessorAnnounces) {
  expectCounts(withOfflineCpus(kTwoCoresOnline, 6, PackageLayout{8, 2}), 1, 4, 2, 2);
  expectCounts(withOfflineCpus(kTwoCoresOnline, 14, PackageLayout{8, 2}), 2, 4, 2, 2);
}

TEST(CpuTopology, processorThatAnnouncesMoreThanThereIsAddsOnlyTheOfflineCpus) {
  expectCounts(withOfflineCpus(kTwoCoresOnline, 1, PackageLayout{64, 1}), 1, 3, 1, 2);
  expectCounts(withOfflineCpus(kTwoCoresOnline, 0, PackageLayout{64, 2}), 1, 2, 1, 2);
  expectCounts(withOfflineCpus(kTwoCoresOnline, 6, std::nullopt), 1, 2, 1, 2);
}

// Emulated AMD processors announce threads to CPUID that the kernel takes for cores.
TEST(CpuTopology, wholePackageOnlineIsAsTheKernelCountsIt) {
  const CpuTopology online = countPlaces({{"0", "0"}, {"0", "1"}, {"0", "2"}, {"0", "3"}});
  expectCounts(withOfflineCpus(online, 4, PackageLayout{4, 2}), 2, 4, 1, 4);
  expectCounts(withOfflineCpus(online, 3, PackageLayout{4, 2}), 2, 4, 1, 4);
}

// Eight cores with two threads and eight with one, all second threads offline.
TEST(CpuTopology, hybridProcessorWithoutItsSecondThreadsKeepsItsCores) {
  std::vector<CpuPlace> places;
  for (int core = 0; core < 16; ++core) places.push_back({"0", std::to_string(core)});
  expectCounts(withOfflineCpus(countPlaces(places), 8, PackageLayout{24, 2}), 1, 16, 2, 16);
}

}  // namespace
}  // namespace quenlor::test
