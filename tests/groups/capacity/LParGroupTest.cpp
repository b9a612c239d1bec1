#include "groups/capacity/LParGroup.h"

#include <gtest/gtest.h>

#include <optional>

#include "tests/groups/FirmwareScope.h"
#include "tests/groups/capacity/GuestSdk.h"
#include "tests/readers/cpuid/CpuMachine.h"
#include "tests/readers/virtualization/VmwareGuest.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor::test {
namespace {

class LParGroupTest : public testing::Test {
 protected:
  RowValues row() {
    const std::vector<RowValues> collected = collect<LParGroup>();
    EXPECT_EQ(collected.size(), 1u);
    EXPECT_EQ(m_host.openDescriptors(), 0);
    EXPECT_EQ(m_host.openCommands(), 0);
    EXPECT_EQ(m_host.openLibraries(), 0);
    return collected.empty() ? RowValues() : collected[0];
  }
  // A guest whose own processor has four cores and eight threads in one package.
  void becomeGuest() {
    CpuMachine().installOn(m_host);
    becomeVmwareGuest(m_host);
  }
  void publish(const std::string& key, const std::string& value) {
    setAgentValue(m_host, key, value);
  }

  FakeHost m_host;
};

// Values of the seven capacities and ids in the order of the row.
RowValues lparRow(const std::string& id, const std::string& node, const std::string& nodeCores,
                  const std::string& lpar, const std::string& lparCores,
                  const std::string& serial) {
  return {{2, id},        {3, ""},          {4, node},         {8, nodeCores}, {5, lpar},
          {9, lparCores}, {6, "-1.000000"}, {10, "-1.000000"}, {7, serial}};
}

constexpr const char* kNone = "-1.000000";

TEST_F(LParGroupTest, realMachineWithTwoPackagesOfFourCores) {
  CapturedTraces trace;
  CpuMachine machine;
  machine.packages = 2;
  machine.installOn(m_host);
  FirmwareTable table({2, 4});
  table.add(System{.manufacturer = "Maker", .product = "Server", .serial = "SER123"});
  const FirmwareScope firmware(m_host, table);
  EXPECT_EQ(row(), lparRow("", "2.000000", "8.000000", kNone, kNone, "SER123"));
  EXPECT_TRUE(m_host.started.empty());
  for (const char* text : {"Serial Number = SER123", "Real machine environment detected",
                           "node capacity= 2", "Hyperthreading detected: Physical CPU count= 2"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(LParGroupTest, tableIsGroup34Version1) {
  LParGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  EXPECT_EQ(table->getGroupId(), 34u);
  EXPECT_EQ(table->getGroupVersion(), 1u);
}

TEST_F(LParGroupTest, capacitiesAreFloats) {
  LParGroup group;
  const std::unique_ptr<VelTable> table(group.getTable());
  table->reset();
  VelTableRow* row = table->getNext();
  row->reset();
  while (VelTableAttrib* attrib = row->getNext()) {
    const uint32_t id = attrib->getId();
    EXPECT_EQ(attrib->getType(), id == 2 || id == 3 || id == 7 ? VEL_STRING : VEL_FLOAT) << id;
  }
}

TEST_F(LParGroupTest, realMachineWhereCpuidCannotRunIsTriedTwice) {
  CapturedTraces trace("MIN");
  EXPECT_EQ(row(), lparRow("", kNone, kNone, kNone, kNone, ""));
  EXPECT_EQ(trace.countHolding("hardware Cannot execute VT command, try again..."), 1);
  EXPECT_TRUE(trace.contains("hardware Unable to detect node_capacity, returning -1"));
}

TEST_F(LParGroupTest, failedStatusIsTriedTwiceAndTheValuesReadAllTheSame) {
  CapturedTraces trace("MIN");
  CpuMachine machine;
  machine.packages = 2;
  machine.hasCpuid = false;
  machine.installOn(m_host);
  EXPECT_EQ(valueOf(row(), 8), "8.000000");
  EXPECT_EQ(trace.countHolding("hardware VT command returned 1, try again..."), 1);
}

TEST_F(LParGroupTest, cpuidThatRunsAtTheSecondTryCounts) {
  class LateHost : public FakeHost {
   public:
    bool cpuid(uint32_t leaf, uint32_t subleaf, CpuidRegisters* out) override {
      if (leaf == 0) ++asked;
      return asked > 1 && FakeHost::cpuid(leaf, subleaf, out);
    }
    int asked = 0;
  } host;
  CpuMachine machine;
  machine.hasSysTopology = false;
  machine.hasCpuinfo = false;
  machine.installOn(host);
  const auto rows = collect<LParGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(valueOf(rows[0], 8), "4.000000");
}

TEST_F(LParGroupTest, cpuinfoIsReadForTheTraceOnly) {
  CpuMachine().installOn(m_host);
  row();
  EXPECT_EQ(std::count(m_host.opened.begin(), m_host.opened.end(), "/proc/cpuinfo"), 0);
}

TEST_F(LParGroupTest, hyperThreadingByTheFirmwareIsTracedWithoutAFlagsLine) {
  CapturedTraces trace;
  m_host.files["/proc/cpuinfo"] = "processor\t: 0\nsiblings\t: 4\nprocessor\t: 1\n";
  FirmwareTable table({2, 4});
  table.add(Processor{.edx = 1u << 28});
  const FirmwareScope firmware(m_host, table);
  row();
  EXPECT_TRUE(trace.contains("hardware left the number of CPUs unchanged"));
}

TEST_F(LParGroupTest, unlimitedGuestMayUseTheWholeNode) {
  CapturedTraces trace;
  becomeGuest();
  publish("dov_physical_processor", "4:GenuineIntel:Xeon:MP:2:1:2000:64");
  publish("dov_node_id", "KQXYZ12");
  publish("dov_node_capacity", "4");
  publish("dov_vm_id", "guest-7");
  publish("dov_vm_capacity", "1.5");
  GuestSdk::installOn(m_host, kUnlimited, 2000);
  EXPECT_EQ(row(), lparRow("guest-7", "4.000000", "8.000000", "4.000000", "8.000000", "KQXYZ12"));
  for (const char* text :
       {"VMWare virtualization environment detected",
        "Host node capacity retrieved from getPhysicalProc: value = 4",
        "Host core per package retrieved from getPhysicalProc: value = 2",
        "Host node id retrieved: value = KQXYZ12", "Guest node id retrieved: value = guest-7",
        "Guest node capacity retrieved: value = 1",
        "Guest SDK data: cpu min mhz = 7, cpu max mhz = -1, cpu total mhz = 2000",
        "Updated lpar_capacity after Guest SDK data = 4.000000, -1.000000"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(LParGroupTest, limitEqualToTheHostSpeedIsTheWholeNodeToo) {
  becomeGuest();
  publish("dov_physical_processor", "4:GenuineIntel:Xeon:MP:2:1:2000:64");
  publish("dov_node_capacity", "4");
  GuestSdk::installOn(m_host, 2000, 2000);
  EXPECT_EQ(valueOf(row(), 5), "4.000000");
}

TEST_F(LParGroupTest, limitedGuestMayUseItsShareOfPackages) {
  becomeGuest();
  publish("dov_physical_processor", "4:GenuineIntel:Xeon:MP:2:1:2000:64");
  publish("dov_node_capacity", "4");
  GuestSdk::installOn(m_host, 3000, 2000);
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 5), "1.500000");
  EXPECT_EQ(valueOf(found, 9), "3.000000");
}

TEST_F(LParGroupTest, hostSpeedZeroLeavesTheAgentsCapacity) {
  becomeGuest();
  publish("dov_node_capacity", "4");
  publish("dov_vm_capacity", "1.5");
  GuestSdk::installOn(m_host, 3000, 0);
  EXPECT_EQ(valueOf(row(), 5), "1.500000");
}

TEST_F(LParGroupTest, nodeCapacityOfTheAgentTakesTheCoresOfTheOwnProcessor) {
  CapturedTraces trace;
  becomeGuest();
  publish("dov_node_capacity", "3");
  GuestSdk::installOn(m_host, kUnlimited, 2000);
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 4), "3.000000");
  EXPECT_EQ(valueOf(found, 8), "12.000000");
  EXPECT_TRUE(trace.contains("hardware Host core per package retrieved from cpuid: value = 4"));
  EXPECT_TRUE(trace.contains("hardware Host node capacity retrieved: value = 3"));
}

TEST_F(LParGroupTest, nodeCapacityWithoutCpuidCountsOneCorePerPackage) {
  CapturedTraces trace("MIN");
  becomeVmwareGuest(m_host);
  publish("dov_node_capacity", "3");
  EXPECT_EQ(valueOf(row(), 8), "3.000000");
  EXPECT_TRUE(trace.contains("hardware Failed to exec cpuid command"));
  EXPECT_TRUE(trace.contains("getNodeCapacity() hardware Error! Failed to execute CPUID command!"));
}

TEST_F(LParGroupTest, nodeCapacityWithFailedCpuidDoesNotReadItsCores) {
  CapturedTraces trace("MIN");
  CpuMachine machine;
  machine.hasCpuid = false;
  machine.installOn(m_host);
  becomeVmwareGuest(m_host);
  publish("dov_node_capacity", "3");
  EXPECT_EQ(valueOf(row(), 8), "3.000000");
  EXPECT_TRUE(trace.contains("hardware cpuid command failed with error=1"));
}

TEST_F(LParGroupTest, uselessNodeCapacityOfTheAgentIsUnknown) {
  CapturedTraces trace;
  becomeGuest();
  publish("dov_node_capacity", "0");
  EXPECT_EQ(valueOf(row(), 4), kNone);
  EXPECT_TRUE(trace.contains("hardware Host node capacity retrieved: value = -1"));
  EXPECT_TRUE(trace.contains("hardware Unable to retrieve host node capacity"));
}

TEST_F(LParGroupTest, guestWithoutTheSdkCountsItsOwnCores) {
  CapturedTraces trace;
  CpuMachine machine;
  machine.packages = 2;
  machine.installOn(m_host);
  becomeVmwareGuest(m_host);
  publish("dov_node_capacity", "4");
  publish("dov_vm_capacity", "1.5");
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 5), "2.000000");
  EXPECT_EQ(valueOf(found, 9), "8.000000");
  for (const char* text :
       {"Getting Guest SDK data failed or not supported", "Using CPUID to calculate VM capacity...",
        "Updated lpar_capacity per CPUID data = 2.000000, 8.000000"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(LParGroupTest, ownCoresOfTheGuestAreNotCountedInPackagesOfTheHost) {
  becomeGuest();
  publish("dov_physical_processor", "4:GenuineIntel:Xeon:MP:6:1:2000:64");
  publish("dov_node_capacity", "4");
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 8), "24.000000");
  EXPECT_EQ(valueOf(found, 5), "1.000000");
  EXPECT_EQ(valueOf(found, 9), "4.000000");
}

TEST_F(LParGroupTest, guestWithoutAgentAndSdkKnowsNothing) {
  CapturedTraces trace;
  becomeGuest();
  FirmwareTable table({2, 4});
  table.add(System{.manufacturer = "VMware, Inc.", .product = "VM", .serial = "VMware-42"});
  const FirmwareScope firmware(m_host, table);
  EXPECT_EQ(row(), lparRow("", kNone, kNone, kNone, kNone, ""));
  for (const char* text :
       {"Unable to retrieve host node id", "Unable to retrieve host node capacity",
        "Unable to retrieve guest node Id", "Unable to retrieve guest node capacity"}) {
    EXPECT_TRUE(trace.contains(std::string("hardware ") + text)) << text;
  }
}

TEST_F(LParGroupTest, guestCapacityOfTheAgentStaysWithoutANodeCapacity) {
  becomeGuest();
  publish("dov_vm_capacity", "1.5");
  GuestSdk::installOn(m_host, 3000, 2000);
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 5), "1.500000");
  EXPECT_EQ(valueOf(found, 9), "1.500000");  // one core per package where nobody tells
}

TEST_F(LParGroupTest, descriptionWithoutCoresLeavesTheCoresUnknown) {
  becomeGuest();
  publish("dov_vm_capacity", "1.5");
  for (const char* description : {"4:GenuineIntel:Xeon", "4:GenuineIntel:Xeon:MP:0:1:2000",
                                  "4:GenuineIntel:Xeon:MP:-2:1:2000"}) {
    publish("dov_physical_processor", description);
    const RowValues found = row();
    EXPECT_EQ(valueOf(found, 4), "4.000000") << description;
    EXPECT_EQ(valueOf(found, 8), kNone) << description;
    EXPECT_EQ(valueOf(found, 9), kNone) << description;
  }
}

// A processor that tells its maker only counts no cores; those of the description then stay.
TEST_F(LParGroupTest, coresOfADescriptionWithoutPackagesStayWhereCpuidCountsNone) {
  becomeVmwareGuest(m_host);
  m_host.cpuidLeaves[{0, 0}] = {.eax = 0, .ebx = 0x756E6547, .ecx = 0x6C65746E, .edx = 0x49656E69};
  publish("dov_physical_processor", "0:GenuineIntel:Xeon:MP:4:1:2000");
  publish("dov_node_capacity", "2");
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 4), "2.000000");
  EXPECT_EQ(valueOf(found, 8), "8.000000");
}

TEST_F(LParGroupTest, lparIdIsCutAt256Characters) {
  becomeGuest();
  publish("dov_vm_id", std::string(300, 'x'));
  EXPECT_EQ(valueOf(row(), 2), std::string(256, 'x'));
}

TEST_F(LParGroupTest, hugeNumbersOfTheAgentStayFinite) {
  CapturedTraces trace;
  becomeGuest();
  publish("dov_physical_processor", "2147483647:M:F:T:2147483647:1:2000");
  publish("dov_vm_capacity", "1e300");
  const RowValues found = row();
  EXPECT_EQ(valueOf(found, 8).find("inf"), std::string::npos);
  EXPECT_EQ(valueOf(found, 5).find("inf"), std::string::npos);
  EXPECT_EQ(valueOf(found, 9).find("inf"), std::string::npos);
}

TEST_F(LParGroupTest, agentIsAskedInAFixedOrder) {
  becomeGuest();
  row();
  EXPECT_EQ(m_host.started, (std::vector<std::string>{
                                agentCommand("dov_physical_processor"), agentCommand("dov_node_id"),
                                agentCommand("dov_node_capacity"), agentCommand("dov_vm_id"),
                                agentCommand("dov_vm_capacity")}));
}

}  // namespace
}  // namespace quenlor::test
