#include "readers/cpuid/CpuidCommand.h"

#include <gtest/gtest.h>
#include <sched.h>

#include <algorithm>

#include "tests/readers/cpuid/CpuMachine.h"
#include "tests/support/FakeHost.h"

namespace quenlor::test {
namespace {

struct Counts {
  int packages;
  int cores;
  int threads;
  int active;
  bool operator==(const Counts&) const = default;
};

void PrintTo(const Counts& counts, std::ostream* out) {
  *out << counts.packages << " packages, " << counts.cores << " cores, " << counts.threads
       << " threads, " << counts.active << " active cores";
}

Counts countsOf(const VtExecInfo* result) {
  return {vtGetValue(result, nullptr, "PhysicalPackageCount", -1),
          vtGetValue(result, "Processor.CPUID", "CorePerPackageCount", -1),
          vtGetValue(result, "Processor.CPUID", "HtPerCoreCount", -1),
          vtGetValue(result, nullptr, "ActiveCoreCount", -1)};
}

Counts countsOn(const CpuMachine& machine) {
  FakeHost host;
  machine.installOn(host);
  const auto result = runCpuidCommand();
  EXPECT_EQ(host.openDescriptors(), 0);
  return countsOf(result.get());
}

CpuMachine machineOf(unsigned packages, unsigned cores, unsigned threads) {
  CpuMachine machine;
  machine.packages = packages;
  machine.coresPerPackage = cores;
  machine.threadsPerCore = threads;
  return machine;
}

TEST(CpuidCommand, identityOfAnIntelServer) {
  FakeHost host;
  CpuMachine().installOn(host);
  const auto result = runCpuidCommand();
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->status, 0);
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Manufacturer", ""), "Intel");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Family", ""), "Xeon");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Type", ""), "Original OEM Processor");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor.CPUID", "BrandString", ""),
               "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor.CPUID", "Signature", ""), "000406F1");
  EXPECT_EQ(vtGetValue(result.get(), "Processor", "CpuClockMHz", -1), 2400);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.L2Cache", "Size", -1), 256);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.Features", "IEM64T", -1), 1);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.Features", "LM", -1), 1);
  EXPECT_EQ(host.openDescriptors(), 0);
}

TEST(CpuidCommand, identityOfAnAmdServer) {
  CpuMachine machine = machineOf(2, 64, 2);
  machine.vendor = "AuthenticAMD";
  machine.brand = "AMD EPYC 7742 64-Core Processor";
  machine.signature = 0x00830F10;
  machine.mhz = "2245.780";
  machine.l2KiloBytes = 512;
  FakeHost host;
  machine.installOn(host);
  const auto result = runCpuidCommand();
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Manufacturer", ""), "AMD");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Family", ""), "EPYC");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor.CPUID", "Signature", ""), "00830F10");
  EXPECT_EQ(vtGetValue(result.get(), "Processor", "CpuClockMHz", -1), 2246);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.L2Cache", "Size", -1), 512);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.Features", "IEM64T", -1), -1);
  EXPECT_EQ(vtGetValue(result.get(), "Processor.Features", "LM", -1), 1);
  EXPECT_EQ(countsOf(result.get()), (Counts{2, 64, 2, 128}));
}

TEST(CpuidCommand, countsOneAndTwoPackagesWithAndWithoutThreads) {
  for (const bool hasSys : {true, false}) {
    for (const bool hasCpuinfoTopology : {true, false}) {
      for (const auto& [packages, cores, threads] :
           {std::tuple{1u, 4u, 1u}, {1u, 4u, 2u}, {2u, 4u, 1u}, {2u, 14u, 2u}, {1u, 1u, 1u}}) {
        CpuMachine machine = machineOf(packages, cores, threads);
        machine.hasSysTopology = hasSys;
        machine.hasCpuinfoTopology = hasCpuinfoTopology;
        const Counts expected{static_cast<int>(packages), static_cast<int>(cores),
                              static_cast<int>(threads), static_cast<int>(packages * cores)};
        EXPECT_EQ(countsOn(machine), expected) << (hasSys               ? "/sys"
                                                   : hasCpuinfoTopology ? "cpuinfo"
                                                                        : "CPUID");
      }
    }
  }
}

TEST(CpuidCommand, countsWithoutSysAndCpuinfoAreThoseOfTheProcessor) {
  CpuMachine machine = machineOf(2, 4, 2);
  machine.hasSysTopology = false;
  machine.hasCpuinfo = false;
  EXPECT_EQ(countsOn(machine), (Counts{2, 4, 2, 8}));
}

TEST(CpuidCommand, emptySysDirectoryOfAContainerIsNoTopology) {
  CpuMachine machine = machineOf(2, 4, 2);
  machine.hasSysTopology = false;
  FakeHost host;
  machine.installOn(host);
  host.directories["/sys/devices/system/cpu"] = {"cpu0", "cpu1", "online"};
  EXPECT_EQ(countsOf(runCpuidCommand().get()), (Counts{2, 4, 2, 8}));
}

TEST(CpuidCommand, offlineThreadsAreThreadsOfTheProcessorAllTheSame) {
  CpuMachine machine = machineOf(1, 4, 2);
  machine.offline = {4, 5, 6, 7};  // as with "nosmt"
  EXPECT_EQ(countsOn(machine), (Counts{1, 4, 2, 4}));
}

TEST(CpuidCommand, offlineCoresBelongToThePackageButAreNotActive) {
  CpuMachine machine = machineOf(1, 4, 1);
  machine.offline = {2, 3};
  EXPECT_EQ(countsOn(machine), (Counts{1, 4, 1, 2}));
}

TEST(CpuidCommand, packageWithAllCpusOfflineIsStillAPackage) {
  CpuMachine machine = machineOf(2, 2, 2);
  machine.offline = {2, 3, 6, 7};
  EXPECT_EQ(countsOn(machine), (Counts{2, 2, 2, 2}));
}

TEST(CpuidCommand, offlineCpusWithoutATopologyLeafFallBackToTheLegacyLeaves) {
  CpuMachine machine = machineOf(1, 2, 2);
  machine.hasTopologyLeaf = false;
  machine.offline = {1, 3};
  FakeHost host;
  machine.installOn(host);
  host.cpuidLeaves[{4, 0}] = {.eax = 1 | 1u << 5 | 1u << 26};  // two cores
  EXPECT_EQ(countsOf(runCpuidCommand().get()), (Counts{1, 2, 2, 1}));
}

TEST(CpuidCommand, coreIdsServeWhereTheKernelListsNoSiblings) {
  CpuMachine machine = machineOf(2, 2, 2);
  FakeHost host;
  machine.installOn(host);
  std::erase_if(host.files,
                [](const auto& file) { return file.first.ends_with("thread_siblings_list"); });
  EXPECT_EQ(countsOf(runCpuidCommand().get()), (Counts{2, 2, 2, 4}));
}

TEST(CpuidCommand, unknownPackageIdFallsBackToTheListOfThePackage) {
  FakeHost host;
  CpuMachine machine = machineOf(2, 1, 1);
  machine.installOn(host);
  for (const char* cpu : {"0", "1"}) {
    const std::string topology = std::string("/sys/devices/system/cpu/cpu") + cpu + "/topology/";
    host.files[topology + "physical_package_id"] = "-1\n";
    host.files[topology + "core_siblings_list"] = std::string(cpu) + "\n";
  }
  EXPECT_EQ(countsOf(runCpuidCommand().get()), (Counts{2, 1, 1, 2}));
}

TEST(CpuidCommand, affinityAndUnpluggedCountsOfTheLibraryDoNotMatter) {
  CpuMachine machine = machineOf(2, 4, 2);
  FakeHost host;
  machine.installOn(host);
  host.nprocs = 1;
  EXPECT_EQ(countsOf(runCpuidCommand().get()), (Counts{2, 4, 2, 8}));
}

TEST(CpuidCommand, restrictedAffinityMaskChangesNothingOnThisMachine) {
  cpu_set_t before;
  ASSERT_EQ(sched_getaffinity(0, sizeof before, &before), 0);
  const auto unrestricted = runCpuidCommand();
  cpu_set_t one;
  CPU_ZERO(&one);
  for (int cpu = CPU_SETSIZE - 1; cpu >= 0 && CPU_COUNT(&one) == 0; --cpu) {
    if (CPU_ISSET(cpu, &before)) CPU_SET(cpu, &one);
  }
  ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
  const auto restricted = runCpuidCommand();
  sched_setaffinity(0, sizeof before, &before);
  ASSERT_NE(unrestricted, nullptr);
  ASSERT_NE(restricted, nullptr);
  EXPECT_EQ(countsOf(restricted.get()), countsOf(unrestricted.get()));
}

TEST(CpuidCommand, kernelAloneGivesCountsWithStatus1) {
  CpuMachine machine = machineOf(2, 4, 1);
  machine.hasCpuid = false;
  FakeHost host;
  machine.installOn(host);
  const auto result = runCpuidCommand();
  ASSERT_NE(result, nullptr);
  EXPECT_EQ(result->status, 1);
  EXPECT_EQ(countsOf(result.get()), (Counts{2, 4, 1, 8}));
  EXPECT_STREQ(vtGetValue(result.get(), "Processor", "Manufacturer", "none"), "none");
  EXPECT_STREQ(vtGetValue(result.get(), "Processor.CPUID", "Signature", "none"), "none");
  EXPECT_EQ(vtGetValue(result.get(), "Processor", "CpuClockMHz", -1), 2400);
}

TEST(CpuidCommand, clockComesFromTheFrequencyLeafBeforeTheBrand) {
  FakeHost host;
  CpuMachine().installOn(host);
  host.cpuidLeaves[{0x16, 0}] = {.eax = 2300};
  EXPECT_EQ(vtGetValue(runCpuidCommand().get(), "Processor", "CpuClockMHz", -1), 2300);
  host.cpuidLeaves[{0x16, 0}] = {};
  EXPECT_EQ(vtGetValue(runCpuidCommand().get(), "Processor", "CpuClockMHz", -1), 2400);
}

TEST(CpuidCommand, clockIsAbsentWhereNobodyTellsIt) {
  CpuMachine machine;
  machine.brand = "QEMU Virtual CPU version 2.5+";
  for (const char* mhz : {"", "-1", "nan", "inf", "1e300"}) {
    machine.mhz = mhz;
    FakeHost host;
    machine.installOn(host);
    EXPECT_EQ(vtGetValue(runCpuidCommand().get(), "Processor", "CpuClockMHz", -1), -1) << mhz;
  }
}

TEST(CpuidCommand, level2SizeFallsBackToTheKernelsCacheFiles) {
  CpuMachine machine;
  machine.l2KiloBytes = 0;
  FakeHost host;
  machine.installOn(host);
  const std::string cache = "/sys/devices/system/cpu/cpu0/cache/index";
  for (const auto& [index, level, size] :
       {std::tuple{"0", "1", "32K"}, {"1", "1", "32K"}, {"2", "2", "1024K"}, {"3", "3", "8M"}}) {
    host.files[cache + index + "/level"] = std::string(level) + "\n";
    host.files[cache + index + "/size"] = std::string(size) + "\n";
  }
  EXPECT_EQ(vtGetValue(runCpuidCommand().get(), "Processor.L2Cache", "Size", -1), 1024);
  host.files.erase(cache + "2/size");
  EXPECT_EQ(vtGetValue(runCpuidCommand().get(), "Processor.L2Cache", "Size", -1), -1);
}

TEST(CpuidCommand, processorThatNeverEndsItsSubleavesEndsTheReading) {
  class EndlessHost : public FakeHost {
   public:
    bool cpuid(uint32_t, uint32_t, CpuidRegisters* out) override {
      ++calls;
      *out = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
      return true;
    }
    int calls = 0;
  } host;
  EXPECT_NE(runCpuidCommand(), nullptr);
  EXPECT_LT(host.calls, 100);
}

TEST(CpuidCommand, machineWith256CpusAndLongFlagsLines) {
  CpuMachine machine = machineOf(2, 64, 2);
  for (int i = 0; i < 300; ++i) machine.flags += " feature" + std::to_string(i);
  EXPECT_EQ(countsOn(machine), (Counts{2, 64, 2, 128}));
  machine.hasSysTopology = false;
  EXPECT_EQ(countsOn(machine), (Counts{2, 64, 2, 128}));
}

}  // namespace
}  // namespace quenlor::test
