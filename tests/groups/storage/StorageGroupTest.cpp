#include "groups/storage/StorageGroup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <linux/fd.h>

#include <cerrno>
#include <cstring>

#include "groups/storage/StorageGatherers.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FakeDevice;
using test::FakeHost;
using test::RowValues;
using test::ScriptedSgDevice;
using test::valueOf;
using ::testing::Contains;
using ::testing::Not;

constexpr uint32_t kIndex = 1;
constexpr uint32_t kId = 2;
constexpr uint32_t kType = 3;
constexpr uint32_t kModel = 4;
constexpr uint32_t kManufacturer = 5;
constexpr uint32_t kSerialNumber = 6;
constexpr uint32_t kTotalSize = 10;

class StorageGroupTest : public ::testing::Test {
 protected:
  // Collects on this thread.
  std::vector<RowValues> rows() {
    const std::unique_ptr<VelTable> table(group.generateTable());
    EXPECT_EQ(table->getGroupId(), 5U);
    EXPECT_EQ(table->getGroupVersion(), 1U);
    EXPECT_EQ(machine.openDescriptors(), 0);
    EXPECT_EQ(machine.openCommands(), 0);
    return test::rowsOf(table.get());
  }

  // Adds generic nodes of the devices, in this order.
  void addGeneric(std::initializer_list<ScriptedSgDevice*> devices) {
    int number = 0;
    for (ScriptedSgDevice* device : devices) {
      machine.devices["/dev/sg" + std::to_string(number++)] = device->genericNode();
    }
  }

  void addOther(const std::string& name, FakeDevice node) {
    machine.directories["/dev"].push_back(name);
    machine.devices["/dev/" + name] = std::move(node);
  }

  void addIdeDisk() {
    machine.directories["/proc/ide"] = {"ide0"};
    machine.directories["/proc/ide/ide0"] = {"hda"};
    machine.directories["/proc/ide/ide0/hda"];
    machine.files["/proc/ide/ide0/hda/media"] = "disk\n";
    machine.files["/proc/ide/ide0/hda/model"] = "MAXTOR 6L020J1\n";
    machine.files["/proc/ide/ide0/hda/capacity"] = "39102336\n";
    machine.files["/proc/ide/ide0/hda/geometry"] = "logical      2434/255/63\n";
  }

  void addFloppy() {
    FakeDevice drive;
    drive.ioctl = [](unsigned long request, void* argument) {
      if (request == FDGETDRVTYP) {
        std::memcpy(argument, "H1440", 6);
        return 0;
      }
      floppy_struct geometry = {};
      geometry.sect = 18;
      geometry.head = 2;
      geometry.track = 80;
      std::memcpy(argument, &geometry, sizeof(geometry));
      return 0;
    };
    machine.devices["/dev/fd0"] = drive;
  }

  FakeHost machine;
  StorageGroup group;
};

TEST_F(StorageGroupTest, bareMachineGivesAnEmptyTable) { EXPECT_TRUE(rows().empty()); }

TEST_F(StorageGroupTest, ideRowHasElevenAttributesInOrder) {
  addIdeDisk();
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0], (RowValues{{1, "1"},
                                 {2, "3e89b3c6fec8706f5f56c4a1f9228d12"},  // 24342556319551168
                                 {3, "30"},
                                 {4, "6L020J1"},
                                 {5, "MAXTOR"},
                                 {6, ""},
                                 {7, "2434"},
                                 {8, "255"},
                                 {9, "63"},
                                 {10, "19092"},
                                 {11, "2"}}));
}

TEST_F(StorageGroupTest, ideCdRomHasType17AndUnsupportedSecurity) {
  addIdeDisk();
  machine.files["/proc/ide/ide0/hda/media"] = "cdrom\n";
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kType), "17");
  EXPECT_EQ(valueOf(table[0], 11), "2");
  EXPECT_EQ(valueOf(table[0], kTotalSize), "0");
}

TEST_F(StorageGroupTest, ideSecurityStatesBecomeYesAndNo) {
  addIdeDisk();
  for (const auto& [word, expected] : {std::pair{3, "0"}, std::pair{1, "1"}, std::pair{0, "2"}}) {
    machine.devices["/dev/hda"].ioctl = [word = word](unsigned long request, void* argument) {
      if (request != 0x031F) return -1;
      std::memset(argument, 0, 516);
      static_cast<unsigned char*>(argument)[260] = static_cast<unsigned char>(word);
      return 0;
    };
    EXPECT_EQ(valueOf(rows()[0], 11), expected) << word;
  }
}

TEST_F(StorageGroupTest, dac960RowsTakeTheirGeometryFromFdisk) {
  machine.files["/proc/rd/c0/current_status"] =
      "Configuring Mylex AcceleRAID 352 PCI RAID Controller\n"
      "    /dev/rd/c0d0: RAID-5, Online, 71122560 blocks\n"
      "    /dev/rd/c0d1: RAID-1, Online, 35561280 blocks\n";
  machine.commands["/sbin/fdisk -l"] = {
      "Disk /dev/rd/c0d0: 255 heads, 63 sectors, 4427 cylinders\n"
      "Units = cylinders of 16065 * 512 bytes\n"};
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);  // fdisk does not know the second
  EXPECT_EQ(table[0], (RowValues{{1, "1"},
                                 {2, "ff543161edab6137ecbb8bff91b591f0"},  // 44276325535559877
                                 {3, "30"},
                                 {4, "AcceleRAID 352 PCI RAID Controller"},
                                 {5, "Mylex"},
                                 {6, ""},
                                 {7, "4427"},
                                 {8, "63"},
                                 {9, "255"},
                                 {10, "34726"},
                                 {11, "2"}}));
}

class CcissTest : public StorageGroupTest {
 protected:
  CcissTest() {
    machine.commands["/bin/mount"] = {
        "/dev/cciss/c0d0p2 on / type ext3 (rw)\n"
        "/dev/cciss/c0d0p1 on /boot type ext3 (rw)\n"
        "/dev/cciss/c0d1p1 on /var type ext3 (rw)\n"
        "/dev/cciss/c0d2 on /data type ext3 (rw)\n"};
    machine.commands["/sbin/fdisk -l"] = {
        "Disk /dev/cciss/c0d0: 36.4 GB, 36414750720 bytes\n"
        "255 heads, 63 sectors/track, 4427 cylinders\n"
        "\n"
        "Disk /dev/cciss/c0d1: 36.4 GB, 36414750720 bytes\n"
        "255 heads, 63 sectors/track, 4427 cylinders\n"};
    machine.files["/proc/driver/cciss/cciss0"] =
        "cciss/c0d0: blksz=512 nr_blocks=71122560\n"
        "cciss/c0d1: blksz=512 nr_blocks=71122560\n";
  }
};

TEST_F(CcissTest, mountedDisksComeFromFdisk_equalDisksDifferInTheirDigest) {
  const auto table = rows();
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(table[0], (RowValues{{1, "1"},
                                 {2, "ccf23ffc2e63f4945a51a3b29f3f4952"},  // 442763255355612800
                                 {3, "30"},
                                 {4, "Compaq Smart Array 5i Controller"},
                                 {5, "Compaq"},
                                 {6, ""},
                                 {7, "4427"},
                                 {8, "63"},
                                 {9, "255"},
                                 {10, "34727"},
                                 {11, "2"}}));
  EXPECT_EQ(valueOf(table[1], kIndex), "2");
  EXPECT_EQ(valueOf(table[1], kId), "8d4bbdb9e64caf7fcdff13adb4ec8b5d");
}

TEST_F(CcissTest, withoutMountedDisksTheDriversListIsTaken) {
  machine.commands.erase("/bin/mount");
  const auto table = rows();
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(table[1], (RowValues{{1, "2"},
                                 {2, "3a0932a188461cd8e79b206c80cf119a"},  // 000694551
                                 {3, "30"},
                                 {4, "Compaq Smart Array 5i Controller"},
                                 {5, "Compaq"},
                                 {6, ""},
                                 {7, "0"},
                                 {8, "0"},
                                 {9, "0"},
                                 {10, "69455"},
                                 {11, "2"}}));
}

TEST_F(CcissTest, drivesOfOtherKindsDoNotReplaceTheDriversList) {
  machine.commands.erase("/bin/mount");
  addIdeDisk();
  const auto table = rows();
  ASSERT_EQ(table.size(), 3U);
  EXPECT_EQ(valueOf(table[2], kIndex), "3");
  EXPECT_EQ(valueOf(table[2], kId), "3a0932a188461cd8e79b206c80cf119a");
}

TEST_F(CcissTest, mountedDisksThatFdiskDoesNotKnowLeaveTheDriversList) {
  machine.commands.erase("/sbin/fdisk -l");
  EXPECT_EQ(rows().size(), 2U);
}

TEST_F(StorageGroupTest, scsiRowPrefersTheKernelsTextsAndDiskData) {
  ScriptedSgDevice disk;
  disk.product = "ST318406LC LONG";
  disk.vendorSpecific = "3FE00ABC  ";
  disk.setSerialNumber("VPD SERIAL");
  disk.setGeometryPages(100, 4, 32);
  addGeneric({&disk});
  addOther("sda", disk.diskNode(
                      {.cylinders = 2610, .heads = 255, .sectors = 63, .bytes = 21474836480ULL}));
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0], (RowValues{{1, "1"},
                                 {2, "9545e468fe14d2c87480e9a1163d52d6"},  // 26106325520480
                                 {3, "30"},
                                 {4, "ST318406LC LONG"},
                                 {5, "SEAGATE"},
                                 {6, "3FE00ABC"},
                                 {7, "2610"},
                                 {8, "63"},
                                 {9, "255"},
                                 {10, "20480"},
                                 {11, "2"}}));
  EXPECT_EQ(machine.sleptMicroseconds, 50000U);
}

TEST_F(StorageGroupTest, scsiSerialNumberComesFromItsPageWhereTheInquiryHasNone) {
  ScriptedSgDevice disk;
  disk.setSerialNumber("   VPD-12345 ");
  addGeneric({&disk});
  EXPECT_EQ(valueOf(rows()[0], kSerialNumber), "VPD-12345");
}

TEST_F(StorageGroupTest, scsiSerialNumberIsKeptWhereTheAdapterReportsRefusedGeometryAsItsError) {
  ScriptedSgDevice disk;
  disk.refusalIsHostError = true;
  disk.setSerialNumber("PV-SN-0");
  addGeneric({&disk});
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kSerialNumber), "PV-SN-0");
}

TEST_F(StorageGroupTest, blanksWithinAScsiSerialNumberStay) {
  ScriptedSgDevice disk;
  disk.setSerialNumber("  WD- WCA 12 ");
  addGeneric({&disk});
  EXPECT_EQ(valueOf(rows()[0], kSerialNumber), "WD- WCA 12");
}

TEST_F(StorageGroupTest, scsiSerialNumberIsCutAtTheFirstCharacterThatIsNoText) {
  ScriptedSgDevice disk;
  disk.setSerialNumber(
      "ABC\x01"
      "DEF");
  addGeneric({&disk});
  EXPECT_EQ(valueOf(rows()[0], kSerialNumber), "ABC");
  disk.vendorSpecific = "3FE\x7F";
  EXPECT_EQ(valueOf(rows()[0], kSerialNumber), "3FE");
  disk.vendorSpecific =
      "\xFF\xFE"
      "binary";
  EXPECT_EQ(valueOf(rows()[0], kSerialNumber), "ABC");
}

TEST_F(StorageGroupTest, scsiInquiryAloneGivesItsShorterTextsAndGeometry) {
  ScriptedSgDevice disk;
  disk.addressFails = true;  // the kernel identifies nothing
  disk.setSerialNumber("S1");
  disk.setGeometryPages(29851, 2, 595);
  addGeneric({&disk});
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kModel), "ST318406");
  EXPECT_EQ(valueOf(table[0], kManufacturer), "SEAGATE");
  EXPECT_EQ(valueOf(table[0], kSerialNumber), "S1");
  EXPECT_EQ(valueOf(table[0], 7), "29851");
  EXPECT_EQ(valueOf(table[0], 8), "595");
  EXPECT_EQ(valueOf(table[0], 9), "2");
  EXPECT_EQ(valueOf(table[0], kTotalSize), "17345");
}

TEST_F(StorageGroupTest, nodeThatOnlyTheKernelKnowsHasNoSerialNumberAndNoInquiryGeometry) {
  ScriptedSgDevice tape;
  tape.type = 1;
  tape.vendor = "HP";
  tape.product = "Ultrium 1-SCSI";
  tape.vendorSpecific = "SERIAL";
  addGeneric({&tape});
  machine.devices["/dev/sg0"].deniedAccessModes = {2};  // O_RDWR
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kType), "3");
  EXPECT_EQ(valueOf(table[0], kModel), "Ultrium 1-SCSI");
  EXPECT_EQ(valueOf(table[0], kManufacturer), "HP");
  EXPECT_EQ(valueOf(table[0], kSerialNumber), "");
  EXPECT_EQ(valueOf(table[0], kTotalSize), "0");
}

TEST_F(StorageGroupTest, nodesThatNobodyKnowsOrThatSayNoDeviceAreSkipped) {
  ScriptedSgDevice silent;
  silent.refused = {"12 00 00"};
  ScriptedSgDevice absent;
  absent.qualifier = 3;
  ScriptedSgDevice disk;
  addGeneric({&silent, &absent, &disk});
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kIndex), "1");
  EXPECT_THAT(absent.commands, ::testing::ElementsAre("12 00 00"));  // no second source
}

TEST_F(StorageGroupTest, scannersPrintersAndProcessorsAreNoStorage) {
  ScriptedSgDevice scanner;
  scanner.type = 6;
  ScriptedSgDevice printer;
  printer.type = 2;
  ScriptedSgDevice processor;
  processor.type = 3;
  addGeneric({&scanner, &printer, &processor});
  EXPECT_TRUE(rows().empty());
  EXPECT_EQ(machine.sleptMicroseconds, 0U);
}

TEST_F(StorageGroupTest, numberedNodesAreUsedWhereThereAreNoLetters) {
  ScriptedSgDevice disk;
  ScriptedSgDevice cd;
  cd.type = 5;
  addGeneric({&disk, &cd});
  const auto table = rows();
  ASSERT_EQ(table.size(), 2U);
  EXPECT_EQ(valueOf(table[1], kType), "17");
}

TEST_F(StorageGroupTest, letteredNodesWinOverNumbers) {
  ScriptedSgDevice disk;
  ScriptedSgDevice other;
  other.product = "OTHER";
  machine.devices["/dev/sga"] = disk.genericNode();
  machine.devices["/dev/sg0"] = other.genericNode();
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kModel), "ST318406LC");
}

TEST_F(StorageGroupTest, nodesThatSgMapMapsAreOmitted) {
  ScriptedSgDevice disk;
  ScriptedSgDevice changer;
  changer.type = 8;
  addGeneric({&disk, &changer});
  machine.commands["sg_map -x 2>/dev/null"] = {
      "/dev/sg0  0 0 0 0  0  /dev/sda\n"
      "/dev/sg1  0 0 1 0  8\n"};
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(valueOf(table[0], kType), "1");
  EXPECT_TRUE(disk.commands.empty());
}

TEST_F(StorageGroupTest, withoutSgMapNoNodeIsOmitted) {
  ScriptedSgDevice disk;
  addGeneric({&disk});
  EXPECT_EQ(rows().size(), 1U);
}

TEST_F(StorageGroupTest, sixtyFourNodesCostTheirPausesOnly) {
  ScriptedSgDevice disks[64];
  for (int i = 0; i < 64; ++i) {
    disks[i].id = i;
    machine.devices["/dev/sg" + std::to_string(i)] = disks[i].genericNode();
    addOther(std::string(i < 26   ? "sd"
                         : i < 52 ? "sda"
                                  : "sdb") +
                 static_cast<char>('a' + i % 26),
             disks[i].otherNode());
  }
  EXPECT_EQ(rows().size(), 64U);
  EXPECT_EQ(machine.sleptMicroseconds, 64U * 50000U);
  // Each generic node by both sources, each disk to compare and to measure: linear in the disks.
  const auto deviceOpens =
      std::count_if(machine.opened.begin(), machine.opened.end(),
                    [](const std::string& path) { return path.starts_with("/dev/s"); });
  EXPECT_EQ(deviceOpens, 4 * 64);
}

// A node that answers EBUSY, as the sg driver does when it must not wait.
TEST_F(StorageGroupTest, nodeThatAnotherProcessHoldsIsLeftOutAndNamed) {
  ScriptedSgDevice first;
  ScriptedSgDevice held;
  ScriptedSgDevice last;
  addGeneric({&first, &held, &last});
  machine.openErrors["/dev/sg1"] = EBUSY;
  ::testing::internal::CaptureStderr();
  EXPECT_EQ(rows().size(), 2U);
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dev/sg1 is held exclusively by another process and is left out\n");
}

TEST_F(StorageGroupTest, floppyThatAnotherProcessHoldsIsLeftOutAndNamed) {
  addFloppy();
  machine.openErrors["/dev/fd0"] = EBUSY;
  ::testing::internal::CaptureStderr();
  EXPECT_TRUE(rows().empty());
  EXPECT_EQ(::testing::internal::GetCapturedStderr(),
            "quenlor: /dev/fd0 is held exclusively by another process and is left out\n");
}

TEST_F(StorageGroupTest, nodeThatCannotBeOpenedForAnotherReasonIsSkippedInSilence) {
  ScriptedSgDevice disk;
  addGeneric({&disk});
  machine.openErrors["/dev/sg0"] = ENXIO;
  ::testing::internal::CaptureStderr();
  EXPECT_TRUE(rows().empty());
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

TEST_F(StorageGroupTest, floppyRowHasItsSizeInKilobytesInTheDigest) {
  addFloppy();
  const auto table = rows();
  ASSERT_EQ(table.size(), 1U);
  EXPECT_EQ(table[0], (RowValues{{1, "1"},
                                 {2, "d523a2c56d3e9d42e98120cc530a6ca2"},  // 801821440
                                 {3, "29"},
                                 {4, "H1440"},
                                 {5, ""},
                                 {6, ""},
                                 {7, "80"},
                                 {8, "18"},
                                 {9, "2"},
                                 {10, "1"},
                                 {11, "2"}}));
}

TEST_F(StorageGroupTest, floppyMegabytesAre1024KilobytesEachAndRoundedDown) {
  addFloppy();
  machine.devices["/dev/fd0"].ioctl = [](unsigned long request, void* argument) {
    if (request == FDGETDRVTYP) return -1;
    floppy_struct geometry = {};
    geometry.sect = 25;
    geometry.head = 2;
    geometry.track = 80;
    std::memcpy(argument, &geometry, sizeof(geometry));
    return 0;
  };
  EXPECT_EQ(valueOf(rows().at(0), kTotalSize), "1");  // of 2000 kilobytes
}

TEST_F(StorageGroupTest, floppyRowIsTracedWithItsIndex) {
  const test::CapturedTraces traces;
  addFloppy();
  ASSERT_EQ(rows().size(), 1U);
  EXPECT_EQ(traces.count("hardware floppyinfo /dev/fd0 0"), 1);
  EXPECT_EQ(traces.count("hardware Add floppy index=> 1"), 1);
}

TEST_F(StorageGroupTest, floppyThatAnswersNothingHasNoRow) {
  machine.devices["/dev/fd0"];
  EXPECT_TRUE(rows().empty());
}

TEST_F(StorageGroupTest, itaniumHasNoFloppyRow) {
  addFloppy();
  machine.files["/proc/cpuinfo"] = "arch : IA-64\nfamily : Itanium 2\n";
  EXPECT_TRUE(rows().empty());
}

TEST_F(StorageGroupTest, indexRunsOnAcrossAllKindsOfDrives) {
  addIdeDisk();
  ScriptedSgDevice disk;
  addGeneric({&disk});
  addFloppy();
  const auto table = rows();
  ASSERT_EQ(table.size(), 3U);
  for (size_t i = 0; i < 3; ++i) EXPECT_EQ(valueOf(table[i], kIndex), std::to_string(i + 1));
  EXPECT_EQ(valueOf(table[0], kType), "30");
  EXPECT_EQ(valueOf(table[1], kModel), "ST318406LC");
  EXPECT_EQ(valueOf(table[2], kType), "29");
}

TEST_F(StorageGroupTest, runningBackupStopsEveryProbe) {
  addIdeDisk();
  machine.environment["CHECK_ULTRIUM_TAPE_RUNNING"] = "";
  machine.commands["/bin/ps -ef"] = {"root 4711 812 3 02:00 ? 00:01:40 save\n"};
  EXPECT_TRUE(rows().empty());
  EXPECT_TRUE(machine.opened.empty());
  machine.commands["/bin/ps -ef"] = {"root 1 0 0 Jan10 ? 00:00:05 init\n"};
  EXPECT_EQ(rows().size(), 1U);
}

TEST_F(StorageGroupTest, processesAreNotListedUnlessTheGuardIsWanted) {
  machine.commands["/bin/ps -ef"] = {"root 4711 812 3 02:00 ? 00:01:40 save\n"};
  addIdeDisk();
  EXPECT_EQ(rows().size(), 1U);
  EXPECT_THAT(machine.started, Not(Contains("/bin/ps -ef")));
}

TEST_F(StorageGroupTest, unchangedMachineGivesTheSameRows) {
  addIdeDisk();
  addFloppy();
  ScriptedSgDevice disk;
  addGeneric({&disk});
  EXPECT_EQ(rows(), rows());
}

TEST_F(StorageGroupTest, namesTheTypesOfIdeDrives) {
  EXPECT_EQ(resolveIDEtype("cdrom\n"), 17);
  EXPECT_EQ(resolveIDEtype("disk\n"), 30);
  EXPECT_EQ(resolveIDEtype("disk cdrom"), 17);
  EXPECT_EQ(resolveIDEtype("tape\n"), 1);
  EXPECT_EQ(resolveIDEtype(""), 1);
}

TEST_F(StorageGroupTest, namesTheTypesOfScsiDevices) {
  const int expected[] = {30, 3, -1, -1, 22, 17, -1, 22, 1};
  for (int type = 0; type < 9; ++type) EXPECT_EQ(resolveSCSItype(type), expected[type]) << type;
  for (int type = 9; type < 32; ++type) EXPECT_EQ(resolveSCSItype(type), 1) << type;
}

TEST_F(StorageGroupTest, hugeSizesSaturateInTheRow) {
  addIdeDisk();
  machine.files["/proc/ide/ide0/hda/capacity"] = std::string(19, '9') + "\n";
  EXPECT_EQ(valueOf(rows()[0], kTotalSize), "4294967295");
}

}  // namespace
}  // namespace quenlor
