#include "groups/processor/PhysicalProcessorGroup.h"

#include <gtest/gtest.h>

#include "tests/readers/cpuid/CpuMachine.h"
#include "tests/readers/virtualization/VmwareGuest.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor::test {
namespace {

RowValues expectedRow(const std::string& id, std::vector<std::string> rest) {
  RowValues row{{1, id}};
  for (uint32_t attrib = 2; attrib <= 12; ++attrib) row.emplace_back(attrib, rest[attrib - 2]);
  return row;
}

class PhysicalProcessorGroupTest : public testing::Test {
 protected:
  std::vector<RowValues> rows() {
    std::vector<RowValues> collected = collect<PhysicalProcessorGroup>();
    EXPECT_EQ(m_host.openDescriptors(), 0);
    EXPECT_EQ(m_host.openCommands(), 0);
    return collected;
  }
  void becomeGuest(const std::string& description) {
    becomeVmwareGuest(m_host);
    setAgentValue(m_host, "dov_physical_processor", description);
  }

  FakeHost m_host;
};

TEST_F(PhysicalProcessorGroupTest, realMachineHasARowPerPackageInIdOrder) {
  CpuMachine machine;
  machine.packages = 2;
  machine.installOn(m_host);
  const std::vector<std::string> rest = {"4",
                                         "2",
                                         "Intel",
                                         "Xeon",
                                         "Original OEM Processor",
                                         "2400",
                                         "256",
                                         "0",
                                         "Intel(R) Xeon(R) CPU E5-2680 v4 @ 2.40GHz",
                                         "000406F1",
                                         "Y"};
  EXPECT_EQ(rows(), (std::vector<RowValues>{expectedRow("1", rest), expectedRow("2", rest)}));
  EXPECT_TRUE(m_host.started.empty());
}

TEST_F(PhysicalProcessorGroupTest, amdMachine) {
  CpuMachine machine;
  machine.vendor = "AuthenticAMD";
  machine.brand = "AMD EPYC 7742 64-Core Processor";
  machine.signature = 0x00830F10;
  machine.coresPerPackage = 64;
  machine.installOn(m_host);
  const auto found = rows();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(valueOf(found[0], 2), "64");
  EXPECT_EQ(valueOf(found[0], 4), "AMD");
  EXPECT_EQ(valueOf(found[0], 5), "EPYC");
  EXPECT_EQ(valueOf(found[0], 12), "Y");
}

TEST_F(PhysicalProcessorGroupTest, thirtyTwoBitProcessorIsNotSupportedThere) {
  CpuMachine machine;
  machine.installOn(m_host);
  m_host.cpuidLeaves.erase({0x80000001, 0});
  EXPECT_EQ(valueOf(rows().at(0), 12), "N");
}

TEST_F(PhysicalProcessorGroupTest, machineWhereCpuidCannotRunHasOneRowOfDefaults) {
  CapturedTraces trace;
  EXPECT_EQ(rows(), std::vector<RowValues>{expectedRow(
                        "1", {"0", "0", "Unknown", "Unknown", "", "0", "0", "0", "", "", ""})});
  EXPECT_TRUE(trace.contains("hardware [E] Cannot execute VT command"));
  EXPECT_TRUE(trace.contains("hardware Number of processors: -1"));
}

TEST_F(PhysicalProcessorGroupTest, failedStatusIsTracedAndTheValuesReadAllTheSame) {
  CapturedTraces trace;
  CpuMachine machine;
  machine.packages = 2;
  machine.hasCpuid = false;
  machine.installOn(m_host);
  const auto found = rows();
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(valueOf(found[0], 2), "4");
  EXPECT_EQ(valueOf(found[0], 4), "Unknown");
  EXPECT_EQ(valueOf(found[0], 6), "");
  EXPECT_EQ(valueOf(found[0], 12), "N");  // the features are read, and say nothing
  EXPECT_TRUE(trace.contains("hardware [E] VT command returned 1"));
  EXPECT_TRUE(trace.contains("hardware Default values from CPUID"));
  EXPECT_TRUE(trace.contains("hardware CPUID data retrieved"));
}

TEST_F(PhysicalProcessorGroupTest, guestWithAHostDescriptionReportsTheHost) {
  CapturedTraces trace;
  CpuMachine().installOn(m_host);
  becomeGuest("2:GenuineIntel:Xeon:MP:4:2:2933:64");
  const std::vector<std::string> rest = {
      "4", "2", "GenuineIntel", "Xeon", "MP", "2933", "0", "0", "", "", "Y"};
  EXPECT_EQ(rows(), (std::vector<RowValues>{expectedRow("1", rest), expectedRow("2", rest)}));
  EXPECT_EQ(m_host.started, std::vector<std::string>{agentCommand("dov_physical_processor")});
  for (const char* text :
       {"VMWare virtualization environment detected",
        "Getting host info. Method 1: PHYSICAL_PROCESSOR started.",
        "PHYSICAL_PROCESSOR='2:GenuineIntel:Xeon:MP:4:2:2933:64'",
        "Getting host info. Method 1: PHYSICAL_PROCESSOR completed successfully.",
        "Number of processors: 2", "Creating table for PhysicalProcessorGroup",
        "Adding package ID: 2", "Adding Manufacturer: GenuineIntel", "Adding Family: Xeon",
        "Adding Type: MP", "Adding Brand: ", "Adding Signature: "}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(PhysicalProcessorGroupTest, descriptionWithoutBitsLeaves64BitUnknown) {
  becomeGuest("1:GenuineIntel:Xeon:MP:4:2:2933");
  EXPECT_EQ(valueOf(rows().at(0), 12), "");
}

TEST_F(PhysicalProcessorGroupTest, negativeNumbersOfTheAgentBecomeZero) {
  becomeGuest("1:GenuineIntel:Xeon:MP:-4:-2:-2933:32");
  const auto found = rows();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(valueOf(found[0], 2), "0");
  EXPECT_EQ(valueOf(found[0], 3), "0");
  EXPECT_EQ(valueOf(found[0], 7), "0");
  EXPECT_EQ(valueOf(found[0], 12), "N");
}

TEST_F(PhysicalProcessorGroupTest, emptyManufacturerFallsBackToTheNodeCapacity) {
  CapturedTraces trace;
  CpuMachine().installOn(m_host);
  becomeGuest("2::Xeon:MP:4:2:2933:64");
  setAgentValue(m_host, "dov_node_capacity", "3");
  const auto found = rows();
  ASSERT_EQ(found.size(), 3u);
  EXPECT_EQ(valueOf(found[0], 4), "Intel");
  EXPECT_EQ(valueOf(found[0], 2), "4");
  EXPECT_EQ(valueOf(found[0], 8), "256");
  for (const char* text :
       {"Getting host info. Method 2: getNodeCapacity() started.",
        "Getting host info. Method 2: getNodeCapacity() returned nodeCapacity=3",
        "Getting host info. Method 2: getNodeCapacity() completed successfully."}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(PhysicalProcessorGroupTest, failedDescriptionFallsBackToTheNodeCapacity) {
  CapturedTraces trace;
  CpuMachine().installOn(m_host);
  becomeVmwareGuest(m_host);
  setAgentIgnorant(m_host, "dov_physical_processor");
  setAgentValue(m_host, "dov_node_capacity", "2");
  EXPECT_EQ(rows().size(), 2u);
  EXPECT_TRUE(trace.contains("hardware Getting host info. Method 1: PHYSICAL_PROCESSOR failed."));
}

TEST_F(PhysicalProcessorGroupTest, nodeCapacityWithoutCpuidGivesUnknownTexts) {
  CapturedTraces trace;
  becomeVmwareGuest(m_host);
  setAgentValue(m_host, "dov_node_capacity", "2");
  const std::vector<std::string> rest = {"0", "0", "Unknown", "Unknown", "Unknown", "0",
                                         "0", "0", "",        "",        "N"};
  EXPECT_EQ(rows(), (std::vector<RowValues>{expectedRow("1", rest), expectedRow("2", rest)}));
  EXPECT_TRUE(trace.contains("hardware ERROR! Failed to execute cpuid command"));
}

TEST_F(PhysicalProcessorGroupTest, nodeCapacityWithFailedCpuidReadsItAllTheSame) {
  CapturedTraces trace;
  CpuMachine machine;
  machine.hasCpuid = false;
  machine.installOn(m_host);
  becomeVmwareGuest(m_host);
  setAgentValue(m_host, "dov_node_capacity", "1");
  const auto found = rows();
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(valueOf(found[0], 2), "4");
  EXPECT_EQ(valueOf(found[0], 4), "Unknown");
  EXPECT_TRUE(trace.contains("hardware ERROR! cpuid command failed with error=1"));
}

constexpr const char* kNotReported =
    "hardware ERROR! Failed to determine node capacity in VMware guest. PhysicalProcessor group "
    "will not be reported.";

TEST_F(PhysicalProcessorGroupTest, nodeCapacityZeroIsReportedAsOneRowOfDefaultsAgainstTheMessage) {
  CapturedTraces trace("MIN");
  CpuMachine().installOn(m_host);
  becomeVmwareGuest(m_host);
  setAgentValue(m_host, "dov_node_capacity", "0");
  EXPECT_EQ(rows(), std::vector<RowValues>{expectedRow(
                        "1", {"0", "0", "Unknown", "Unknown", "", "0", "0", "0", "", "", ""})});
  EXPECT_TRUE(trace.contains(kNotReported));
}

TEST_F(PhysicalProcessorGroupTest, guestWithoutAnAgentIsOneRowOfDefaults) {
  CapturedTraces trace;
  becomeVmwareGuest(m_host);
  EXPECT_EQ(rows().size(), 1u);
  EXPECT_TRUE(trace.contains("hardware Getting host info. Method 2: getNodeCapacity() failed."));
  EXPECT_TRUE(trace.contains(kNotReported));
}

TEST_F(PhysicalProcessorGroupTest, packagesFromOutsideAreCutAt65536) {
  CapturedTraces trace("MIN");
  becomeGuest("2000000000:GenuineIntel:Xeon:MP:4:2:2933:64");
  PhysicalProcessorGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getNumRows(), 65536u);
  EXPECT_TRUE(trace.contains("hardware Number of processors cut to 65536"));
}

TEST_F(PhysicalProcessorGroupTest, tableIsGroup44Version1) {
  PhysicalProcessorGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 44u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
}

}  // namespace
}  // namespace quenlor::test
