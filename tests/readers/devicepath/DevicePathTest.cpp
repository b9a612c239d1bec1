#include "readers/devicepath/DevicePath.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

std::string pci(std::string_view path) {
  const auto address = pciAddressOf(path);
  return address ? address->text() : "none";
}

TEST(PciAddressTest, readsEveryDomainWidth) {
  EXPECT_EQ(parsePciAddress("0000:00:1f.2")->text(), "0000:00:1f.2");
  EXPECT_EQ(parsePciAddress("10000:e1:00.0")->text(), "10000:e1:00.0");
  EXPECT_EQ(parsePciAddress("ffffffff:ff:1f.7")->domain, 0xFFFFFFFFu);
}

TEST(PciAddressTest, anythingElseIsNone) {
  for (const char* text :
       {"", "00:1f.2", "000:00:1f.2", "123456789:00:1f.2", "0000:00:20.0", "0000:00:1f.8",
        "0000-00:1f.2", "0000:00-1f.2", "0000:00:1f:2", "0000:00:1f.2 ", "0000:0g:1f.2",
        "00x0:00:1f.2", "pci0000:00", "-000:00:1f.2"}) {
    EXPECT_FALSE(parsePciAddress(text).has_value()) << text;
  }
}

TEST(PciAddressTest, ordersByDomainBusDeviceFunction) {
  EXPECT_LT(*parsePciAddress("0000:ff:1f.7"), *parsePciAddress("0001:00:00.0"));
  EXPECT_LT(*parsePciAddress("ffff:00:00.0"), *parsePciAddress("10000:00:00.0"));
  EXPECT_LT(*parsePciAddress("0000:09:00.0"), *parsePciAddress("0000:0a:00.0"));
}

TEST(PciAddressOfPathTest, isTheFunctionNearestToTheDevice) {
  EXPECT_EQ(pci("../../devices/pci0000:00/0000:00:1c.0/0000:02:00.0/net/eth0"), "0000:02:00.0");
  EXPECT_EQ(pci("/sys/devices/pci0000:00/0000:00:0e.0/pci10000:e0/10000:e0:06.0/nvme"),
            "10000:e0:06.0");
  EXPECT_EQ(pci("/sys/devices/virtual/net/lo"), "none");
  EXPECT_EQ(pci(""), "none");
  EXPECT_EQ(pci("////"), "none");
}

TEST(UsbDeviceTest, isADeviceNeitherRootNorInterface) {
  EXPECT_TRUE(isUsbDeviceName("1-2"));
  EXPECT_TRUE(isUsbDeviceName("10-1.4.12"));
  for (const char* text : {"", "usb1", "1-2:1.0", "1-0:1.0", "1-", "-2", "1-2.", "1-.2", "1-2..3",
                           "1-a", "ep_00", "1"}) {
    EXPECT_FALSE(isUsbDeviceName(text)) << text;
  }
}

TEST(UsbDeviceTest, ofAPathIsTheNearestOne) {
  EXPECT_EQ(usbDeviceOf("../../devices/pci0000:00/0000:00:14.0/usb1/1-2/1-2.4/1-2.4:1.0/net/x"),
            "1-2.4");
  EXPECT_EQ(usbDeviceOf("../../devices/pci0000:00/0000:00:14.0/net/x"), "");
}

TEST(UsbDeviceTest, partsAboveThePciFunctionDoNotCount) {
  EXPECT_EQ(usbDeviceOf("/sys/devices/1-2/0000:00:14.0/net/x"), "");
}

TEST(LastPartTest, ofAPath) {
  EXPECT_EQ(lastPart("../../bus/pci/drivers/igb"), "igb");
  EXPECT_EQ(lastPart("igb"), "igb");
  EXPECT_EQ(lastPart("a/"), "");
}

}  // namespace
}  // namespace quenlor
