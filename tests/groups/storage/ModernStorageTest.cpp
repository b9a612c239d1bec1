// The modern sources of Storage, Partition and Volume on machines made of texts.
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "groups/modern/Collectors.h"
#include "limits/EarlierScan.h"
#include "tests/readers/block/BlockMachine.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::Attributes;
using test::BlockMachine;
using test::RowValues;
using test::valueOf;

struct Collected {
  std::vector<RowValues> rows;
  Outcome outcome;
};

Collected collectGroup(uint32_t id, ModernCollector collect, const ScanSettings& settings = {}) {
  ModernScan scan(settings);
  ModernTable table(*findGroup(MODERN_GROUPS_DEF, id));
  collect(scan, table);
  const auto built = table.build();
  return {test::rowsOf(built.get()), table.outcome()};
}

Collected storage() { return collectGroup(group::kStorage, collectStorage); }
Collected partitions(const ScanSettings& settings = {}) {
  return collectGroup(group::kPartition, collectPartition, settings);
}
Collected volumes() { return collectGroup(group::kVolume, collectVolume); }

const std::string kUnit = "pci0000:00/0000:00:1f.2/ata1/host0/target0:0:0";

void addDisk(BlockMachine& machine, const std::string& name = "sda",
             const std::string& address = "0:0:0:0", const Attributes& unit = {}) {
  Attributes attributes = {{"type", "0"}, {"vendor", "HGST"}, {"model", "HUS72602"}, {"rev", "A1"}};
  for (const auto& [key, value] : unit) attributes[key] = value;
  const std::string number = std::to_string(16 * (name.back() - 'a'));
  machine.addScsiDisk(name, kUnit, address, attributes,
                      {{"dev", "8:" + number},
                       {"size", "4194304"},
                       {"ro", "0"},
                       {"removable", "0"},
                       {"queue/rotational", "1"},
                       {"queue/logical_block_size", "512"},
                       {"queue/physical_block_size", "4096"}});
  machine.addHost("host0", "ahci");
}

void addPartition(BlockMachine& machine, const std::string& name, int minor) {
  machine.addPartition("sda", name,
                       {{"partition", name.substr(3)},
                        {"start", "2048"},
                        {"size", "2097152"},
                        {"ro", "0"},
                        {"uevent", "MAJOR=8\nMINOR=" + std::to_string(minor) + "\n"}});
}

void addFileSystem(BlockMachine& machine, const std::string& point, uint64_t blocks,
                   uint64_t inodes = 0) {
  struct statvfs status {};
  status.f_bsize = 1 << 20;
  status.f_frsize = 4096;
  status.f_blocks = blocks;
  status.f_bfree = blocks / 2;
  status.f_bavail = blocks / 4;
  status.f_files = inodes;
  status.f_ffree = inodes / 2;
  machine.fileSystems[point] = status;
}

// --- Storage ---

TEST(ModernStorage, diskIsRowWithAllItsAttributes) {
  BlockMachine machine;
  addDisk(machine, "sda", "0:0:0:0",
          {{"wwid", "naa.5000cca0b1c2d3e4"},
           {"state", "running"},
           {"vpd_pg80", test::vpdPage(0x80, "K1234567")}});
  const Collected collected = storage();
  EXPECT_EQ(collected.outcome.reason(), "");
  EXPECT_EQ(collected.rows, (std::vector<RowValues>{{{1, "1"},
                                                     {2, "91c8bc73f0fcc2b26e26c2d91360581e"},
                                                     {3, "30"},
                                                     {4, "HUS72602"},
                                                     {5, "HGST"},
                                                     {6, "K1234567"},
                                                     {7, "0"},
                                                     {8, "0"},
                                                     {9, "0"},
                                                     {10, "2048"},
                                                     {11, "2"},
                                                     {101, "/dev/sda"},
                                                     {102, "sata"},
                                                     {103, "2147483648"},
                                                     {104, "disk"},
                                                     {105, "A1"},
                                                     {106, "naa.5000cca0b1c2d3e4"},
                                                     {107, "512"},
                                                     {108, "4096"},
                                                     {109, "N"},
                                                     {110, "N"},
                                                     {111, "0000:00:1f.2/0:0:0"},
                                                     {112, "ahci"},
                                                     {115, "running"}}}));
}

std::string idWith(const Attributes& unit, const std::string& address = "0:0:0:0") {
  BlockMachine machine;
  addDisk(machine, "sda", address, unit);
  return valueOf(storage().rows.at(0), 2);
}

TEST(ModernStorage, identityIsTheBestThatTheDriveTells) {
  const Attributes serial = {{"vpd_pg80", test::vpdPage(0x80, "K1234567")}};
  Attributes named = serial;
  named["wwid"] = "naa.5000cca0b1c2d3e4";
  EXPECT_EQ(idWith(named), idWith(named, "0:0:9:0"));  // plugged in elsewhere
  EXPECT_EQ(idWith(serial), idWith(serial, "0:0:9:0"));
  EXPECT_NE(idWith({}), idWith({}, "0:0:9:0"));  // nothing but the place tells
  EXPECT_NE(idWith(named), idWith(serial));
  EXPECT_NE(idWith(serial), idWith({}));
}

TEST(ModernStorage, drivesWithOneSerialNumberHaveIdsOfTheirOwn) {
  BlockMachine machine;
  const Attributes unit = {{"vpd_pg80", test::vpdPage(0x80, "000000000001")}};
  addDisk(machine, "sda", "0:0:0:0", unit);
  addDisk(machine, "sdb", "0:0:1:0", unit);
  const Collected collected = storage();
  ASSERT_EQ(collected.rows.size(), 2u);
  EXPECT_NE(valueOf(collected.rows[0], 2), valueOf(collected.rows[1], 2));
}

TEST(ModernStorage, kindsHaveTheTypesOfTheClassicTable) {
  const std::vector<std::pair<std::string, std::pair<std::string, std::string>>> cases = {
      {"0", {"30", "disk"}},    {"1", {"3", "tape"}}, {"5", {"17", "optical"}},
      {"7", {"22", "optical"}}, {"8", {"1", "none"}},
  };
  for (const auto& [type, expected] : cases) {
    BlockMachine machine;
    addDisk(machine, "sda", "0:0:0:0", {{"type", type}});
    const Collected collected = storage();
    ASSERT_EQ(collected.rows.size(), 1u) << type;
    EXPECT_EQ(valueOf(collected.rows[0], 3), expected.first) << type;
    EXPECT_EQ(valueOf(collected.rows[0], 104), expected.second) << type;
  }
}

TEST(ModernStorage, machineWithoutSysfsHasNoSource) {
  test::FakeHost machine;
  const Collected collected = storage();
  EXPECT_TRUE(collected.rows.empty());
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kNoSource);
}

// --- Partition ---

TEST(ModernPartition, mountedFileSystemIsRowWithAllItsAttributes) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  machine.addUdev("8:1",
                  "E:ID_FS_TYPE=ext4\nE:ID_FS_LABEL_ENC=root\nE:ID_FS_UUID_ENC=0a-1b\n"
                  "E:ID_PART_ENTRY_UUID=cc-01\nE:ID_PART_ENTRY_NAME=system\n");
  machine.files["/proc/self/mountinfo"] =
      "20 1 8:1 / / rw,noatime - ext4 /dev/root rw,secret=x\n"
      "21 20 8:1 /srv /srv rw - ext4 /dev/root rw\n";
  addFileSystem(machine, "/", 250000, 1000);
  const Collected collected = partitions();
  EXPECT_EQ(collected.outcome.reason(), "");
  EXPECT_EQ(collected.rows, (std::vector<RowValues>{{{1, "1"},          {2, "1"},
                                                     {3, "3"},          {4, "/dev/sda1"},
                                                     {5, "1048576"},    {6, "65535"},
                                                     {7, "/dev/sda1"},  {8, "/"},
                                                     {9, "1000000"},    {10, "250000"},
                                                     {101, "ext4"},     {102, "root"},
                                                     {103, "0a-1b"},    {104, "rw,noatime"},
                                                     {105, "/dev/sda"}, {106, "1"},
                                                     {107, "2048"},     {108, "cc-01"},
                                                     {109, "system"},   {110, "1073741824"},
                                                     {111, "1000"},     {112, "500"},
                                                     {113, "N"},        {114, "1"},
                                                     {115, "N"}}}));
  EXPECT_EQ(machine.measured, std::vector<std::string>{"/"});
}

TEST(ModernPartition, swapAreasAndUnusedPartitionsAreRows) {
  BlockMachine machine;
  addDisk(machine);
  for (int index = 1; index <= 3; ++index)
    addPartition(machine, "sda" + std::to_string(index), index);
  machine.addUdev("8:3", "E:ID_FS_TYPE=LVM2_member\nE:ID_FS_UUID_ENC=pv\n");
  machine.files["/proc/self/mountinfo"] = "20 1 8:1 / / rw - ext4 /dev/sda1 ro\n";
  machine.files["/proc/swaps"] =
      "Filename Type Size Used Priority\n/dev/sda2 partition 1048572 1000 -2\n"
      "/swap\\040file file 2048 0 -3\n";
  addFileSystem(machine, "/", 1000);
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 4u);
  EXPECT_EQ(valueOf(collected.rows[0], 113), "Y");  // of the file system, not of the mount
  const RowValues& swap = collected.rows[1];
  EXPECT_EQ(valueOf(swap, 6), "130");
  EXPECT_EQ(valueOf(swap, 5), "1048576");  // the partition's
  EXPECT_EQ(valueOf(swap, 7), "/dev/sda2");
  EXPECT_EQ(valueOf(swap, 8), "swap");
  EXPECT_EQ(valueOf(swap, 9), "1048572");
  EXPECT_EQ(valueOf(swap, 10), "1047572");
  EXPECT_EQ(valueOf(swap, 105), "/dev/sda");
  const RowValues& unused = collected.rows[2];
  EXPECT_EQ(valueOf(unused, 2), "1");
  EXPECT_EQ(valueOf(unused, 7), "/dev/sda3");
  EXPECT_EQ(valueOf(unused, 8), "");
  EXPECT_EQ(valueOf(unused, 9), "0");
  EXPECT_EQ(valueOf(unused, 10), "0");
  EXPECT_EQ(valueOf(unused, 101), "LVM2_member");
  EXPECT_EQ(valueOf(unused, 103), "pv");
  EXPECT_EQ(valueOf(unused, 104), "(absent)");
  EXPECT_EQ(valueOf(collected.rows[3], 7), "/swap file");
  EXPECT_EQ(valueOf(collected.rows[3], 5), "2048");
}

TEST(ModernPartition, fileSystemOfAnotherMachineIsRemote) {
  BlockMachine machine;
  machine.files["/proc/self/mountinfo"] =
      "20 1 0:40 / /net rw - nfs4 box:/srv rw\n21 1 0:41 / /share ro - cifs //box/share rw\n";
  addFileSystem(machine, "/net", 1000);
  addFileSystem(machine, "/share", 3ull << 30);  // 12 TiB
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 2u);
  EXPECT_EQ(valueOf(collected.rows[0], 7), "//box/share");
  EXPECT_EQ(valueOf(collected.rows[0], 9), std::to_string(12ull << 30));
  EXPECT_EQ(valueOf(collected.rows[0], 113), "Y");
  const RowValues& row = collected.rows[1];
  EXPECT_EQ(valueOf(row, 2), "2");
  EXPECT_EQ(valueOf(row, 3), "4");
  EXPECT_EQ(valueOf(row, 4), "remote");
  EXPECT_EQ(valueOf(row, 7), "box:/srv");
  EXPECT_EQ(valueOf(row, 5), "4000");
  EXPECT_EQ(valueOf(row, 110), "4096000");
  EXPECT_EQ(valueOf(row, 105), "(absent)");
  EXPECT_EQ(valueOf(row, 115), "(absent)");
}

TEST(ModernPartition, hiddenAndAutomountPointsAreNotMeasured) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  machine.files["/proc/self/mountinfo"] =
      "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n"
      "21 20 8:17 / /mnt rw - xfs /dev/sdb1 rw\n"
      "22 20 0:50 / /mnt rw - autofs systemd-1 rw,direct\n";
  addFileSystem(machine, "/", 1000);
  addFileSystem(machine, "/mnt", 5);
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 2u);
  EXPECT_EQ(machine.measured, std::vector<std::string>{"/"});
  EXPECT_EQ(valueOf(collected.rows[1], 9), "0");
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(collected.outcome.reason(), "sizes: hidden mount points");
}

TEST(ModernPartition, fileSystemThatRefusesIsSaid) {
  BlockMachine machine;
  machine.files["/proc/self/mountinfo"] = "20 1 0:40 / /home/u/x rw - fuse.mine mine rw\n";
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 1u);
  EXPECT_EQ(valueOf(collected.rows[0], 9), "0");
  EXPECT_EQ(collected.outcome.reason(), "sizes: not told by some file systems");
}

TEST(ModernPartition, mountsAreToldWithoutSysfsToo) {
  test::FakeHost machine;
  machine.files["/proc/self/mountinfo"] = "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
  machine.fileSystems["/"].f_bsize = 4096;
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 1u);
  EXPECT_EQ(valueOf(collected.rows[0], 4), "/dev/sda1");
  EXPECT_EQ(valueOf(collected.rows[0], 115), "(absent)");
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(collected.outcome.reason(), "block devices: no sysfs");
}

TEST(ModernPartition, withoutSysfsAndMountTableNothingTells) {
  const test::FakeHost machine;
  const Collected collected = partitions();
  EXPECT_TRUE(collected.rows.empty());
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kNoSource);
  EXPECT_EQ(collected.outcome.reason(), "block devices: no sysfs; mounts: no table");
}

TEST(ModernPartition, partitionsAreToldWithoutMountTableToo) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 1u);
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(collected.outcome.reason(), "mounts: no table");
}

TEST(ModernPartition, deadServersCostTheirLimitOnce) {
  BlockMachine machine;
  machine.files["/proc/self/mountinfo"] =
      "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n21 20 0:40 / /dead1 rw - nfs a:/x rw\n"
      "22 20 0:41 / /dead2 rw - nfs b:/x rw\n";
  const auto released = std::make_shared<std::atomic<bool>>(false);
  machine.onStatvfs = [released](const char* path, struct statvfs* out) {
    // What waits for a dead server is in the kernel, where nothing cancels it.
    pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, nullptr);
    *out = {};
    out->f_bsize = out->f_frsize = 1024;
    out->f_blocks = 7;
    while (path[1] == 'd' && !*released) std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return 0;
  };
  ScanSettings settings;
  settings.mountLimit = 200;
  const auto start = std::chrono::steady_clock::now();
  const Collected collected = partitions(settings);
  const auto spent = std::chrono::steady_clock::now() - start;
  *released = true;
  EXPECT_LT(spent, std::chrono::milliseconds(2000));
  ASSERT_EQ(collected.rows.size(), 3u);
  EXPECT_EQ(valueOf(collected.rows[0], 9), "7");
  EXPECT_EQ(valueOf(collected.rows[1], 9), "0");
  EXPECT_EQ(valueOf(collected.rows[2], 9), "0");
  EXPECT_EQ(collected.outcome.reason(), "sizes: file systems without an answer in time");
  EarlierScan::forgetMark();  // for the other tests of this process
  std::this_thread::sleep_for(std::chrono::milliseconds(100));  // the given-up workers end
}

TEST(ModernPartition, encryptionAndLabelsOfBtrfsComeFromItsDevices) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  machine.addDevice("dm-0", "virtual/block",
                    {{"dev", "254:0"},
                     {"size", "2048"},
                     {"dm/name", "luks-1"},
                     {"dm/uuid", "CRYPT-LUKS2-0123456789abcdef0123456789abcdef-luks-1"}});
  machine.setSlaves("dm-0", {"sda1"});
  machine.directories["/sys/fs/btrfs"] = {"0000-1111"};
  machine.directories["/sys/fs/btrfs/0000-1111/devices"] = {"dm-0"};
  machine.files["/sys/fs/btrfs/0000-1111/label"] = "home\n";
  machine.files["/proc/self/mountinfo"] =
      "20 1 0:30 /@ / rw - btrfs /dev/mapper/luks-1 rw\n"
      "21 20 0:31 /@home /home rw - btrfs /dev/mapper/luks-1 rw\n";
  addFileSystem(machine, "/", 10);
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 2u);
  const RowValues& row = collected.rows[0];
  EXPECT_EQ(valueOf(row, 4), "/dev/mapper/luks-1");
  EXPECT_EQ(valueOf(row, 5), "1024");
  EXPECT_EQ(valueOf(row, 102), "home");
  EXPECT_EQ(valueOf(row, 103), "0000-1111");
  EXPECT_EQ(valueOf(row, 114), "1");
  EXPECT_EQ(valueOf(row, 115), "Y");
  EXPECT_EQ(valueOf(collected.rows[1], 7), "/dev/sda1");
  EXPECT_EQ(valueOf(collected.rows[1], 115), "N");
}

TEST(ModernPartition, partitionsOfMultipathAreThoseOfTheHead) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  machine.addDevice("dm-0", "virtual/block",
                    {{"size", "4194304"}, {"dm/name", "mpatha"}, {"dm/uuid", "mpath-36005"}});
  machine.setSlaves("dm-0", {"sda"});
  machine.addDevice("dm-1", "virtual/block",
                    {{"size", "2048"}, {"dm/name", "mpatha1"}, {"dm/uuid", "part1-mpath-36005"}});
  machine.setSlaves("dm-1", {"dm-0"});
  machine.files["/proc/self/mountinfo"] = "";
  const Collected collected = partitions();
  ASSERT_EQ(collected.rows.size(), 1u);
  EXPECT_EQ(valueOf(collected.rows[0], 7), "/dev/mapper/mpatha1");
  EXPECT_EQ(valueOf(collected.rows[0], 105), "/dev/mapper/mpatha");
  EXPECT_EQ(valueOf(collected.rows[0], 106), "1");
}

// --- Volume ---

TEST(ModernVolume, volumeIsRowWithAllItsAttributes) {
  BlockMachine machine;
  addDisk(machine);
  machine.addDevice(
      "dm-0", "virtual/block",
      {{"dev", "254:0"},
       {"size", "2048"},
       {"dm/name", "vg-a,b"},
       {"dm/uuid", "LVM-abcdefGHIJKLmnopQRSTuvwxYZ012345KNbQ4g8dXhPb1c2E9sXq0uT3yHs4GZ7a"},
       {"dm/suspended", "0"}});
  machine.setSlaves("dm-0", {"sda"});
  machine.files["/proc/self/mountinfo"] =
      "20 1 254:0 / /data rw - xfs /dev/mapper/vg-a,b rw\n"
      "21 1 254:0 / /again rw - xfs /dev/mapper/vg-a,b rw\n";
  const Collected collected = volumes();
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kComplete);
  EXPECT_EQ(collected.rows, (std::vector<RowValues>{{{1, "1"},
                                                     {2, "vg-a,b"},
                                                     {3, "/dev/mapper/vg-a,b"},
                                                     {4, "lvm"},
                                                     {5, "linear"},
                                                     {6, "active"},
                                                     {7, "1048576"},
                                                     {8, "KNbQ4g-8dXh-Pb1c-2E9s-Xq0u-T3yH-s4GZ7a"},
                                                     {9, "vg"},
                                                     {10, "/dev/sda"},
                                                     {12, "/data"}}}));
}

TEST(ModernVolume, poolIsMountedWhereItsFirstDataSetIs) {
  BlockMachine machine;
  machine.directories["/proc/spl/kstat/zfs"] = {"tank"};
  machine.files["/proc/spl/kstat/zfs/tank/state"] = "ONLINE\n";
  machine.files["/proc/self/mountinfo"] =
      "20 1 0:40 / /tanker rw - zfs tanker rw\n21 1 0:41 / /srv rw - zfs tank/srv rw\n";
  const Collected collected = volumes();
  EXPECT_EQ(
      collected.rows,
      (std::vector<RowValues>{{{1, "1"}, {2, "tank"}, {4, "zfs"}, {6, "ONLINE"}, {12, "/srv"}}}));
}

TEST(ModernVolume, mountsAreNotReadForNothing) {
  BlockMachine machine;
  addDisk(machine);
  EXPECT_TRUE(volumes().rows.empty());
  EXPECT_TRUE(machine.readEachOnce());
  for (const std::string& path : machine.opened) EXPECT_NE(path, "/proc/self/mountinfo");
}

TEST(ModernGroups, oneScanReadsEachFileOnce) {
  BlockMachine machine;
  addDisk(machine);
  addPartition(machine, "sda1", 1);
  machine.files["/proc/self/mountinfo"] = "20 1 8:1 / / rw - ext4 /dev/sda1 rw\n";
  addFileSystem(machine, "/", 10);
  ModernScan scan{ScanSettings()};
  for (const auto& [id, collect] :
       {std::pair<uint32_t, ModernCollector>{group::kStorage, collectStorage},
        {group::kPartition, collectPartition},
        {group::kVolume, collectVolume}}) {
    ModernTable table(*findGroup(MODERN_GROUPS_DEF, id));
    collect(scan, table);
  }
  EXPECT_TRUE(machine.readEachOnce());
  EXPECT_TRUE(machine.started.empty());
}

}  // namespace
}  // namespace quenlor
