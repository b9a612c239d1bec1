#include "readers/pci/PciFunctions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "readers/pci/PciFunctionFiles.h"
#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kFolder = "/sys/bus/pci/devices";
constexpr const char* kNetworkCard =
    "DRIVER=e1000e\nPCI_CLASS=20000\nPCI_ID=8086:10D3\nPCI_SUBSYS_ID=8086:A01F\n"
    "PCI_SLOT_NAME=0000:02:00.0\nMODALIAS=pci:v00008086d000010D3\n";

class PciFunctionsTest : public ::testing::Test {
 protected:
  ~PciFunctionsTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  std::string add(const std::string& address, const std::string& event) {
    const std::string folder = std::string(kFolder) + "/" + address;
    machine.directories[kFolder].push_back(address);
    machine.files[folder + "/uevent"] = event;
    return folder;
  }

  void addSlot(const std::string& name, const std::string& address) {
    machine.directories["/sys/bus/pci/slots"].push_back(name);
    machine.files["/sys/bus/pci/slots/" + name + "/address"] = address + "\n";
  }

  void setList(const std::string& path = "/usr/share/misc/pci.ids") {
    machine.files[path] =
        "8086  Intel Corporation\n\t10d3  82574L Gigabit Network Connection\n"
        "C 02  Network controller\n\t00  Ethernet controller\n";
  }

  static std::vector<std::string> addresses(const PciFunctions& found) {
    std::vector<std::string> texts;
    for (const PciFunction& function : found.functions) texts.push_back(function.address.text());
    return texts;
  }

  test::FakeHost machine;
};

TEST_F(PciFunctionsTest, functionHasAllThatItsFilesTell) {
  const std::string folder = add("0000:02:00.0", kNetworkCard);
  machine.files[folder + "/revision"] = "0x01\n";
  machine.files[folder + "/numa_node"] = "1\n";
  machine.links[folder + "/iommu_group"] = "../../../kernel/iommu_groups/14";
  setList();
  const PciFunctions found = readPciFunctions();
  ASSERT_EQ(found.functions.size(), 1u);
  const PciFunction& card = found.functions[0];
  EXPECT_EQ(card.vendor, 0x8086);
  EXPECT_EQ(card.device, 0x10D3);
  EXPECT_EQ(card.subsystemVendor, 0x8086);
  EXPECT_EQ(card.subsystemDevice, 0xA01F);
  EXPECT_EQ(card.classCode, 0x020000u);
  EXPECT_EQ(card.revision, 1);
  EXPECT_EQ(card.driver, "e1000e");
  EXPECT_EQ(card.numaNode, 1u);
  EXPECT_EQ(card.iommuGroup, 14u);
  EXPECT_EQ(card.slot, "");
  EXPECT_EQ(card.className, "Ethernet controller");
  EXPECT_EQ(card.name(), "Intel Corporation 82574L Gigabit Network Connection");
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(PciFunctionsTest, onlyFilesThatWakeNothingAreOpened) {
  add("0000:02:00.0", kNetworkCard);
  setList();
  readPciFunctions();
  for (const std::string& path : machine.opened) {
    for (const char* costly : {"/config", "/vpd", "link_speed", "link_width", "/rom"}) {
      EXPECT_EQ(path.find(costly), std::string::npos) << path;
    }
  }
}

TEST_F(PciFunctionsTest, eventThatTellsLessIsCompletedFromTheFiles) {
  const std::string folder = add("0000:02:00.0", "DRIVER=e1000e\n");
  machine.files[folder + "/vendor"] = "0x8086\n";
  machine.files[folder + "/device"] = "0x10d3\n";
  machine.files[folder + "/subsystem_vendor"] = "0x103c\n";
  machine.files[folder + "/subsystem_device"] = "0x0001\n";
  machine.files[folder + "/class"] = "0x020000\n";
  machine.links[folder + "/driver"] = "../../../bus/pci/drivers/e1000e";
  const PciFunctions found = readPciFunctions();
  ASSERT_EQ(found.functions.size(), 1u);
  EXPECT_EQ(found.functions[0].device, 0x10D3);
  EXPECT_EQ(found.functions[0].subsystemVendor, 0x103C);
  EXPECT_EQ(found.functions[0].classCode, 0x020000u);
  EXPECT_EQ(found.functions[0].driver, "e1000e");
}

TEST_F(PciFunctionsTest, functionsComeByAddressAlsoBeyondFourDigits) {
  for (const char* address : {"10000:e1:00.0", "0000:0a:00.0", "0000:00:1f.2", "ffff:00:00.0"}) {
    add(address, kNetworkCard);
  }
  EXPECT_THAT(addresses(readPciFunctions()),
              ElementsAre("0000:00:1f.2", "0000:0a:00.0", "ffff:00:00.0", "10000:e1:00.0"));
}

TEST_F(PciFunctionsTest, functionThatVanishedIsNone) {
  machine.directories[kFolder] = {"0000:02:00.0", "no-address"};
  const PciFunctions found = readPciFunctions();
  EXPECT_THAT(found.functions, IsEmpty());
  EXPECT_EQ(found.outcome.status(), OutcomeStatus::kComplete);
}

TEST_F(PciFunctionsTest, machineWithoutPciHasNoSource) {
  EXPECT_EQ(readPciFunctions().outcome.status(), OutcomeStatus::kNoSource);
}

TEST_F(PciFunctionsTest, namesComeFromTheBuiltInTablesWhereThereIsNoList) {
  add("0000:02:00.0", "PCI_CLASS=20000\nPCI_ID=8086:1229\n");
  EXPECT_EQ(readPciFunctions().functions[0].name(), "Intel 82557/8/9/0/1 (Ethernet Pro 100)");
}

TEST_F(PciFunctionsTest, deviceThatTheListLacksIsSoughtInTheBuiltInTables) {
  add("0000:02:00.0", "PCI_CLASS=20000\nPCI_ID=8086:1229\n");
  setList();
  EXPECT_EQ(readPciFunctions().functions[0].name(),
            "Intel Corporation 82557/8/9/0/1 (Ethernet Pro 100)");
}

TEST_F(PciFunctionsTest, numbersStandWhereNobodyKnowsAName) {
  add("0000:02:00.0", "PCI_CLASS=20000\nPCI_ID=8086:FFF1\n");
  add("0000:03:00.0", "PCI_CLASS=20000\nPCI_ID=FFF2:00A1\n");
  const PciFunctions found = readPciFunctions();
  EXPECT_EQ(found.functions[0].name(), "Intel Device fff1");
  EXPECT_EQ(found.functions[1].name(), "Vendor fff2 Device 00a1");
  EXPECT_EQ(found.functions[1].vendorName, "");
}

TEST_F(PciFunctionsTest, listIsFoundWhereverADistributionKeepsIt) {
  add("0000:02:00.0", kNetworkCard);
  for (const char* path : {"/usr/share/hwdata/pci.ids", "/usr/share/misc/pci.ids",
                           "/usr/share/pci.ids", "/var/lib/pciutils/pci.ids"}) {
    setList(path);
    EXPECT_EQ(readPciFunctions().functions[0].vendorName, "Intel Corporation") << path;
    machine.files.erase(path);
  }
}

TEST_F(PciFunctionsTest, listIsNotOpenedWithoutDevices) {
  machine.directories[kFolder] = {};
  setList();
  readPciFunctions();
  EXPECT_THAT(machine.opened, IsEmpty());
}

TEST_F(PciFunctionsTest, slotHoldsAllFunctionsOfItsDevice) {
  add("0000:02:00.0", kNetworkCard);
  add("0000:02:00.1", kNetworkCard);
  add("0000:03:00.0", kNetworkCard);
  addSlot("4", "0000:02:00");
  const PciFunctions found = readPciFunctions();
  EXPECT_EQ(found.functions[0].slot, "4");
  EXPECT_EQ(found.functions[1].slot, "4");
  EXPECT_EQ(found.functions[2].slot, "");
}

TEST_F(PciFunctionsTest, deviceOfTwoSlotsHasTheOneThatPeopleCountFirst) {
  add("0000:02:00.0", kNetworkCard);
  addSlot("10", "0000:02:00");
  addSlot("9", "0000:02:00");
  addSlot("bad", "nonsense");
  EXPECT_EQ(readPciFunctions().functions[0].slot, "9");
}

TEST_F(PciFunctionsTest, machineOfOneNodeHasNoNode) {
  const std::string folder = add("0000:02:00.0", kNetworkCard);
  machine.files[folder + "/numa_node"] = "-1\n";
  machine.files[folder + "/revision"] = "0x100\n";
  const PciFunctions found = readPciFunctions();
  EXPECT_EQ(found.functions[0].numaNode, std::nullopt);
  EXPECT_EQ(found.functions[0].revision, std::nullopt);
}

TEST_F(PciFunctionsTest, findsByAddress) {
  add("0000:02:00.0", kNetworkCard);
  const PciFunctions found = readPciFunctions();
  EXPECT_EQ(found.find(*parsePciAddress("0000:02:00.0")), &found.functions[0]);
  EXPECT_EQ(found.find(*parsePciAddress("0000:02:00.1")), nullptr);
}

TEST_F(PciFunctionsTest, thirteenThousandFunctionsOpenNoPathTwice) {
  char address[32];
  for (unsigned i = 0; i < 13000; ++i) {
    std::snprintf(address, sizeof address, "%04x:%02x:%02x.%x", i >> 16, i >> 8 & 0xFF,
                  i >> 3 & 0x1F, i & 7);
    machine.files[std::string(kFolder) + "/" + address + "/uevent"] = kNetworkCard;
    machine.directories[kFolder].emplace_back(address);
  }
  std::sort(machine.directories[kFolder].begin(), machine.directories[kFolder].end());
  const auto last =
      std::unique(machine.directories[kFolder].begin(), machine.directories[kFolder].end());
  machine.directories[kFolder].erase(last, machine.directories[kFolder].end());
  setList();
  const PciFunctions found = readPciFunctions();
  EXPECT_EQ(found.functions.size(), machine.directories[kFolder].size());
  std::sort(machine.opened.begin(), machine.opened.end());
  EXPECT_EQ(std::adjacent_find(machine.opened.begin(), machine.opened.end()), machine.opened.end());
}

TEST(PciEventTest, needsIdsAndClass) {
  EXPECT_TRUE(parsePciEvent("PCI_ID=8086:10D3\nPCI_CLASS=20000").has_value());
  EXPECT_FALSE(parsePciEvent("PCI_ID=8086:10D3").has_value());
  EXPECT_FALSE(parsePciEvent("PCI_CLASS=20000").has_value());
  EXPECT_FALSE(parsePciEvent("").has_value());
}

TEST(PciEventTest, damagedNumbersAreNone) {
  for (const char* ids : {"8086", "8086:", ":10D3", "8086:10D3x", "18086:10D3", "8086:-1", "x:y"}) {
    EXPECT_FALSE(parsePciEvent(std::string("PCI_CLASS=20000\nPCI_ID=") + ids).has_value()) << ids;
  }
  for (const char* code : {"", "1000000", "x", "-1"}) {
    EXPECT_FALSE(parsePciEvent(std::string("PCI_ID=8086:10D3\nPCI_CLASS=") + code).has_value())
        << code;
  }
}

TEST(PciNumberTest, withItsPrefixOrWithout) {
  EXPECT_EQ(parsePciNumber("0x8086"), 0x8086u);
  EXPECT_EQ(parsePciNumber("8086"), 0x8086u);
  for (const char* text : {"", "0x", "0x0x1", "x", "8086 ", "0x100000000"}) {
    EXPECT_EQ(parsePciNumber(text), std::nullopt) << text;
  }
}

}  // namespace
}  // namespace quenlor
