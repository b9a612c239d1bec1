#include "readers/block/Volumes.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/readers/block/BlockMachine.h"

namespace quenlor {
namespace {

using test::Attributes;
using test::BlockMachine;

using Names = std::vector<std::string>;

const std::string kGroup = "LVM-abcdefGHIJKLmnopQRSTuvwxYZ012345";
const std::string kLvm = kGroup + "KNbQ4g8dXhPb1c2E9sXq0uT3yHs4GZ7a";

VolumeList volumesOf() {
  const BlockTree tree = readBlockTree();
  return readVolumes(tree);
}

void addMapped(BlockMachine& machine, const std::string& name, const std::string& mapperName,
               const std::string& uuid, const Names& slaves) {
  machine.addDevice(
      name, "virtual/block",
      {{"size", "2048"}, {"dm/name", mapperName}, {"dm/uuid", uuid}, {"dm/suspended", "0"}});
  machine.setSlaves(name, slaves);
}

void addDisk(BlockMachine& machine, const std::string& name) {
  machine.addDevice(name, "pci0000:00/0000:00:1f.2/" + name + "/block", {{"size", "4096"}});
}

TEST(Volumes, arrayIsWhole) {
  BlockMachine machine;
  machine.addDevice("md0", "virtual/block",
                    {{"dev", "9:0"},
                     {"size", "2048"},
                     {"md/level", "raid1\n"},
                     {"md/array_state", "clean\n"},
                     {"md/degraded", "1\n"}});
  machine.setSlaves("md0", {"sdb1", "sda1"});
  machine.addUdev("9:0", "E:MD_UUID=01234567:89abcdef:01234567:89abcdef\n");
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 1u);
  const Volume& volume = list.volumes[0];
  EXPECT_EQ(volume.name, "md0");
  EXPECT_EQ(volume.deviceName, "/dev/md0");
  EXPECT_EQ(volume.kind, "raid");
  EXPECT_EQ(volume.level, "raid1");
  EXPECT_EQ(volume.state, "clean");
  EXPECT_EQ(volume.degraded, 1u);
  EXPECT_EQ(volume.sizeBytes, 1048576u);
  EXPECT_EQ(volume.uuid, "01234567-89ab-cdef-0123-456789abcdef");
  EXPECT_EQ(volume.members, (Names{"/dev/sda1", "/dev/sdb1"}));
  EXPECT_TRUE(machine.readEachOnce());
}

TEST(Volumes, levelWithoutSpareDrivesTellsNothingOfMissingOnes) {
  BlockMachine machine;
  machine.addDevice("md0", "virtual/block", {{"size", "1"}, {"md/level", "raid0"}});
  EXPECT_FALSE(volumesOf().volumes.at(0).degraded);
}

TEST(Volumes, arrayThatIsNotStartedIsNone) {
  BlockMachine machine;
  machine.addDevice("md127", "virtual/block", {{"size", "0"}, {"md/array_state", "clear"}});
  machine.addDevice("drbd0", "virtual/block", {{"size", "0"}});
  EXPECT_TRUE(volumesOf().volumes.empty());
}

TEST(Volumes, stackOfLuksAndLvmIsTwoVolumes) {
  BlockMachine machine;
  addDisk(machine, "sda");
  addMapped(machine, "dm-0", "luks-home", "CRYPT-LUKS2-0123456789abcdef0123456789abcdef-luks-home",
            {"sda"});
  addMapped(machine, "dm-1", "my--vg-root", kLvm, {"dm-0"});
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 2u);
  EXPECT_EQ(list.volumes[0].name, "luks-home");
  EXPECT_EQ(list.volumes[0].kind, "crypt");
  EXPECT_EQ(list.volumes[0].uuid, "01234567-89ab-cdef-0123-456789abcdef");
  EXPECT_EQ(list.volumes[0].members, Names{"/dev/sda"});
  EXPECT_EQ(list.volumes[1].name, "my--vg-root");
  EXPECT_EQ(list.volumes[1].deviceName, "/dev/mapper/my--vg-root");
  EXPECT_EQ(list.volumes[1].kind, "lvm");
  EXPECT_EQ(list.volumes[1].level, "linear");
  EXPECT_EQ(list.volumes[1].volumeGroup, "my-vg");
  EXPECT_EQ(list.volumes[1].uuid, "KNbQ4g-8dXh-Pb1c-2E9s-Xq0u-T3yH-s4GZ7a");
  EXPECT_EQ(list.volumes[1].state, "active");
  EXPECT_EQ(list.volumes[1].members, Names{"/dev/mapper/luks-home"});
}

TEST(Volumes, membersAreSeenThroughHiddenLayers) {
  BlockMachine machine;
  addDisk(machine, "sda");
  addDisk(machine, "sdb");
  addMapped(machine, "dm-0", "vg-pool_tdata", kLvm + "-tdata", {"sdb", "sda"});
  addMapped(machine, "dm-1", "vg-pool_tmeta", kLvm + "-tmeta", {"sda"});
  addMapped(machine, "dm-2", "vg-pool-tpool", kLvm + "-tpool", {"dm-0", "dm-1"});
  addMapped(machine, "dm-3", "vg-thin", kLvm, {"dm-2"});
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 1u);
  EXPECT_EQ(list.volumes[0].level, "thin");
  EXPECT_EQ(list.volumes[0].members, (Names{"/dev/sda", "/dev/sdb"}));
}

TEST(Volumes, mirrorOfLvmSaysNoLevelThatIsNotSeen) {
  BlockMachine machine;
  addDisk(machine, "sda");
  addMapped(machine, "dm-0", "vg-lv_rimage_0", kLvm, {"sda"});
  addMapped(machine, "dm-1", "vg-lv_rimage_1", kLvm, {"sda"});
  addMapped(machine, "dm-2", "vg-lv", kLvm, {"dm-0", "dm-1"});
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 1u);
  EXPECT_EQ(list.volumes[0].level, "");
  EXPECT_EQ(list.volumes[0].members, Names{"/dev/sda"});
}

TEST(Volumes, multipathIsNoVolume_itsPartitionIs) {
  BlockMachine machine;
  addMapped(machine, "dm-0", "mpatha", "mpath-3600508b4", {"sda"});
  addMapped(machine, "dm-1", "mpatha1", "part1-mpath-3600508b4", {"dm-0"});
  addMapped(machine, "dm-2", "hand", "", {"sdb"});
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 2u);
  EXPECT_EQ(list.volumes[0].kind, "other");
  EXPECT_EQ(list.volumes[1].kind, "linear");
  EXPECT_EQ(list.volumes[1].members, Names{"/dev/mapper/mpatha"});
}

TEST(Volumes, btrfsCountsFromTwoDevicesOn) {
  BlockMachine machine;
  addDisk(machine, "sda");
  addDisk(machine, "sdb");
  machine.directories["/sys/fs/btrfs"] = {"features", "aaaa", "bbbb"};
  machine.directories["/sys/fs/btrfs/aaaa/devices"] = {"sdb", "sda"};
  machine.directories["/sys/fs/btrfs/aaaa/devinfo"] = {"1", "2", "3"};
  machine.addFiles("/sys/fs/btrfs/aaaa", {{"label", "pool\n"},
                                          {"devinfo/1/missing", "0"},
                                          {"devinfo/2/missing", "0"},
                                          {"devinfo/3/missing", "1"}});
  machine.directories["/sys/fs/btrfs/bbbb/devices"] = {"sda"};
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 1u);
  EXPECT_EQ(list.volumes[0].name, "pool");
  EXPECT_EQ(list.volumes[0].kind, "btrfs");
  EXPECT_EQ(list.volumes[0].uuid, "aaaa");
  EXPECT_EQ(list.volumes[0].degraded, 1u);
  EXPECT_EQ(list.volumes[0].sizeBytes, 2u * 4096 * 512);
  ASSERT_EQ(list.btrfs.size(), 2u);
  EXPECT_EQ(list.btrfs[1].uuid, "bbbb");
  EXPECT_EQ(list.btrfs[1].devices, Names{"/dev/sda"});
  EXPECT_EQ(list.volumes[0].members, (Names{"/dev/sda", "/dev/sdb"}));
}

TEST(Volumes, poolOfZfsHasNameAndStateOnly) {
  BlockMachine machine;
  machine.directories["/sys/fs/btrfs"];
  machine.directories["/proc/spl/kstat/zfs"] = {"arcstats", "tank"};
  machine.files["/proc/spl/kstat/zfs/tank/state"] = "ONLINE\n";
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 1u);
  EXPECT_EQ(list.volumes[0].name, "tank");
  EXPECT_EQ(list.volumes[0].kind, "zfs");
  EXPECT_EQ(list.volumes[0].state, "ONLINE");
  EXPECT_FALSE(list.volumes[0].sizeBytes);
  EXPECT_EQ(list.volumes[0].deviceName, "");
}

TEST(Volumes, cacheAndReplicaAreVolumes) {
  BlockMachine machine;
  machine.addDevice("bcache0", "virtual/block",
                    {{"size", "8"},
                     {"bcache/cache_mode", "writethrough [writeback] writearound none\n"},
                     {"bcache/state", "dirty\n"}});
  machine.setSlaves("bcache0", {"sda"});
  machine.addDevice("drbd1", "virtual/block", {{"size", "8"}});
  const VolumeList list = volumesOf();
  ASSERT_EQ(list.volumes.size(), 2u);
  EXPECT_EQ(list.volumes[0].level, "writeback");
  EXPECT_EQ(list.volumes[0].state, "dirty");
  EXPECT_EQ(list.volumes[1].kind, "drbd");
}

}  // namespace
}  // namespace quenlor
