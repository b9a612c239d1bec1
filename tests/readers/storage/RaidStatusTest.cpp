#include "readers/storage/RaidStatus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/support/FakeHost.h"

namespace quenlor {
namespace {

using test::FakeHost;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kGeneration2 =
    "***** DAC960 RAID Driver Version 2.4.11 of 11 October 2001 *****\n"
    "Copyright 1998-2001 by the author of the driver\n"
    "Configuring Mylex AcceleRAID 352 PCI RAID Controller\n"
    "  Firmware Version: 6.00-03, Channels: 2, Memory Size: 32MB\n"
    "  Physical Devices:\n"
    "    0:0  Vendor: SEAGATE   Model: ST318406LC        Revision: 0109\n"
    "         Serial Number: 3FE00ABC0000712345XY\n"
    "         Disk Status: Online, 35565568 blocks\n"
    "  Logical Drives:\n"
    "    /dev/rd/c0d0: RAID-5, Online, 71122560 blocks\n"
    "                  Logical Device Initialized, BIOS Geometry: 255/63\n"
    "    /dev/rd/c0d1: RAID-1, Online, 35561280 blocks\n"
    "                  Logical Device Initialized, BIOS Geometry: 128/32\n"
    "  No Rebuild or Consistency Check in Progress\n";

constexpr const char* kCompaqEarly =
    "cciss0: Compaq Smart Array 5i Controller\n"
    "       Board ID: 40800e11\n"
    "       Logical drives: 2\n"
    "       Max SG entries since init: 31\n"
    "\n"
    "cciss/c0d0: blksz=512 nr_blocks=71122560\n"
    "cciss/c0d1: blksz=512 nr_blocks=35561280\n"
    "nr_allocs = 40712\n"
    "nr_frees = 40712\n";

class RaidStatusTest : public ::testing::Test {
 protected:
  FakeHost machine;
};

TEST_F(RaidStatusTest, dac960ListsMakerModelAndLogicalDrives) {
  machine.files["/proc/rd/c0/current_status"] = kGeneration2;
  RAIDInfo info;
  EXPECT_EQ(getFromCurrentStatus(&info), 1);
  EXPECT_EQ(info.controller, "Mylex");
  EXPECT_EQ(info.model, "AcceleRAID 352 PCI RAID Controller");
  ASSERT_EQ(info.drives.size(), 2U);
  EXPECT_EQ(info.drives[0].name, "/dev/rd/c0d0");
  EXPECT_EQ(info.drives[0].blocks, 71122560U);
  EXPECT_EQ(info.drives[1].name, "/dev/rd/c0d1");
  EXPECT_EQ(getLogicalDAC960DriveNum(), 2);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(RaidStatusTest, firstGenerationOfFirmwarePrintsMoreBehindTheBlocks) {
  const RAIDInfo info =
      parseDac960Status({"    /dev/rd/c0d0: RAID-5, Online, 5498880 blocks, Write Thru\n"});
  ASSERT_EQ(info.drives.size(), 1U);
  EXPECT_EQ(info.drives[0].name, "/dev/rd/c0d0");
  EXPECT_EQ(info.drives[0].blocks, 5498880U);
}

TEST_F(RaidStatusTest, machineWithoutDac960HasNoLogicalDrives) {
  RAIDInfo info;
  EXPECT_EQ(getFromCurrentStatus(&info), 0);
  EXPECT_EQ(getLogicalDAC960DriveNum(), 0);
}

TEST_F(RaidStatusTest, incompleteDac960LinesGiveEmptyValues) {
  const RAIDInfo info = parseDac960Status({"RAID Controller", "/dev/rd", "x /dev/rd", ""});
  EXPECT_EQ(info.controller, "Controller");
  EXPECT_EQ(info.model, "");
  ASSERT_EQ(info.drives.size(), 2U);
  EXPECT_EQ(info.drives[0].name, "/dev/rd");
  EXPECT_EQ(info.drives[0].blocks, 0U);
  EXPECT_EQ(info.drives[1].name, "x");
}

TEST_F(RaidStatusTest, binaryStatusIsSurvived) {
  std::string text;
  for (int i = 0; i < 4096; ++i) text += static_cast<char>(i * 37);
  machine.files["/proc/rd/c0/current_status"] = text;
  machine.files["/proc/driver/cciss/cciss0"] = text;
  EXPECT_EQ(getLogicalDAC960DriveNum(), 0);
  EXPECT_EQ(getCompaqSmartDiskNum(), 0);
}

TEST_F(RaidStatusTest, compaqVolumeSizesAreTheSectorsShiftedBy10) {
  machine.files["/proc/driver/cciss/cciss0"] = kCompaqEarly;
  EXPECT_EQ(getCompaqSmartDiskNum(), 2);
  EXPECT_EQ(getCompaqSmartDiskSize(0), 69455U);
  EXPECT_EQ(getCompaqSmartDiskSize(1), 34727U);
  EXPECT_EQ(getCompaqSmartDiskSize(2), 0U);
  EXPECT_EQ(getCompaqSmartDiskSize(-1), 0U);
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(RaidStatusTest, numberOfBlocksIsReadWhereverItStandsInItsLine) {
  EXPECT_THAT(parseCompaqVolumes({"nr_blocks=1048576 block_size=512\n",
                                  "cciss/c0d0: blksz=512 nr_blocks=17764320\n",
                                  "cciss/c0d1: blksz=512 nr_blocks=17764320 raid=5\n",
                                  "blksz=512 nr_blocks = 2048 raid=5\n"}),
              ElementsAre(1024U, 17347U, 17347U, 2U));
}

TEST_F(RaidStatusTest, numberOfSomethingElseIsNotTakenForTheBlocks) {
  EXPECT_THAT(parseCompaqVolumes({"blksz=4096 nr_blocks\n", "nr_blocks blksz=4096\n"}),
              ElementsAre(0U, 0U));
}

TEST_F(RaidStatusTest, laterCompaqDriversListNoBlocks) {
  EXPECT_THAT(parseCompaqVolumes({"cciss0: HP Smart Array 5i Controller\n",
                                  "cciss/c0d0:\t  36.41GB\tRAID 1(1+0)\n"}),
              IsEmpty());
}

TEST_F(RaidStatusTest, compaqLinesWithoutNumberAreVolumesOfSizeZero) {
  EXPECT_THAT(parseCompaqVolumes(
                  {"nr_blocks\n", "nr_blocks=\n", "nr_blocks=x\n", "nr_blocks=8589934592\n"}),
              ElementsAre(0U, 0U, 0U, 8388608U));
}

TEST_F(RaidStatusTest, machineWithoutSmartArrayHasNoVolumes) {
  EXPECT_EQ(getCompaqSmartDiskNum(), 0);
  EXPECT_EQ(getCompaqSmartDiskSize(0), 0U);
}

TEST_F(RaidStatusTest, mountedCcissDisksAreListedOnce) {
  machine.commands["/bin/mount"] = {
      "/dev/cciss/c0d0p2 on / type ext3 (rw)\n"
      "none on /proc type proc (rw)\n"
      "/dev/cciss/c0d0p1 on /boot type ext3 (rw)\n"
      "/dev/cciss/c0d1p1 on /var type ext3 (rw)\n"
      "/dev/cciss/c0d2 on /data type ext3 (rw)\n"};
  EXPECT_THAT(getMountedCcissDisks(),
              ElementsAre("/dev/cciss/c0d0", "/dev/cciss/c0d1", "/dev/cciss/c0d2 on /data ty"));
  EXPECT_EQ(machine.openCommands(), 0);
}

TEST_F(RaidStatusTest, overlongMountLineIsTakenInPiecesOf255Characters) {
  const std::string device = "/dev/cciss/" + std::string(300, 'x');
  machine.commands["/bin/mount"] = {device + "p1 on / type ext3 (rw)\n"};
  EXPECT_THAT(getMountedCcissDisks(), ElementsAre(device.substr(0, 255)));
}

TEST_F(RaidStatusTest, mountLineWithoutAnyPKeepsItsWholeText) {
  EXPECT_THAT(parseCcissMounts({"cciss\n", "cciss", ""}), ElementsAre("cciss"));
  EXPECT_THAT(parseCcissMounts({"p cciss\n"}), ElementsAre(""));
}

}  // namespace
}  // namespace quenlor
