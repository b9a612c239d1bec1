// Groups of the modern sources that tell of devices on PCI and USB, of displays and batteries.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "groups/modern/Collectors.h"
#include "tests/support/EdidBytes.h"
#include "tests/support/FakeHost.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::hasValue;
using test::RowValues;
using test::valueOf;

class DevicesModernTest : public ::testing::Test {
 protected:
  ~DevicesModernTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  std::vector<RowValues> collect(uint32_t group, ModernCollector collector) {
    scan = std::make_shared<ModernScan>(ScanSettings{});
    table = std::make_unique<ModernTable>(*findGroup(MODERN_GROUPS_DEF, group));
    collector(*scan, *table);
    return test::rowsOf(table->build().get());
  }

  void add(const std::string& folder, const std::string& entry) {
    machine.directories[folder].push_back(entry);
  }

  test::FakeHost machine;
  std::shared_ptr<ModernScan> scan;
  std::unique_ptr<ModernTable> table;
};

TEST_F(DevicesModernTest, functionOnPci) {
  const std::string folder = "/sys/bus/pci/devices/10000:e1:00.1";
  add("/sys/bus/pci/devices", "10000:e1:00.1");
  machine.files[folder + "/uevent"] =
      "DRIVER=nvme\nPCI_CLASS=10802\nPCI_ID=144D:A80A\nPCI_SUBSYS_ID=144D:A801\n";
  machine.files[folder + "/revision"] = "0x0a\n";
  machine.files[folder + "/numa_node"] = "0\n";
  machine.links[folder + "/iommu_group"] = "../../../kernel/iommu_groups/7";
  machine.files["/usr/share/hwdata/pci.ids"] =
      "144d  Samsung Electronics Co Ltd\n\ta80a  NVMe SSD Controller\nC 01  Mass storage\n"
      "\t08  Non-Volatile memory controller\n";
  const RowValues row = collect(group::kPciDevice, collectPciDevices)[0];
  EXPECT_EQ(valueOf(row, 1), "1");
  EXPECT_EQ(valueOf(row, 2), "Samsung Electronics Co Ltd NVMe SSD Controller");
  EXPECT_EQ(valueOf(row, 3), "0x0a");
  EXPECT_EQ(valueOf(row, 101), "10000:e1:00.1");
  EXPECT_EQ(valueOf(row, 102), "010802");
  EXPECT_EQ(valueOf(row, 103), "Non-Volatile memory controller");
  EXPECT_EQ(valueOf(row, 104), "144d");
  EXPECT_EQ(valueOf(row, 105), "a80a");
  EXPECT_EQ(valueOf(row, 106), "144d");
  EXPECT_EQ(valueOf(row, 107), "a801");
  EXPECT_EQ(valueOf(row, 108), "nvme");
  EXPECT_EQ(valueOf(row, 110), "0");
  EXPECT_EQ(valueOf(row, 111), "7");
}

TEST_F(DevicesModernTest, bridgeHasNoSubsystemAndKeepsItsRevision) {
  add("/sys/bus/pci/devices", "0000:00:00.0");
  machine.files["/sys/bus/pci/devices/0000:00:00.0/uevent"] =
      "PCI_CLASS=60000\nPCI_ID=8086:FFF1\nPCI_SUBSYS_ID=0000:0000\n";
  const RowValues row = collect(group::kPciDevice, collectPciDevices)[0];
  EXPECT_EQ(valueOf(row, 2), "Intel Device fff1");
  EXPECT_TRUE(hasValue(row, 3));
  EXPECT_EQ(valueOf(row, 3), "");
  for (const uint32_t id : {103u, 106u, 107u, 108u, 109u, 110u, 111u}) {
    EXPECT_FALSE(hasValue(row, id)) << id;
  }
}

TEST_F(DevicesModernTest, machineWithoutPciSaysThatNothingTells) {
  EXPECT_TRUE(collect(group::kPciDevice, collectPciDevices).empty());
  EXPECT_EQ(table->outcome().status(), OutcomeStatus::kNoSource);
}

TEST_F(DevicesModernTest, deviceOnUsb) {
  const std::string folder = "/sys/bus/usb/devices/1-2";
  add("/sys/bus/usb/devices", "1-2");
  machine.links[folder] = "../../../devices/pci0000:00/0000:00:14.0/usb1/1-2";
  machine.files[folder + "/idVendor"] = "046d\n";
  machine.files[folder + "/idProduct"] = "c52b\n";
  machine.files[folder + "/product"] = "Tast\xE4tur\n";
  machine.files[folder + "/manufacturer"] = "Logitech\n";
  machine.files[folder + "/bDeviceClass"] = "00\n";
  machine.files[folder + "/speed"] = "1.5\n";
  machine.files[folder + "/version"] = " 2.00\n";
  for (int i = 0; i < 4; ++i) {
    const char* const codes[] = {"0d", "0e", "0b", "11"};
    const std::string entry = "1-2:1." + std::to_string(i);
    add("/sys/bus/usb/devices", entry);
    machine.files["/sys/bus/usb/devices/" + entry + "/bInterfaceClass"] = codes[i];
  }
  const RowValues row = collect(group::kUsbDevice, collectUsbDevices)[0];
  EXPECT_EQ(valueOf(row, 2), "0000:00:14.0-2");
  EXPECT_EQ(valueOf(row, 3), "Tast?tur");  // U+FFFD in the test's locale
  EXPECT_EQ(valueOf(row, 4), "Logitech");
  EXPECT_FALSE(hasValue(row, 5));
  EXPECT_EQ(valueOf(row, 6), "046d");
  EXPECT_EQ(valueOf(row, 7), "c52b");
  // A fourth word would be cut within.
  EXPECT_EQ(valueOf(row, 8), "content-security,video");
  EXPECT_EQ(valueOf(row, 9), "1500");
  EXPECT_EQ(valueOf(row, 11), "2.00");
}

TEST_F(DevicesModernTest, displayOnAnOutput) {
  const std::string folder = "/sys/class/drm/card1-DP-2";
  add("/sys/class/drm", "card1-DP-2");
  machine.links[folder] = "../../devices/pci0000:00/0000:00:02.0/drm/card1/card1-DP-2";
  machine.files[folder + "/status"] = "connected\n";
  test::EdidBytes edid;
  edid.manufacturer("DEL").byte(16, 12).byte(17, 33).byte(21, 60).byte(22, 34);
  edid.timing(2560, 1440, 597, 336).text(1, 0xFF, "8Q0XJ3").text(2, 0xFC, "DELL U2722D");
  machine.files[folder + "/edid"] = edid.bytes();
  const RowValues row = collect(group::kDisplay, collectDisplays)[0];
  EXPECT_EQ(valueOf(row, 2), "DP-2");
  EXPECT_EQ(valueOf(row, 3), "0000:00:02.0");
  EXPECT_EQ(valueOf(row, 4), "DEL");
  EXPECT_EQ(valueOf(row, 5), "DELL U2722D");
  EXPECT_EQ(valueOf(row, 6), "8Q0XJ3");
  EXPECT_EQ(valueOf(row, 7), "2023");
  EXPECT_EQ(valueOf(row, 8), "12");
  EXPECT_EQ(valueOf(row, 9), "597");
  EXPECT_EQ(valueOf(row, 10), "336");
  EXPECT_EQ(valueOf(row, 11), "2560x1440");
}

TEST_F(DevicesModernTest, batteryOfTheMachine) {
  add("/sys/class/power_supply", "BAT0");
  machine.files["/sys/class/power_supply/BAT0/type"] = "Battery\n";
  machine.files["/sys/class/power_supply/BAT0/uevent"] =
      "POWER_SUPPLY_STATUS=Full\nPOWER_SUPPLY_TECHNOLOGY=Li-ion\nPOWER_SUPPLY_CYCLE_COUNT=7\n"
      "POWER_SUPPLY_ENERGY_FULL_DESIGN=50000000\nPOWER_SUPPLY_ENERGY_FULL=45000000\n"
      "POWER_SUPPLY_MODEL_NAME=X\nPOWER_SUPPLY_MANUFACTURER=Y\nPOWER_SUPPLY_SERIAL_NUMBER=Z\n";
  const RowValues row = collect(group::kBattery, collectBatteries)[0];
  const std::map<uint32_t, std::string> expected = {
      {1, "1"},     {2, "BAT0"},  {3, "Y"}, {4, "X"},     {5, "Z"},  {6, "Li-ion"},
      {7, "50000"}, {8, "45000"}, {9, "7"}, {10, "Full"}, {11, "90"}};
  for (const auto& [id, value] : expected) EXPECT_EQ(valueOf(row, id), value) << id;
}

}  // namespace
}  // namespace quenlor
