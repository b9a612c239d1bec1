#include "readers/interfaces/InterfaceFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

class InterfaceFilesTest : public ::testing::Test {
 protected:
  ~InterfaceFilesTest() override { EXPECT_EQ(machine.openDescriptors(), 0); }

  void addCard(const std::string& device, const std::string& event = "IFINDEX=2\n") {
    machine.links["/sys/class/net/eth0"] = "../../devices/" + device + "/net/eth0";
    machine.links["/sys/class/net/eth0/device/driver"] = "../../../../bus/pci/drivers/e1000e";
    machine.files["/sys/class/net/eth0/uevent"] = "INTERFACE=eth0\n" + event;
  }

  test::FakeHost machine;
};

TEST(InterfaceEventTest, takesIndexAndType) {
  const InterfaceEvent event = parseInterfaceEvent("DEVTYPE=wlan\nINTERFACE=wlp3s0\nIFINDEX=3");
  EXPECT_EQ(event.index, 3u);
  EXPECT_EQ(event.deviceType, "wlan");
}

TEST(InterfaceEventTest, whatIsNoIndexIsNone) {
  for (const char* text : {"", "IFINDEX=", "IFINDEX=x", "IFINDEX=2x", "IFINDEX=-2",
                           "IFINDEX=4294967296", "XIFINDEX=2", "\n\n"}) {
    EXPECT_EQ(parseInterfaceEvent(text).index, std::nullopt) << text;
  }
}

TEST(HardwareAddressTest, takesPairsAndColonsOnly) {
  EXPECT_EQ(parseHardwareAddress("02:00:00:aA:bb:cc"), std::string("\x02\0\0\xAA\xBB\xCC", 6));
  EXPECT_EQ(parseHardwareAddress("ff"), "\xFF");
  for (const char* text : {"", "0", "02:", "02:0", "02-00", "02:00:0g", "00:00:00:00:00:00",
                           "2:0:0", "0x:00", ":02"}) {
    EXPECT_EQ(parseHardwareAddress(text), "") << text;
  }
}

TEST_F(InterfaceFilesTest, cardOnPci) {
  addCard("pci0000:00/0000:00:1c.0/0000:02:00.1");
  machine.files["/sys/class/net/eth0/dev_port"] = "1\n";
  const auto files = readInterfaceFiles("eth0", 2);
  ASSERT_TRUE(files.has_value());
  EXPECT_FALSE(files->isWireless);
  EXPECT_EQ(files->driver, "e1000e");
  ASSERT_TRUE(files->pciAddress.has_value());
  EXPECT_EQ(files->pciAddress->text(), "0000:02:00.1");
  EXPECT_EQ(files->usbDevice, "");
  EXPECT_EQ(files->port, 1u);
}

TEST_F(InterfaceFilesTest, virtioCardHangsOnItsPciFunction) {
  addCard("pci0000:00/0000:00:03.0/virtio0");
  EXPECT_EQ(readInterfaceFiles("eth0", 2)->pciAddress->text(), "0000:00:03.0");
}

TEST_F(InterfaceFilesTest, cardOnUsbHasBothPlaces) {
  addCard("pci0000:00/0000:00:14.0/usb1/1-2/1-2.4/1-2.4:1.0");
  const auto files = readInterfaceFiles("eth0", 2);
  EXPECT_EQ(files->pciAddress->text(), "0000:00:14.0");
  EXPECT_EQ(files->usbDevice, "1-2.4");
}

TEST_F(InterfaceFilesTest, deviceWithoutPciHasNoAddress) {
  addCard("LNXSYSTM:00/LNXSYBUS:00/ACPI0004:00/VMBUS:00/000d3a12-3456-000d-3a12-3456000d3a12");
  EXPECT_FALSE(readInterfaceFiles("eth0", 2)->pciAddress.has_value());
}

TEST_F(InterfaceFilesTest, wirelessByItsTypeOrItsPhysicalLayer) {
  addCard("pci0000:00/0000:03:00.0", "DEVTYPE=wlan\nIFINDEX=2\n");
  EXPECT_TRUE(readInterfaceFiles("eth0", 2)->isWireless);
  addCard("pci0000:00/0000:03:00.0");
  EXPECT_FALSE(readInterfaceFiles("eth0", 2)->isWireless);
  machine.links["/sys/class/net/eth0/phy80211"] = "../../ieee80211/phy0";
  EXPECT_TRUE(readInterfaceFiles("eth0", 2)->isWireless);
  machine.links.erase("/sys/class/net/eth0/phy80211");
  machine.directories["/sys/class/net/eth0/wireless"] = {};
  EXPECT_TRUE(readInterfaceFiles("eth0", 2)->isWireless);
}

TEST_F(InterfaceFilesTest, nameThatStandsForAnotherInterfaceByNowTellsNothing) {
  addCard("pci0000:00/0000:02:00.0", "IFINDEX=5\n");
  EXPECT_FALSE(readInterfaceFiles("eth0", 2).has_value());
  EXPECT_FALSE(readInterfaceFiles("eth1", 2).has_value());
}

TEST_F(InterfaceFilesTest, permanentAddressIsWhatTheBondKeepsOfItsMember) {
  const std::string folder = "/sys/class/net/eth0/";
  machine.files[folder + "addr_assign_type"] = "0\n";
  machine.files[folder + "address"] = "02:00:00:00:00:01\n";
  EXPECT_EQ(readPermanentAddress("eth0"), std::string("\x02\0\0\0\0\x01", 6));
  machine.files[folder + "bonding_slave/perm_hwaddr"] = "02:00:00:00:00:02\n";
  EXPECT_EQ(readPermanentAddress("eth0"), std::string("\x02\0\0\0\0\x02", 6));
}

TEST_F(InterfaceFilesTest, addressThatSomebodySetIsNotPermanent) {
  machine.files["/sys/class/net/eth0/address"] = "02:00:00:00:00:01\n";
  EXPECT_EQ(readPermanentAddress("eth0"), "");
  machine.files["/sys/class/net/eth0/addr_assign_type"] = "3\n";
  EXPECT_EQ(readPermanentAddress("eth0"), "");
}

TEST_F(InterfaceFilesTest, speedOfOldKernelsMayStandForUnknown) {
  for (const char* text : {"-1\n", "0\n", "4294967295\n", "\n", "fast\n"}) {
    machine.files["/sys/class/net/eth0/speed"] = text;
    EXPECT_EQ(readSpeed("eth0"), std::nullopt) << text;
  }
  machine.files["/sys/class/net/eth0/speed"] = "1000\n";
  EXPECT_EQ(readSpeed("eth0"), 1000u);
}

TEST_F(InterfaceFilesTest, duplexIsOneOfTwoWords) {
  machine.files["/sys/class/net/eth0/duplex"] = "full\n";
  EXPECT_EQ(readDuplex("eth0"), "full");
  machine.files["/sys/class/net/eth0/duplex"] = "unknown\n";
  EXPECT_EQ(readDuplex("eth0"), "");
}

}  // namespace
}  // namespace quenlor
