#include "readers/block/BlockTree.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <string>

#include "tests/readers/block/BlockMachine.h"
#include "tests/support/ProcessorTime.h"

namespace quenlor {
namespace {

using test::BlockMachine;

const char* const kSata = "pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0/0:0:0:0/block";

void addDisk(BlockMachine& machine) {
  machine.addDevice("sda", kSata, {{"dev", "8:0\n"}, {"size", "1000\n"}, {"ro", "0\n"}});
  machine.addPartition("sda", "sda10",
                       {{"partition", "10\n"},
                        {"start", "900\n"},
                        {"size", "100\n"},
                        {"ro", "1\n"},
                        {"uevent",
                         "MAJOR=259\nMINOR=3\nDEVTYPE=partition\nPARTN=10\n"
                         "PARTUUID=aa-10\nPARTNAME=data ten\n"}});
  machine.addPartition("sda", "sda2",
                       {{"partition", "2\n"},
                        {"start", "2048\n"},
                        {"size", "8\n"},
                        {"uevent", "MAJOR=8\nMINOR=2\n"}});
}

TEST(BlockTree, diskAndItsPartitionsAreRead) {
  BlockMachine machine;
  addDisk(machine);
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), 1u);
  const BlockDevice& disk = tree.devices()[0];
  EXPECT_EQ(disk.kind, BlockKind::kDrive);
  EXPECT_EQ(disk.deviceName(), "/dev/sda");
  EXPECT_EQ(disk.number, (DeviceNumber{8, 0}));
  EXPECT_EQ(disk.sizeBytes, 512000u);
  EXPECT_EQ(disk.isReadOnly, false);
  ASSERT_EQ(disk.partitions.size(), 2u);
  EXPECT_EQ(disk.partitions[0].name, "sda2");
  EXPECT_EQ(disk.partitions[0].startSector, 2048u);
  EXPECT_EQ(disk.partitions[0].sizeBytes, 4096u);
  EXPECT_EQ(disk.partitions[1].index, 10u);
  EXPECT_EQ(disk.partitions[1].number, (DeviceNumber{259, 3}));
  EXPECT_EQ(disk.partitions[1].isReadOnly, true);
  EXPECT_EQ(disk.partitions[1].names.partitionUuid, "aa-10");
  EXPECT_EQ(disk.partitions[1].names.partitionLabel, "data ten");
  EXPECT_EQ(tree.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(BlockTree, devicesAreFoundByNameNumberAndNode) {
  BlockMachine machine;
  addDisk(machine);
  machine.addDevice("dm-0", "virtual/block",
                    {{"dev", "254:0"}, {"size", "8"}, {"dm/name", "vg-lv"}, {"dm/uuid", ""}});
  machine.addDevice("cciss!c0d0", "pci0000:00/0000:01:00.0/cciss0/c0d0/block",
                    {{"dev", "104:0"}, {"size", "8"}});
  const BlockTree tree = readBlockTree();
  EXPECT_EQ(tree.byName("sda2").deviceName(), "/dev/sda2");
  EXPECT_EQ(tree.byNumber({8, 2}).partition->name, "sda2");
  EXPECT_EQ(tree.byNumber({254, 0}).deviceName(), "/dev/mapper/vg-lv");
  EXPECT_EQ(tree.byDeviceName("/dev/mapper/vg-lv").device->name, "dm-0");
  EXPECT_EQ(tree.byDeviceName("/dev/dm-0").device->name, "dm-0");
  EXPECT_EQ(tree.byDeviceName("/dev/cciss/c0d0").device->number, (DeviceNumber{104, 0}));
  EXPECT_FALSE(tree.byDeviceName("/dev/"));
  EXPECT_FALSE(tree.byDeviceName("sda"));
  EXPECT_FALSE(tree.byName("sdz"));
  EXPECT_FALSE(tree.byNumber({8, 99}));
}

TEST(BlockTree, kindsAreToldByNameAndPlace) {
  BlockMachine machine;
  const auto add = [&](const char* name, const char* parent) {
    machine.addDevice(name, parent, {{"dev", "1:1"}, {"size", "8"}});
  };
  const std::string card = "pci0000:00/0000:00:1a.0/mmc_host/mmc0/mmc0:0001/block";
  add("sda", kSata);
  add("nvme0n1", "virtual/nvme-subsystem/nvme-subsys0");
  add("nvme0c1n1", "pci0000:00/0000:01:00.0/nvme/nvme1");
  add("mmcblk0", card.c_str());
  add("mmcblk0boot0", (card + "/mmcblk0").c_str());
  add("mmcblk0rpmb", (card + "/mmcblk0").c_str());
  for (const char* name : {"nbd0", "ublkb1", "dm-0", "md127", "bcache0", "drbd1", "loop3", "ram0",
                           "zram0", "zd0", "nullb0"}) {
    add(name, "virtual/block");
  }
  const std::map<std::string, BlockKind> expected = {
      {"sda", BlockKind::kDrive},
      {"nvme0n1", BlockKind::kDrive},
      {"nvme0c1n1", BlockKind::kHiddenPath},
      {"mmcblk0", BlockKind::kDrive},
      {"mmcblk0boot0", BlockKind::kOther},
      {"mmcblk0rpmb", BlockKind::kOther},
      {"nbd0", BlockKind::kDrive},
      {"ublkb1", BlockKind::kDrive},
      {"dm-0", BlockKind::kDeviceMapper},
      {"md127", BlockKind::kMd},
      {"bcache0", BlockKind::kBcache},
      {"drbd1", BlockKind::kDrbd},
      {"loop3", BlockKind::kLoop},
      {"ram0", BlockKind::kMemory},
      {"zram0", BlockKind::kMemory},
      {"zd0", BlockKind::kOther},
      {"nullb0", BlockKind::kOther},
  };
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), expected.size());
  for (const BlockDevice& device : tree.devices()) {
    EXPECT_EQ(device.kind, expected.at(device.name)) << device.name;
  }
}

TEST(BlockTree, boundNamesOfDevicesComeInNaturalOrder) {
  BlockMachine machine;
  for (const char* name : {"sdaa", "sdb", "sda"}) machine.addDevice(name, kSata, {{"size", "1"}});
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), 3u);
  EXPECT_EQ(tree.devices()[1].name, "sdb");
  EXPECT_EQ(tree.devices()[2].name, "sdaa");
}

TEST(BlockTree, labelsComeFromUdevsRecord) {
  BlockMachine machine;
  addDisk(machine);
  machine.addUdev("8:2",
                  "E:ID_FS_TYPE=ext4\nE:ID_FS_LABEL=my_data\nE:ID_FS_LABEL_ENC=my\\x20data\n"
                  "E:ID_FS_UUID=0a-1b\nE:ID_FS_UUID_ENC=0a-1b\nE:ID_PART_ENTRY_UUID=cc-02\n"
                  "E:ID_PART_ENTRY_NAME=EFI\\x20System\n");
  machine.links["/dev/disk/by-uuid/other"] = "../../sda2";
  machine.directories["/dev/disk/by-uuid"] = {"other"};
  const OnDiskNames names = readBlockTree().byName("sda2").names();
  EXPECT_EQ(names.fileSystem, "ext4");
  EXPECT_EQ(names.label, "my data");
  EXPECT_EQ(names.uuid, "0a-1b");
  EXPECT_EQ(names.partitionUuid, "cc-02");
  EXPECT_EQ(names.partitionLabel, "EFI System");
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(BlockTree, withoutRecordsLabelsComeFromTheLinks) {
  BlockMachine machine;
  addDisk(machine);
  machine.directories["/dev/disk/by-uuid"] = {"0a-1b", "gone"};
  machine.links["/dev/disk/by-uuid/0a-1b"] = "../../sda2";
  machine.directories["/dev/disk/by-label"] = {"my\\x20data"};
  machine.links["/dev/disk/by-label/my\\x20data"] = "../../sda2";
  machine.directories["/dev/disk/by-partlabel"] = {"p"};
  machine.links["/dev/disk/by-partlabel/p"] = "../../sda2";
  const OnDiskNames names = readBlockTree().byName("sda2").names();
  EXPECT_EQ(names.uuid, "0a-1b");
  EXPECT_EQ(names.label, "my data");
  EXPECT_EQ(names.partitionLabel, "p");
}

TEST(BlockTree, encryptionIsSeenThroughAllLayers) {
  BlockMachine machine;
  addDisk(machine);
  const auto addMapped = [&](const char* name, const char* uuid, const char* slave) {
    machine.addDevice(name, "virtual/block",
                      {{"size", "8"}, {"dm/name", std::string("n-") + name}, {"dm/uuid", uuid}});
    machine.setSlaves(name, {slave});
  };
  addMapped("dm-0", "CRYPT-LUKS2-0-x", "sda2");
  addMapped("dm-1", "LVM-x", "dm-0");
  addMapped("dm-2", "LVM-y", "sda10");
  addMapped("dm-3", "", "dm-4");  // a ring, which no kernel makes
  addMapped("dm-4", "", "dm-3");
  const BlockTree tree = readBlockTree();
  EXPECT_TRUE(tree.isEncrypted(tree.byName("dm-1")));
  EXPECT_TRUE(tree.isEncrypted(tree.byName("dm-0")));
  EXPECT_FALSE(tree.isEncrypted(tree.byName("dm-2")));
  EXPECT_FALSE(tree.isEncrypted(tree.byName("dm-3")));
  EXPECT_FALSE(tree.isEncrypted(tree.byName("sda2")));
  EXPECT_FALSE(tree.isEncrypted({}));
}

TEST(BlockTree, deviceThatVanishesIsLeftOut) {
  BlockMachine machine;
  addDisk(machine);
  machine.directories["/sys/block"].push_back("sdb");  // listed, then gone
  machine.directories["/sys/block/sda"].push_back("sda3");
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), 1u);
  EXPECT_EQ(tree.devices()[0].partitions.size(), 2u);
}

TEST(BlockTree, nothingMoreIsReadOfUnusedLoops) {
  BlockMachine machine;
  machine.addDevice("loop0", "virtual/block", {{"dev", "7:0"}, {"size", "0"}});
  readBlockTree();
  EXPECT_EQ(machine.opened, std::vector<std::string>{"/sys/block/loop0/size"});
}

TEST(BlockTree, numbersThatAreNoneAreUnknown) {
  BlockMachine machine;
  machine.addDevice("sda", kSata, {{"dev", "8"}, {"size", "36028797018963968"}});  // 2^55 sectors
  machine.addDevice("sdb", kSata, {{"dev", "x:y"}, {"size", "7"}, {"ro", ""}});
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), 1u);
  EXPECT_FALSE(tree.devices()[0].number);
  EXPECT_FALSE(tree.devices()[0].isReadOnly);
  EXPECT_FALSE(parseDeviceNumber("8:4294967296"));
  EXPECT_FALSE(parseDeviceNumber("8:1:1"));
  EXPECT_FALSE(parseDeviceNumber(":"));
}

TEST(BlockTree, directoriesOfOldKernelsAreFollowed) {
  BlockMachine machine;
  machine.directories["/sys/block"] = {"sda", "ram0"};
  machine.directories["/sys/block/sda"];
  machine.links["/sys/block/sda/device"] = "../../devices/pci0000:00/0000:00:1f.2/host0/0:0:0:0";
  machine.addFiles("/sys/block/sda", {{"size", "8"}, {"dev", "8:0"}});
  machine.addFiles("/sys/block/ram0", {{"size", "8"}, {"dev", "1:0"}});
  const BlockTree tree = readBlockTree();
  ASSERT_EQ(tree.devices().size(), 2u);
  EXPECT_EQ(tree.byName("ram0").device->kind, BlockKind::kMemory);
  EXPECT_EQ(tree.byName("sda").device->path.scsiDirectory(),
            "/sys/devices/pci0000:00/0000:00:1f.2/host0/0:0:0:0");
}

TEST(BlockTree, machineWithoutSysfsSaysSo) {
  test::FakeHost machine;
  EXPECT_EQ(readBlockTree().outcome.status(), OutcomeStatus::kNoSource);
}

TEST(BlockTree, timeGrowsWithTheNumberOfDevices) {
  const auto secondsFor = [](int count) {
    BlockMachine machine;
    for (int index = 0; index < count; ++index) {
      const std::string name = "vd" + std::to_string(index);
      machine.addDevice(name, "pci0000:00/virtio" + std::to_string(index) + "/block",
                        {{"dev", "252:" + std::to_string(index)}, {"size", "8"}});
    }
    const auto start = test::processorTime();
    EXPECT_EQ(readBlockTree().devices().size(), static_cast<size_t>(count));
    return std::chrono::duration<double>(test::processorTime() - start).count();
  };
  secondsFor(100);
  // Ten times the devices: a square law would take a hundred times as long.
  EXPECT_LT(secondsFor(10000), 40 * secondsFor(1000) + 0.05);
}

}  // namespace
}  // namespace quenlor
