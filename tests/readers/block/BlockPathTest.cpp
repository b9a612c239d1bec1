#include "readers/block/BlockPath.h"

#include <gtest/gtest.h>

#include <string>

namespace quenlor {
namespace {

const std::string kPci = "/sys/devices/pci0000:00/0000:00:1f.2";

TEST(BlockPath, linksAreResolvedByTheirText) {
  EXPECT_EQ(resolveLink("/sys/block", "../devices/virtual/block/loop0"),
            "/sys/devices/virtual/block/loop0");
  EXPECT_EQ(resolveLink("/dev/disk/by-uuid", "../../sda1"), "/dev/sda1");
  EXPECT_EQ(resolveLink("/a/b", "/c/./d"), "/c/d");
  EXPECT_EQ(resolveLink("/a", "../../../../x"), "/x");
  EXPECT_EQ(resolveLink("/a", ""), "/a");
}

TEST(BlockPath, pciAddressIsThatOfTheLastDeviceOnTheWay) {
  EXPECT_EQ(BlockPath("/sys/devices/pci0000:00/0000:00:1c.0/0000:3b:00.0/nvme/nvme0/nvme0n1")
                .pciAddress(),
            "0000:3b:00.0");
  EXPECT_EQ(
      BlockPath("/sys/devices/pci0000:00/0000:00:0e.0/pci10000:e0/10000:e1:00.0/nvme").pciAddress(),
      "10000:e1:00.0");
  EXPECT_EQ(BlockPath("/sys/devices/virtual/block/md0").pciAddress(), "");
}

TEST(BlockPath, scsiAddressHasFourNumbers) {
  const auto address = parseScsiAddress("2:0:13:4294967296");
  ASSERT_TRUE(address);
  EXPECT_EQ(address->host, 2u);
  EXPECT_EQ(address->withoutHost(), "0:13:4294967296");
  for (const char* text : {"", "2:0:0", "2:0:0:0:0", "a:0:0:0", "2:0:0:0x", "target2:0:0",
                           "-1:0:0:0", "2::0:0", "99999999999:0:0:0"}) {
    EXPECT_FALSE(parseScsiAddress(text)) << text;
  }
}

TEST(BlockPath, sataPortIsFound) {
  const BlockPath path(kPci + "/ata3/host2/target2:0:0/2:0:0:0/block/sda");
  EXPECT_EQ(path.ataPort(), "ata3");
  EXPECT_EQ(path.ataPortDirectory(), kPci + "/ata3");
  EXPECT_EQ(path.scsiDirectory(), kPci + "/ata3/host2/target2:0:0/2:0:0:0");
  EXPECT_EQ(path.deviceDirectory(), kPci + "/ata3/host2/target2:0:0/2:0:0:0");
  EXPECT_EQ(path.usbPort(), "");
}

TEST(BlockPath, usbPortLacksTheBus) {
  const BlockPath path(
      "/sys/devices/pci0000:00/0000:00:14.0/usb2/2-1/2-1.4/2-1.4:1.0/host6/"
      "target6:0:0/6:0:0:1/block/sdc");
  EXPECT_EQ(path.usbPort(), "1.4");
  EXPECT_EQ(path.scsiAddress()->withoutHost(), "0:0:1");
}

TEST(BlockPath, namesThatOnlyLookLikeBusesAreNone) {
  const BlockPath path("/sys/devices/platform/usbhost/ata-bridge/1-2/block/sda");
  EXPECT_EQ(path.usbPort(), "");
  EXPECT_EQ(path.ataPort(), "");
  EXPECT_EQ(path.component("usb"), "");
}

TEST(BlockPath, stablePartLacksTheKernelsCounters) {
  const auto stable = [](const std::string& path) { return BlockPath(path).stablePart(); };
  EXPECT_EQ(stable("/sys/devices/LNXSYBUS:00/vmbus/host0/target0:0:1/0:0:1:0/block/sda"),
            stable("/sys/devices/LNXSYBUS:00/vmbus/host3/target3:0:1/3:0:1:0/block/sdd"));
  EXPECT_NE(stable("/sys/devices/vbd-51712/block/xvda"),
            stable("/sys/devices/vbd-51728/block/xvdb"));
}

TEST(BlockPath, blockDirectoryIsNoDevice) {
  EXPECT_EQ(BlockPath("/sys/devices/x/virtio1/block/vda").deviceDirectory(),
            "/sys/devices/x/virtio1");
  EXPECT_EQ(BlockPath("/sys/devices/x/nvme/nvme0/nvme0n1").deviceDirectory(),
            "/sys/devices/x/nvme/nvme0");
}

TEST(BlockPath, hostilePathsAreHarmless) {
  for (const char* text : {"", "/", "//", "x", "/:::/", "/-/", "/usb1/-", "/usb/1-"}) {
    const BlockPath path{std::string(text)};
    EXPECT_EQ(path.pciAddress() + path.usbPort() + path.ataPortDirectory() + path.scsiDirectory(),
              "")
        << text;
    path.deviceDirectory();
    path.stablePart();
  }
}

}  // namespace
}  // namespace quenlor
