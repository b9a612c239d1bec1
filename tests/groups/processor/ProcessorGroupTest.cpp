#include "groups/processor/ProcessorGroup.h"

#include <gtest/gtest.h>

#include <optional>

#include "factory/GroupFactory.h"
#include "identity/Identity.h"
#include "tests/groups/FirmwareScope.h"
#include "tests/readers/cpuid/CpuMachine.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor::test {
namespace {

constexpr Version kVersion{2, 4};

FirmwareTable populated(unsigned processors, const Processor& like = {}) {
  FirmwareTable table(kVersion);
  for (unsigned i = 0; i < processors; ++i) table.add(like);
  return table;
}

// The two-socket server of the days of the first hyper-threading.
CpuMachine oldServer() {
  CpuMachine machine;
  machine.packages = 2;
  machine.coresPerPackage = 1;
  machine.threadsPerCore = 2;
  machine.brand = "Intel(R) Xeon(TM) CPU 2.80GHz";
  machine.family = 15;
  machine.model = 2;
  machine.stepping = 9;
  machine.mhz = "2793.191";
  machine.flags = "fpu vme de pse tsc msr pae mce cx8 apic sep mtrr ht";
  return machine;
}

class ProcessorGroupTest : public testing::Test {
 protected:
  std::vector<RowValues> rows() {
    std::vector<RowValues> collected = collect<ProcessorGroup>();
    EXPECT_EQ(m_host.openDescriptors(), 0);
    return collected;
  }
  RowValues onlyRow() {
    const std::vector<RowValues> collected = rows();
    EXPECT_EQ(collected.size(), 1u);
    return collected.empty() ? RowValues() : collected[0];
  }
  void cpuinfo(const std::string& text, int nprocs = 1) {
    m_host.files["/proc/cpuinfo"] = text;
    m_host.nprocs = nprocs;
  }
  void firmware(const FirmwareTable& table) { m_firmware.emplace(m_host, table); }

  FakeHost m_host;
  std::optional<FirmwareScope> m_firmware;
};

TEST_F(ProcessorGroupTest, twoSocketServerWithHyperThreadingHasTwoRows) {
  oldServer().installOn(m_host);
  firmware(populated(2));
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  for (const RowValues& row : found) {
    EXPECT_EQ(valueOf(row, 42), "H");
    EXPECT_EQ(valueOf(row, 3), "Unknown");
    EXPECT_EQ(valueOf(row, 4), "2800");
    EXPECT_EQ(valueOf(row, 5), "2800");
    EXPECT_EQ(valueOf(row, 7), "GenuineIntel");
    EXPECT_EQ(valueOf(row, 10), "15");
    EXPECT_EQ(valueOf(row, 11), "2");
    EXPECT_EQ(valueOf(row, 12), "9");
  }
  EXPECT_EQ(valueOf(found[0], 1), "1");
  EXPECT_EQ(valueOf(found[1], 1), "2");
  EXPECT_EQ(valueOf(found[0], 2), valueOf(found[1], 2));
}

TEST_F(ProcessorGroupTest, attributesComeInTheOrderOfTheirIds) {
  oldServer().installOn(m_host);
  Processor record;
  record.externalClock = 133;
  record.upgrade = 4;
  firmware(populated(2, record));
  std::vector<uint32_t> ids;
  const RowValues row = rows().at(0);
  for (const auto& [id, value] : row) ids.push_back(id);
  std::vector<uint32_t> expected = {1, 2, 3, 4, 5, 6, 7, 9};
  for (uint32_t id = 10; id <= 35; ++id) expected.push_back(id);
  expected.push_back(42);
  EXPECT_EQ(ids, expected);
}

TEST_F(ProcessorGroupTest, moreSiblingsThanProcessorLinesLeaveTheCountAlone) {
  CapturedTraces trace;
  cpuinfo("processor\t: 0\nsiblings\t: 4\nflags\t\t: ht\n\nprocessor\t: 1\n", 2);
  EXPECT_EQ(rows().size(), 2u);
  EXPECT_TRUE(
      trace.contains("hardware Hyperthreading detected but the number of CPUs is less than the "
                     "number of logical CPUs"));
  EXPECT_TRUE(trace.contains("hardware left the number of CPUs unchanged"));
  EXPECT_TRUE(trace.contains("hardware API and cpuinfo processor counts match"));
}

TEST_F(ProcessorGroupTest, dividedCountReplacesTheCountOfTheLibrary) {
  CapturedTraces trace;
  cpuinfo("processor\t: 0\nsiblings\t: 2\nflags\t\t: ht\nprocessor\t: 1\nprocessor\t: 2\n", 7);
  EXPECT_EQ(rows().size(), 1u);
  EXPECT_TRUE(trace.contains("hardware API and cpuinfo processor counts don't match"));
}

TEST_F(ProcessorGroupTest, siblingsWithoutTheFlagAreNoHyperThreading) {
  cpuinfo("processor\t: 0\nsiblings\t: 2\nflags\t\t: fpu\nprocessor\t: 1\n", 2);
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(valueOf(found[0], 42), "(absent)");
}

TEST_F(ProcessorGroupTest, flagWithoutSiblingsIsNoHyperThreading) {
  cpuinfo("processor\t: 0\nflags\t\t: ht\nprocessor\t: 1\n", 2);
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(valueOf(found[0], 42), "(absent)");
}

TEST_F(ProcessorGroupTest, zeroAndNegativeSiblingsNeverDivide) {
  for (const char* siblings : {"0", "-2", "x"}) {
    cpuinfo(std::string("processor\t: 0\nsiblings\t: ") + siblings + "\nflags\t\t: ht\n", 1);
    EXPECT_EQ(rows().size(), 1u) << siblings;
  }
}

TEST_F(ProcessorGroupTest, firmwareWithOneSocketCapsTwoLogicalProcessors) {
  cpuinfo("processor\t: 0\nflags\t\t: fpu\nprocessor\t: 1\n", 2);
  firmware(populated(1));
  EXPECT_EQ(rows().size(), 1u);
}

// The comparison is unsigned: meant so.
TEST_F(ProcessorGroupTest, negativeCountIsAboveAnyOfTheFirmware) {
  m_host.nprocs = -1;
  firmware(populated(2));
  EXPECT_EQ(rows().size(), 2u);
}

TEST_F(ProcessorGroupTest, firmwareWithMoreSocketsRaisesNothing) {
  CapturedTraces trace;
  cpuinfo("processor\t: 0\nprocessor\t: 1\n", 2);
  firmware(populated(4));
  EXPECT_EQ(rows().size(), 2u);
  EXPECT_FALSE(trace.contains("***Processor count"));
  EXPECT_TRUE(trace.contains("hardware SMBIOS Populated Processors = 4"));
}

TEST_F(ProcessorGroupTest, firmwareWithoutProcessorsCapsNothing) {
  CapturedTraces trace;
  cpuinfo("processor\t: 0\nprocessor\t: 1\n", 2);
  EXPECT_EQ(rows().size(), 2u);
  EXPECT_TRUE(trace.contains("hardware ***Processor count == SMBIOS count or SMBIOS count == 0"));
  EXPECT_TRUE(trace.contains("hardware ***Hyperthreading check not useful"));
}

TEST_F(ProcessorGroupTest, clockIsRatedWithoutItsFraction) {
  cpuinfo("cpu MHz\t\t: 1993.620\n");
  EXPECT_EQ(valueOf(onlyRow(), 4), "2000");
  cpuinfo("cpu MHz\t\t: 2666.9\n");
  EXPECT_EQ(valueOf(onlyRow(), 4), "2666");
  cpuinfo("cpu MHz\t\t: -5\n");
  EXPECT_EQ(valueOf(onlyRow(), 4), "0");
}

TEST_F(ProcessorGroupTest, firmwareGivesTheCurrentSpeedAndTheRest) {
  cpuinfo("cpu MHz\t\t: 1993.620\n");
  Processor record;
  record.currentSpeed = 1995;
  record.externalClock = 100;
  record.upgrade = 4;
  firmware(populated(1, record));
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 4), "2000");
  EXPECT_EQ(valueOf(row, 5), "1995");
  EXPECT_EQ(valueOf(row, 6), "100");
  EXPECT_EQ(valueOf(row, 9), "4");
}

TEST_F(ProcessorGroupTest, zeroOfTheFirmwareLeavesClockAndInterfaceOut) {
  cpuinfo("cpu MHz\t\t: 1993.620\n");
  firmware(populated(1));
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 5), "2000");
  EXPECT_EQ(valueOf(row, 6), "(absent)");
  EXPECT_EQ(valueOf(row, 9), "(absent)");
}

TEST_F(ProcessorGroupTest, interfaceIsStoredAsANumber_writersPrintItsEnumeration) {
  Processor record;
  record.upgrade = 4;
  firmware(populated(1, record));
  ProcessorGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  table->reset();
  VelTableRow* row = table->getNext();
  ASSERT_NE(row, nullptr);
  row->reset();
  while (VelTableAttrib* attrib = row->getNext()) {
    if (attrib->getId() == 9) {
      EXPECT_EQ(attrib->getType(), VEL_ULONG);
      return;
    }
  }
  FAIL() << "no interface";
}

TEST_F(ProcessorGroupTest, firmwareFeaturesServeWithoutAFlagsLine) {
  cpuinfo("processor\t: 0\n");
  Processor record;
  record.edx = 0xFFFFFFFF;
  firmware(populated(1, record));
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 13), std::to_string(0x7FFFFFFF));
  EXPECT_EQ(valueOf(row, 14), "Y");
  EXPECT_EQ(valueOf(row, 35), "(absent)");
  EXPECT_EQ(valueOf(row, 42), "(absent)");  // no siblings
}

TEST_F(ProcessorGroupTest, flagsLineReplacesTheFirmwareFeatures) {
  cpuinfo("processor\t: 0\nflags\t\t: fpu sse2\n");
  Processor record;
  record.edx = 0xFFFFFFFF;
  firmware(populated(1, record));
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 13), std::to_string(1u | 1u << 25 | 1u << 26));
  EXPECT_EQ(valueOf(row, 14), "Y");
  EXPECT_EQ(valueOf(row, 15), "N");
  EXPECT_EQ(valueOf(row, 34), "Y");
  EXPECT_EQ(valueOf(row, 35), "N");
}

TEST_F(ProcessorGroupTest, emptyFlagsLineIsAFlagsLine) {
  cpuinfo("flags:\n");
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 13), "0");
  EXPECT_EQ(valueOf(row, 35), "N");
}

TEST_F(ProcessorGroupTest, eachFlagAttributeFollowsItsOwnFlag) {
  const std::pair<uint32_t, const char*> kFlags[] = {
      {14, "fpu"}, {15, "vme"},  {16, "de"},   {17, "pse"},  {18, "tsc"},   {19, "msr"},
      {20, "pae"}, {21, "mce"},  {22, "cx8"},  {23, "apic"}, {24, "sep"},   {25, "mtrr"},
      {26, "pge"}, {27, "mca"},  {28, "cmov"}, {29, "pat"},  {30, "pse36"}, {31, "psn"},
      {32, "mmx"}, {33, "fxsr"}, {34, "xmm"}};
  for (const auto& [id, flag] : kFlags) {
    cpuinfo(std::string("flags\t\t: ") + flag + "\n");
    const RowValues row = onlyRow();
    for (uint32_t other = 14; other <= 34; ++other) {
      const bool expected = other == id || (id == 30 && other == 17);  // "pse" within "pse36"
      EXPECT_EQ(valueOf(row, other), expected ? "Y" : "N") << flag << " " << other;
    }
  }
}

TEST_F(ProcessorGroupTest, threeDNowInTheTailOfALongFlagsLineDoesNotCount) {
  cpuinfo("flags\t\t: " + std::string(246, 'a') + "3dnow 3dnowext\n");
  EXPECT_EQ(valueOf(onlyRow(), 35), "N");
  cpuinfo("flags\t\t: " + std::string(241, 'a') + "3dnow 3dnowext\n");
  EXPECT_EQ(valueOf(onlyRow(), 35), "Y");
}

TEST_F(ProcessorGroupTest, identityIsTheDigestOfTheValuesRunTogether) {
  oldServer().installOn(m_host);
  Processor record;
  record.family = 0xB3;
  record.currentSpeed = 2790;
  record.externalClock = 133;
  record.upgrade = 4;
  firmware(populated(2, record));
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(valueOf(found[0], 2), md5Text("GenuineIntel280027901529"
                                          "10001bff"
                                          "1334179"));
}

TEST_F(ProcessorGroupTest, identityTakesTheRatedClockWhereTheFirmwareHasNone) {
  cpuinfo("vendor_id\t: X\ncpu MHz\t\t: 1993.620\n");
  EXPECT_EQ(valueOf(onlyRow(), 2), md5Text("X200020000000000"));
}

TEST_F(ProcessorGroupTest, missingCpuinfoStillGivesARowPerProcessor) {
  m_host.nprocs = 3;
  const auto found = rows();
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(valueOf(found[2], 1), "3");
  EXPECT_EQ(valueOf(found[0], 3), "Unknown");
  EXPECT_EQ(valueOf(found[0], 4), "0");
  EXPECT_EQ(valueOf(found[0], 7), "");
  EXPECT_EQ(valueOf(found[0], 35), "(absent)");
}

TEST_F(ProcessorGroupTest, countOfZeroOrLessGivesAnEmptyTable) {
  for (const int count : {0, -1}) {
    m_host.nprocs = count;
    ProcessorGroup group;
    const std::unique_ptr<VelTable> table(group.getTable());
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->getNumRows(), 0u);
  }
}

TEST_F(ProcessorGroupTest, tableIsGroup2Version1) {
  ProcessorGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 2u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
}

TEST_F(ProcessorGroupTest, amdProcessorWithoutADescriptionIsUnknown) {
  cpuinfo("vendor_id\t: AuthenticAMD\ncpu family\t: 99\nmodel\t\t: 1\nmodel name\t: AMD Thing\n");
  const RowValues row = onlyRow();
  EXPECT_EQ(valueOf(row, 3), "Unknown");
  EXPECT_EQ(valueOf(row, 7), "AuthenticAMD");
}

TEST_F(ProcessorGroupTest, machineWith256CpusAndLongFlagsLines) {
  CpuMachine machine;
  machine.packages = 2;
  machine.coresPerPackage = 64;
  for (int i = 0; i < 200; ++i) machine.flags += " 3feature" + std::to_string(i);
  machine.flags += " 3dnow";
  machine.installOn(m_host);
  firmware(populated(2));
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(valueOf(found[1], 42), "H");
  EXPECT_EQ(valueOf(found[1], 35), "N");
}

TEST_F(ProcessorGroupTest, tracesWhatItFound) {
  CapturedTraces trace;
  oldServer().installOn(m_host);
  m_host.nprocsConf = 8;
  firmware(populated(2));
  rows();
  for (const char* text : {"ProcessorGroup Group config file=",
                           "number of procs available = 8",
                           "number of procs on line = 4",
                           "number of procs the os is configured =8",
                           "number of procs available get_nprocs() count= 4",
                           "SM_cpuspeed= 0 SM_cpuflags= 00000000",
                           "API and cpuinfo processor counts match",
                           "pcount= 4",
                           "logical procs= 2",
                           "SMBIOS Populated Processors = 2",
                           "Hyperthreading detected: Physical CPU count= 2",
                           "cpuenum= 0",
                           "CPU_Family=Unknown",
                           "md5out= ",
                           "family= 15",
                           "model= 2",
                           "stepping= 9",
                           "speed= 2800",
                           "extspd= 0",
                           "interface= 0",
                           "return = Unknown"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
  EXPECT_TRUE(trace.contains("../../../src/invscan/linux/ProcessorGroup.cpp"));
}

TEST_F(ProcessorGroupTest, countsThatOnlyATraceWantsAreNotAskedForWithoutOne) {
  class CountingHost : public FakeHost {
   public:
    long sysconf(int name) override {
      ++asked;
      return FakeHost::sysconf(name);
    }
    int asked = 0;
  } host;
  collect<ProcessorGroup>();
  EXPECT_EQ(host.asked, 0);
}

}  // namespace
}  // namespace quenlor::test
