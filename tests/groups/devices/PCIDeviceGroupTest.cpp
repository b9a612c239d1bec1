#include "groups/devices/PCIDeviceGroup.h"

#include <gmock/gmock.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/CapturedTraces.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::CapturedTraces;
using test::collect;
using test::RowValues;
using test::valueOf;

constexpr const char* kProcPci = "/proc/pci";
constexpr const char* kLspci = "/sbin/lspci -m 2>/dev/null";
constexpr const char* kTwoDevices =
    "00:00.0 \"Host bridge\" \"Intel Corporation\" \"440BX\" -r01 \"VMware\" \"Chipset\"\n"
    "00:0f.0 \"VGA compatible controller\" \"VMware\" \"SVGA II Adapter\" -p00 \"\" \"\"\n";

class PCIDeviceGroupTest : public ::testing::Test {
 protected:
  ~PCIDeviceGroupTest() override {
    EXPECT_EQ(machine.openDescriptors(), 0);
    EXPECT_EQ(machine.openCommands(), 0);
  }

  std::unique_ptr<VelTable> table() {
    PCIDeviceGroup group;
    return std::unique_ptr<VelTable>(group.getTable());
  }

  test::FakeHost machine;
};

TEST_F(PCIDeviceGroupTest, isGroup29Version1) {
  machine.files[kProcPci] = "";
  EXPECT_EQ(table()->getGroupId(), 29U);
  EXPECT_EQ(table()->getGroupVersion(), 1U);
}

TEST_F(PCIDeviceGroupTest, prefersProcPci) {
  machine.files[kProcPci] =
      "PCI devices found:\n"
      "  Bus  0, device   0, function  0:\n"
      "    Host bridge: Intel Corp. 440BX (rev 3).\n"
      "  Bus  0, device   4, function  0:\n"
      "    ISA bridge: Intel Corp. 82371AB PIIX4 ISA (rev 10).\n";
  machine.commands[kLspci].output = kTwoDevices;
  const auto rows = collect<PCIDeviceGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0], (RowValues{{1, "1"}, {2, "Intel Corp. 440BX (Host bridge)"}, {3, "0x03"}}));
  EXPECT_EQ(rows[1],
            (RowValues{{1, "2"}, {2, "Intel Corp. 82371AB PIIX4 ISA (ISA bridge)"}, {3, "0x0A"}}));
  EXPECT_TRUE(machine.started.empty());
}

TEST_F(PCIDeviceGroupTest, emptyProcPciIsAnEmptyTable) {
  machine.files[kProcPci] = "";
  machine.commands[kLspci].output = kTwoDevices;
  EXPECT_EQ(table()->getNumRows(), 0U);
}

TEST_F(PCIDeviceGroupTest, indexDoesNotCountDuplicates) {
  const std::string device =
      "  Bus  0, device   1, function  0:\n    Host bridge: Intel Corp. 440BX (rev 3).\n";
  machine.files[kProcPci] = device + device +
                            "  Bus  0, device   2, function  0:\n"
                            "    Host bridge: Intel Corp. 440GX (rev 3).\n";
  const auto rows = collect<PCIDeviceGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(valueOf(rows[1], 1), "2");
}

TEST_F(PCIDeviceGroupTest, withoutProcPciRunsLspci) {
  machine.commands[kLspci].output = kTwoDevices;
  const auto rows = collect<PCIDeviceGroup>();
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0], (RowValues{{1, "1"}, {2, "Intel Corporation 440BX"}, {3, "0x01"}}));
  EXPECT_EQ(rows[1], (RowValues{{1, "2"}, {2, "VMware SVGA II Adapter"}, {3, ""}}));
  EXPECT_EQ(machine.started, std::vector<std::string>{kLspci});
}

TEST_F(PCIDeviceGroupTest, lspciRowsMayRepeat) {
  machine.commands[kLspci].output = std::string(kTwoDevices) + kTwoDevices;
  EXPECT_EQ(table()->getNumRows(), 4U);
}

TEST_F(PCIDeviceGroupTest, missingLspciIsAnEmptyTableWithoutComplaint) {
  const CapturedTraces traces;
  const auto empty = table();
  ASSERT_NE(empty, nullptr);
  EXPECT_EQ(empty->getNumRows(), 0U);
  EXPECT_EQ(traces.count("exit abnormally. return code = 127"), 0);
}

TEST_F(PCIDeviceGroupTest, noShellIsNoTable) {
  machine.unstartableCommands.insert(kLspci);
  const CapturedTraces traces;
  EXPECT_EQ(table(), nullptr);
  EXPECT_THAT(traces.texts(),
              testing::Contains("MIN linux/PCIDeviceGroup.cpp getTable() hardware could not obtain "
                                "pci devices informations."));
}

TEST_F(PCIDeviceGroupTest, lspciKilledBySignalKeepsItsRowsAndIsTraced) {
  machine.commands[kLspci] = {kTwoDevices, SIGSEGV | 0x80};
  const CapturedTraces traces;
  EXPECT_EQ(table()->getNumRows(), 2U);
  EXPECT_THAT(traces.texts(),
              testing::Contains("MIN linux/PCIDeviceGroup.cpp getTable() hardware PCIDeviceGroup: "
                                "'/sbin/lspci -m 2>/dev/null' exit abnormally. return code = 0"));
}

TEST_F(PCIDeviceGroupTest, lspciThatPrintsRubbishIsAnEmptyTable) {
  std::string rubbish("\0\x01\xFF\"\"\"\"\n\"one quote\n", 20);
  rubbish += std::string(10000, '"') + "\n" + std::string(10000, 'x') + std::string(300, '\0');
  machine.commands[kLspci].output = rubbish;
  EXPECT_EQ(table()->getNumRows(), 0U);
}

TEST_F(PCIDeviceGroupTest, lastLineMayLackItsNewline) {
  machine.files[kProcPci] =
      "  Bus  0, device   1, function  0:\n    Host bridge: Intel Corp. 440BX (rev 3)";
  EXPECT_EQ(valueOf(collect<PCIDeviceGroup>().at(0), 2), "Intel Corp. 440BX (Host bridge)");
}

TEST_F(PCIDeviceGroupTest, lastCharacterOfALineIsCutWhenItIsAControlCharacter) {
  for (const char* end : {"\n", "\r", "\x7F", ""}) {
    machine.files[kProcPci] =
        std::string("  Bus  0, device   1, function  0:\n    Host bridge: Intel 440BX") + end;
    EXPECT_EQ(valueOf(collect<PCIDeviceGroup>().at(0), 2), "Intel 440BX (Host bridge)");
  }
}

TEST_F(PCIDeviceGroupTest, overlongLinesArriveInPiecesOf255Characters) {
  const std::string description(1000, 'd');
  machine.files[kProcPci] =
      "  Bus  0, device   1, function  0:\n    c: " + description + " (rev 3).\n";
  const auto rows = collect<PCIDeviceGroup>();
  ASSERT_EQ(rows.size(), 1U);
  EXPECT_EQ(valueOf(rows[0], 2), std::string(255 - 7, 'd') + " (c)");
}

TEST_F(PCIDeviceGroupTest, tracesItsSourcesAndLines) {
  machine.commands[kLspci].output = kTwoDevices;
  const CapturedTraces traces;
  table();
  const char* expected[] = {
      "hardware PCIDeviceGroup",
      "hardware PCIDeviceGroup: use '/proc/pci' to get PCI device informations ...",
      ("hardware PCIDeviceGroup: unable to use '/proc/pci' try to use '/sbin/lspci -m 2>/dev/null' "
       "..."),
      "hardware PCIDeviceGroup: parse line 1 ...",
      "hardware PCIDeviceGroup: vendor name = >Intel Corporation<",
      "hardware PCIDeviceGroup: device name = >440BX<",
      "hardware PCIDeviceGroup: revision = >01<",
      "hardware PCIDeviceGroup: found PCI device: >Intel Corporation 440BX rev. '0x01'<",
      "hardware PCIDeviceGroup: parse line 2 ...",
  };
  long last = -1;
  for (const char* text : expected) {
    const long position = traces.position(text);
    EXPECT_GT(position, last) << text;
    last = position;
  }
}

TEST_F(PCIDeviceGroupTest, entryAndExitStandAroundDetails) {
  machine.commands[kLspci].output = kTwoDevices;
  const CapturedTraces traces;
  table();
  std::vector<std::string> records = traces.texts();
  ASSERT_GE(records.size(), 3U);
  EXPECT_EQ(records.front(),
            "MID entry linux/PCIDeviceGroup.cpp getTable() hardware PCIDeviceGroup");
  EXPECT_EQ(records.back(), "MID exit linux/PCIDeviceGroup.cpp getTable() hardware PCIDeviceGroup");
  records.pop_back();
  records.erase(records.begin());
  EXPECT_THAT(records, testing::Each(testing::StartsWith(
                           "MAX linux/PCIDeviceGroup.cpp getTable() hardware PCIDeviceGroup: ")));
}

TEST_F(PCIDeviceGroupTest, tracesTheStatesOfProcPci) {
  const std::string device =
      "  Bus  2, device  10, function  0:\n    Host bridge: Intel Corp. 440BX (rev 3).\n";
  machine.files[kProcPci] = device + device +
                            "  Bus  0, device   9, function  0:\n"
                            "    Host bridge: Intel Unknown device (rev 1).\n"
                            "      Vendor id=8086. Device id=7190.\n";
  const CapturedTraces traces;
  table();
  EXPECT_EQ(traces.count("hardware     |Bus 2 Device  10"), 2);
  EXPECT_EQ(traces.count("hardware |    Host bridge: Intel Corp. 440BX (rev 3)."), 2);
  EXPECT_EQ(traces.count("hardware Wrote: Intel Corp. 440BX (Host bridge) rev: 0x03"), 2);
  EXPECT_EQ(traces.count("hardware ^^^^ skipped because it's a dupe"), 1);
  EXPECT_EQ(traces.count("hardware |      Vendor id=8086. Device id=7190."), 1);
  EXPECT_EQ(
      traces.count("hardware Wrote: >Intel 440BX/ZX/DX - 82443BX/ZX/DX (Host bridge)< rev: >0x01"),
      1);
}

}  // namespace
}  // namespace quenlor
