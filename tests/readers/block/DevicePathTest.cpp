#include "readers/block/DevicePath.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

const std::string kPci = "/sys/devices/pci0000:00/0000:00:1f.2";

TEST(DevicePath, linksAreResolvedByTheirText) {
  EXPECT_EQ(resolveLink("/sys/block", "../devices/virtual/block/loop0"),
            "/sys/devices/virtual/block/loop0");
  EXPECT_EQ(resolveLink("/dev/disk/by-uuid", "../../sda1"), "/dev/sda1");
  EXPECT_EQ(resolveLink("/a/b", "/c/./d"), "/c/d");
  EXPECT_EQ(resolveLink("/a", "../../../../x"), "/x");
  EXPECT_EQ(resolveLink("/a", ""), "/a");
}

TEST(DevicePath, pciAddressIsThatOfTheLastDeviceOnTheWay) {
  EXPECT_EQ(DevicePath("/sys/devices/pci0000:00/0000:00:1c.0/0000:3b:00.0/nvme/nvme0/nvme0n1")
                .pciAddress(),
            "0000:3b:00.0");
  EXPECT_EQ(DevicePath("/sys/devices/pci0000:00/0000:00:0e.0/pci10000:e0/10000:e1:00.0/nvme")
                .pciAddress(),
            "10000:e1:00.0");
  EXPECT_EQ(DevicePath("/sys/devices/virtual/block/md0").pciAddress(), "");
}

TEST(DevicePath, onlyPciAddressesAreTaken) {
  EXPECT_TRUE(isPciAddress("0000:00:1f.2"));
  EXPECT_TRUE(isPciAddress("10000:e1:00.7"));
  for (const char* text : {"0000:00:1f", "0000:00:1f.8", "000:00:1f.2", "2:0:0:0", "", "pci0000:00",
                           "0000:00:1f.2x", "0000-00:1f.2", "0000:0g:1f.2", "::."}) {
    EXPECT_FALSE(isPciAddress(text)) << text;
  }
}

TEST(DevicePath, scsiAddressHasFourNumbers) {
  const auto address = parseScsiAddress("2:0:13:4294967296");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->host, 2u);
  EXPECT_EQ(address->withoutHost(), "0:13:4294967296");
  for (const char* text : {"", "2:0:0", "2:0:0:0:0", "a:0:0:0", "2:0:0:0x", "target2:0:0",
                           "-1:0:0:0", "2::0:0", "99999999999:0:0:0"}) {
    EXPECT_FALSE(parseScsiAddress(text)) << text;
  }
}

TEST(DevicePath, sataPortIsFound) {
  const DevicePath path(kPci + "/ata3/host2/target2:0:0/2:0:0:0/block/sda");
  EXPECT_EQ(path.ataPort(), "ata3");
  EXPECT_EQ(path.ataPortDirectory(), kPci + "/ata3");
  EXPECT_EQ(path.scsiDirectory(), kPci + "/ata3/host2/target2:0:0/2:0:0:0");
  EXPECT_EQ(path.deviceDirectory(), kPci + "/ata3/host2/target2:0:0/2:0:0:0");
  EXPECT_EQ(path.usbPort(), "");
}

TEST(DevicePath, usbPortLacksTheBus) {
  const DevicePath path(
      "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1.4/2-1.4:1.0/host6/"
      "target6:0:0/6:0:0:1/block/sdc");
  EXPECT_EQ(path.usbPort(), "1.4");
  EXPECT_EQ(path.scsiAddress()->withoutHost(), "0:0:1");
}

TEST(DevicePath, namesThatOnlyLookLikeBusesAreNone) {
  const DevicePath path("/sys/devices/platform/usbhost/ata-bridge/1-2/block/sda");
  EXPECT_EQ(path.usbPort(), "");
  EXPECT_EQ(path.ataPort(), "");
  EXPECT_EQ(path.component("usb"), "");
}

TEST(DevicePath, stablePartLacksTheKernelsCounters) {
  const auto stable = [](const std::string& path) { return DevicePath(path).stablePart(); };
  EXPECT_EQ(stable("/sys/devices/LNXSYBUS:00/vmbus/host0/target0:0:1/0:0:1:0/block/sda"),
            stable("/sys/devices/LNXSYBUS:00/vmbus/host3/target3:0:1/3:0:1:0/block/sdd"));
  EXPECT_NE(stable("/sys/devices/vbd-51712/block/xvda"),
            stable("/sys/devices/vbd-51728/block/xvdb"));
}

TEST(DevicePath, blockDirectoryIsNoDevice) {
  EXPECT_EQ(DevicePath("/sys/devices/x/virtio1/block/vda").deviceDirectory(),
            "/sys/devices/x/virtio1");
  EXPECT_EQ(DevicePath("/sys/devices/x/nvme/nvme0/nvme0n1").deviceDirectory(),
            "/sys/devices/x/nvme/nvme0");
}

TEST(DevicePath, hostilePathsAreHarmless) {
  for (const char* text : {"", "/", "//", "x", "/:::/", "/-/", "/usb1/-", "/usb/1-"}) {
    const DevicePath path{std::string(text)};
    EXPECT_EQ(path.pciAddress() + path.usbPort() + path.ataPortDirectory() + path.scsiDirectory(),
              "")
        << text;
    path.deviceDirectory();
    path.stablePart();
  }
}

}  // namespace
}  // namespace quenlor
