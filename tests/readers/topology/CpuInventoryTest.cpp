#include "readers/topology/CpuInventory.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "readers/topology/SysfsCpus.h"
#include "tests/readers/topology/TopologyMachine.h"

namespace quenlor::test {
namespace {

constexpr uint32_t kHybrid = 1u << 15;  // leaf 7 EDX

TEST(CpuPartition, oneListIsReadPerGroup) {
  std::vector<uint32_t> asked;
  const CpuPartition parts = partitionCpus({0, 1, 2, 3, 6}, [&](uint32_t cpu) {
    asked.push_back(cpu);
    return cpu == 6 ? std::nullopt
                    : std::optional<CpuList>(cpu % 2 == 0 ? CpuList{0, 2} : CpuList{1, 3});
  });
  EXPECT_EQ(parts.groups, (std::vector<CpuList>{{0, 2}, {1, 3}}));
  EXPECT_EQ(parts.unknown, CpuList{6});
  EXPECT_EQ(asked, (std::vector<uint32_t>{0, 1, 6}));
}

TEST(CpuPartition, listsThatContradictEachOtherStillGiveEachProcessorOnePlace) {
  const CpuPartition parts = partitionCpus({0, 1, 2}, [](uint32_t cpu) {
    return std::optional<CpuList>(cpu == 0 ? CpuList{7, 60000} : CpuList{0, 1, 2});
  });
  EXPECT_EQ(parts.groups, (std::vector<CpuList>{{0}, {1, 2}}));
  EXPECT_TRUE(partitionCpus({}, [](uint32_t) { return CpuList{}; }).groups.empty());
}

TEST(CpuInventory, packagesCoresThreadsDiesAndNodesAreCounted) {
  FakeHost host;
  TopologyMachine{.packages = 2, .diesPerPackage = 2, .nodesPerPackage = 2}.installOn(host);
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 2u);
  const CpuPackage& second = inventory.packages[1];
  EXPECT_EQ(second.id, 1u);
  EXPECT_EQ(second.cpus, (CpuList{4, 5, 6, 7, 12, 13, 14, 15}));
  EXPECT_EQ(second.cores.size(), 4u);
  EXPECT_EQ(mostThreadsOfACore(second), 2u);
  EXPECT_EQ(second.dies, 2u);
  EXPECT_EQ(second.clusters, std::nullopt);
  EXPECT_EQ(second.nodes, 2u);
  EXPECT_EQ(inventory.online, 16u);
  EXPECT_EQ(inventory.threadsOf(second), 8u);
  EXPECT_EQ(coresOfKind(second, CoreKind::kPerformance), std::nullopt);
}

TEST(CpuInventory, everyFileIsReadOnce) {
  FakeHost host;
  TopologyMachine{.packages = 2}.installOn(host);
  readCpus();
  std::vector<std::string> opened = host.opened;
  std::sort(opened.begin(), opened.end());
  EXPECT_EQ(std::adjacent_find(opened.begin(), opened.end()), opened.end());
  EXPECT_EQ(host.openDescriptors(), 0);
  EXPECT_TRUE(host.started.empty());
}

TEST(CpuInventory, kernelsWithOldNamesTellTheSame) {
  FakeHost host;
  TopologyMachine{.packages = 2, .hasNewNames = false, .hasDies = false}.installOn(host);
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 2u);
  EXPECT_EQ(inventory.packages[0].cores.size(), 4u);
  EXPECT_EQ(inventory.packages[0].dies, std::nullopt);
}

TEST(CpuInventory, kernelsWithMapsOnlyTellTheSame) {
  FakeHost host;
  host.directories["/sys/devices/system/cpu"] = {"cpu0", "cpu1", "cpu2", "cpu3"};
  for (const char* cpu : {"0", "1", "2", "3"}) {
    const std::string directory = std::string("/sys/devices/system/cpu/cpu") + cpu + "/topology/";
    host.files[directory + "core_siblings"] = "0000000f\n";
    host.files[directory + "thread_siblings"] = *cpu < '2' ? "00000003\n" : "0000000c\n";
  }
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 1u);
  EXPECT_EQ(inventory.packages[0].cores.size(), 2u);
}

TEST(CpuInventory, offlineProcessorsOfASinglePackageAreItsThreads) {
  FakeHost host;
  TopologyMachine{.offline = {3, 7}}.installOn(host);
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 1u);
  EXPECT_EQ(inventory.online, 6u);
  EXPECT_EQ(inventory.offline, 2u);
  EXPECT_EQ(inventory.packages[0].cores.size(), 3u);
  EXPECT_EQ(inventory.threadsOf(inventory.packages[0]), 8u);
}

TEST(CpuInventory, offlineProcessorsOfSeveralPackagesBelongToNobody) {
  FakeHost host;
  TopologyMachine{.packages = 2, .offline = {3}}.installOn(host);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(inventory.threadsOf(inventory.packages[0]), std::nullopt);
  EXPECT_EQ(inventory.packages[0].cpus.size(), 7u);
}

TEST(CpuInventory, aPackageThatIsWhollyOfflineIsNone) {
  FakeHost host;
  TopologyMachine{.packages = 2, .coresPerPackage = 1, .offline = {1, 3}}.installOn(host);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(inventory.packages.size(), 1u);
  EXPECT_EQ(inventory.offline, 2u);
}

TEST(CpuInventory, switchedOffSiblingsLeaveOneThreadPerCore) {
  FakeHost host;
  TopologyMachine{.offline = {4, 5, 6, 7}}.installOn(host);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(mostThreadsOfACore(inventory.packages[0]), 1u);
  EXPECT_EQ(inventory.packages[0].cores.size(), 4u);
}

TEST(CpuInventory, cachesAreThoseThatProcessorsShare) {
  FakeHost host;
  TopologyMachine{.packages = 2}.installOn(host);
  const CpuInventory inventory = readCpus();
  const CpuPackage& package = inventory.packages[0];
  EXPECT_EQ(sumOfCaches(package, 1, CacheType::kData), 4u * 32);
  EXPECT_EQ(sumOfCaches(package, 1, CacheType::kInstruction), 4u * 64);
  EXPECT_EQ(sumOfCaches(package, 4, CacheType::kUnified), std::nullopt);
  EXPECT_EQ(largestCache(package, 2), 256u);
  EXPECT_EQ(largestCache(package, 3), 35840u);
  const std::vector<CacheSummary> rows = summarizeCaches(inventory);
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].type, CacheType::kData);
  EXPECT_EQ(rows[0].count, 8u);
  EXPECT_EQ(rows[0].sharedBy, 2u);
  EXPECT_EQ(rows[3].level, 3u);
  EXPECT_EQ(rows[3].count, 2u);
  EXPECT_EQ(rows[3].sharedBy, 8u);
  EXPECT_EQ(rows[3].ways, 8u);
  EXPECT_EQ(rows[3].lineBytes, 64u);
}

TEST(CpuInventory, threadsWithoutASharedFirstLevelHaveOneEach) {
  FakeHost host;
  TopologyMachine{.coresPerPackage = 1, .threadsPerCore = 2}.installOn(host);
  for (const char* cpu : {"0", "1"}) {
    host.files[std::string("/sys/devices/system/cpu/cpu") + cpu + "/cache/index0/shared_cpu_list"] =
        cpu;
  }
  const std::vector<CacheSummary> rows = summarizeCaches(readCpus());
  ASSERT_EQ(rows.size(), 4u);
  EXPECT_EQ(rows[0].count, 2u);
  EXPECT_EQ(rows[0].sharedBy, 1u);
  EXPECT_EQ(rows[1].count, 1u);
}

TEST(CpuInventory, diesWithLargerCachesHaveARowOfTheirOwn) {
  FakeHost host;
  TopologyMachine{.coresPerPackage = 2, .threadsPerCore = 1}.installOn(host);
  for (const char* cpu : {"0", "1"}) {
    const std::string cache = std::string("/sys/devices/system/cpu/cpu") + cpu + "/cache/index3/";
    host.files[cache + "shared_cpu_list"] = cpu;
    host.files[cache + "size"] = *cpu == '0' ? "98304K\n" : "32768K\n";
  }
  const CpuInventory inventory = readCpus();
  const std::vector<CacheSummary> rows = summarizeCaches(inventory);
  ASSERT_EQ(rows.size(), 5u);
  EXPECT_EQ(rows[3].kiloBytes, 32768u);
  EXPECT_EQ(rows[4].kiloBytes, 98304u);
  EXPECT_EQ(largestCache(inventory.packages[0], 3), 98304u);
}

TEST(CpuInventory, whatDiffersAmongCachesOfOneSizeIsAbsent) {
  CpuInventory inventory;
  inventory.packages.resize(1);
  inventory.packages[0].caches = {{2, CacheType::kUnified, 2048, 16, 64, 2},
                                  {2, CacheType::kUnified, 2048, 16, 64, 4}};
  const std::vector<CacheSummary> rows = summarizeCaches(inventory);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].ways, 16u);
  EXPECT_EQ(rows[0].sharedBy, std::nullopt);
}

TEST(CpuInventory, aFullyAssociativeCacheHasNoWays) {
  FakeHost host;
  TopologyMachine{}.installOn(host);
  host.files["/sys/devices/system/cpu/cpu0/cache/index3/ways_of_associativity"] = "0\n";
  EXPECT_EQ(summarizeCaches(readCpus())[3].ways, std::nullopt);
}

TEST(CpuInventory, withoutCacheDirectoriesCpuidTellsTheSizes) {
  FakeHost host;
  TopologyMachine{.hasCaches = false}.installOn(host);
  host.cpuidLeaves[{4, 0}] = {0x121, 0x1C0003F, 0x3F, 0};    // L1 data, 32 KiB
  host.cpuidLeaves[{4, 1}] = {0x143, 0x1C0003F, 0x1FF, 0};   // L2, 256 KiB
  host.cpuidLeaves[{4, 2}] = {0x163, 0x3C0003F, 0x7FFF, 0};  // L3, 32 MiB
  const CpuInventory inventory = readCpus();
  EXPECT_TRUE(summarizeCaches(inventory).empty());
  EXPECT_EQ(largestCache(inventory.packages[0], 2), 256u);
  EXPECT_EQ(largestCache(inventory.packages[0], 3), 32768u);
  EXPECT_EQ(largestCache(inventory.packages[0], 4), std::nullopt);
}

void makeHybrid(FakeHost& host) {
  host.cpuidLeaves[{7, 0}] = {0, 0, 0, kHybrid};
  for (uint32_t cpu = 0; cpu < 4; ++cpu) {
    host.cpuidOfCpus[cpu][{7, 0}] = {0, 0, 0, kHybrid};
    host.cpuidOfCpus[cpu][{0x1A, 0}] = {cpu < 2 ? 0x20000001u : 0x40000001u, 0, 0, 0};
    host.cpuidOfCpus[cpu][{0x16, 0}] = {cpu < 2 ? 1500u : 2100u, 0, 0, 0};
  }
}

TEST(CpuInventory, kindsOfCoresAreThoseThatTheKernelNames) {
  FakeHost host;
  TopologyMachine{.threadsPerCore = 1}.installOn(host);
  makeHybrid(host);
  host.files["/sys/devices/cpu_core/cpus"] = "0\n";
  host.files["/sys/devices/cpu_atom/cpus"] = "1-2\n";
  host.files["/sys/devices/cpu_lowpower/cpus"] = "3\n";
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(coresOfKind(inventory.packages[0], CoreKind::kPerformance), 1u);
  EXPECT_EQ(coresOfKind(inventory.packages[0], CoreKind::kEfficiency), 3u);
}

TEST(CpuInventory, elseEachCoreIsAsked_andAFastOneSpeaksForThePackage) {
  FakeHost host;
  TopologyMachine{.threadsPerCore = 1}.installOn(host);
  makeHybrid(host);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(coresOfKind(inventory.packages[0], CoreKind::kPerformance), 2u);
  EXPECT_EQ(coresOfKind(inventory.packages[0], CoreKind::kEfficiency), 2u);
  EXPECT_EQ(baseClockMhz(inventory.packages[0].leaves), 2100u);
  EXPECT_EQ(inventory.outcome.status(), OutcomeStatus::kComplete);
}

TEST(CpuInventory, kindsThatNotAllCoresTellAreUnknown) {
  FakeHost host;
  TopologyMachine{.threadsPerCore = 1}.installOn(host);
  makeHybrid(host);
  host.cpuidOfCpus.erase(3);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(coresOfKind(inventory.packages[0], CoreKind::kPerformance), std::nullopt);
  EXPECT_EQ(inventory.outcome.status(), OutcomeStatus::kPartial);
}

TEST(CpuInventory, eachPackageTellsItsOwnLeaves) {
  FakeHost host;
  TopologyMachine{.packages = 2, .coresPerPackage = 1, .threadsPerCore = 1}.installOn(host);
  host.cpuidLeaves[{0x16, 0}] = {9999, 0, 0, 0};
  host.cpuidOfCpus[0][{0x16, 0}] = {2100, 0, 0, 0};
  host.cpuidOfCpus[1][{0x16, 0}] = {2600, 0, 0, 0};
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(baseClockMhz(inventory.packages[0].leaves), 2100u);
  EXPECT_EQ(baseClockMhz(inventory.packages[1].leaves), 2600u);
}

TEST(CpuInventory, aPackageThatMayNotBeEnteredTellsWhatTheKernelSays) {
  FakeHost host;
  TopologyMachine{.packages = 2, .coresPerPackage = 1, .threadsPerCore = 1}.installOn(host);
  host.cpuidLeaves[{1, 0}] = {0x406F1, 0, 0, 0};
  host.cpuidOfCpus[0][{1, 0}] = {0x406F1, 0, 0, 0};
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 2u);
  EXPECT_TRUE(inventory.packages[1].leaves.empty());
  EXPECT_EQ(inventory.packages[1].cpuinfo->model, 79u);
  EXPECT_EQ(inventory.packages[1].microcode, "0xb000040");
  EXPECT_EQ(inventory.outcome.reason(), "CPUID of some packages: may not run on them");
}

TEST(CpuInventory, aContainersShareDoesNotShrinkTheMachine) {
  FakeHost host;
  const TopologyMachine machine{.packages = 2};
  machine.installOn(host);
  // As a container file system shows it: its own share, numbered anew.
  host.files["/sys/devices/system/cpu/online"] = "0-1\n";
  host.files["/proc/cpuinfo"] =
      TopologyMachine{.coresPerPackage = 2, .threadsPerCore = 1}.cpuinfo();
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(inventory.online, 16u);
  EXPECT_EQ(inventory.packages.size(), 2u);
  EXPECT_TRUE(inventory.packages[0].cpuinfo);
  EXPECT_FALSE(inventory.packages[1].cpuinfo);
}

TEST(CpuInventory, cpuinfoCountsWhereThereAreNoTopologyFiles) {
  FakeHost host;
  host.files["/proc/cpuinfo"] = TopologyMachine{.packages = 2}.cpuinfo();
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 2u);
  EXPECT_EQ(inventory.packages[1].cores.size(), 4u);
  EXPECT_EQ(mostThreadsOfACore(inventory.packages[1]), 2u);
  EXPECT_EQ(inventory.outcome.status(), OutcomeStatus::kPartial);
}

TEST(CpuInventory, processorsWithoutAnyPlaceShareOnePackage) {
  FakeHost host;
  host.files["/proc/cpuinfo"] = "processor : 0\nmodel : 1\n\nprocessor : 1\nmodel : 1\n";
  const CpuInventory inventory = readCpus();
  ASSERT_EQ(inventory.packages.size(), 1u);
  EXPECT_EQ(inventory.packages[0].cores.size(), 2u);
  EXPECT_EQ(inventory.packages[0].cpuinfo->model, 1u);
}

TEST(CpuInventory, coreIdsThatRepeatInNodesDoNotHideCores) {
  FakeHost host;
  std::string text;
  for (int cpu = 0; cpu < 4; ++cpu) {
    text += "processor : " + std::to_string(cpu) +
            "\nphysical id : 0\ncore id : " + std::to_string(cpu % 2) + "\ncpu cores : 4\n\n";
  }
  host.files["/proc/cpuinfo"] = text;
  EXPECT_EQ(readCpus().packages[0].cores.size(), 4u);
}

TEST(CpuInventory, cpuidAloneGivesTheProcessorsThatTheCLibraryCounts) {
  FakeHost host;
  host.nprocs = 3;
  host.cpuidLeaves[{0, 0}] = {1, 0, 0, 0};
  host.cpuidLeaves[{1, 0}] = {0x406F1, 0, 0, 0};
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(inventory.online, 3u);
  EXPECT_EQ(inventory.packages.size(), 3u);
}

TEST(CpuInventory, nothingToldIsNoSource) {
  FakeHost host;
  const CpuInventory inventory = readCpus();
  EXPECT_TRUE(inventory.packages.empty());
  EXPECT_EQ(inventory.outcome.status(), OutcomeStatus::kNoSource);
}

TEST(CpuInventory, speedsAreTheFastCoresBaseAndTheHighestOfAll) {
  FakeHost host;
  TopologyMachine{.threadsPerCore = 1}.installOn(host);
  const std::string cpu = "/sys/devices/system/cpu/cpu";
  for (const char* number : {"0", "1", "2", "3"}) {
    host.files[cpu + number + "/cpufreq/cpuinfo_max_freq"] = "4600000\n";
  }
  host.files[cpu + "2/cpufreq/cpuinfo_max_freq"] = "4700000\n";
  host.files[cpu + "0/cpufreq/base_frequency"] = "2100000\n";
  host.files[cpu + "0/acpi_cppc/nominal_freq"] = "2000\n";
  host.files[cpu + "0/topology/ppin"] = "0x12ab\n";
  const CpuInventory inventory = readCpus();
  const CpuPackage& package = inventory.packages[0];
  EXPECT_EQ(package.maxKhz, 4700000u);
  EXPECT_EQ(package.baseKhz, 2100000u);
  EXPECT_EQ(package.nominalMhz, 2000u);
  EXPECT_EQ(package.serialNumber, "0x12ab");
}

size_t opensFor(uint32_t coresPerPackage) {
  FakeHost host;
  TopologyMachine{.packages = 4, .coresPerPackage = coresPerPackage}.installOn(host);
  EXPECT_EQ(readCpus().online, 8 * coresPerPackage);
  return host.opened.size();
}

TEST(CpuInventory, readingIsLinearInTheCores) {
  const size_t small = opensFor(4);
  const size_t large = opensFor(32);
  EXPECT_LT(large, small * 8);
  EXPECT_LT(large, 32u * 4 * 10);  // files per core, not per thread
}

TEST(CpuInventory, aThousandProcessorsNeedNoMoreTextThanOneBlockPerPackage) {
  FakeHost host;
  const TopologyMachine machine{
      .packages = 2, .coresPerPackage = 256, .flags = std::string(1500, 'f')};
  machine.installOn(host);
  ASSERT_GT(host.files["/proc/cpuinfo"].size(), 1u << 20);
  const CpuInventory inventory = readCpus();
  EXPECT_EQ(inventory.online, 1024u);
  EXPECT_EQ(inventory.packages[1].cores.size(), 256u);
  EXPECT_EQ(inventory.packages[1].cpuinfo->model, 79u);
}

}  // namespace
}  // namespace quenlor::test
