// What a collection writes to the trace file: operators search it for these texts.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>

#include "groups/storage/StorageGroup.h"
#include "readers/storage/FdiskOutput.h"
#include "readers/storage/SgModule.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::ScriptedSgDevice;
using ::testing::HasSubstr;
using ::testing::Not;

class StorageTraceTest : public ::testing::Test {
 protected:
  std::string trace() const { return m_traces.text(); }

  void collect() { const std::unique_ptr<VelTable> table(StorageGroup().generateTable()); }

  FakeHost machine;

 private:
  test::CapturedTraces m_traces;
};

TEST_F(StorageTraceTest, gatherersAreFramedInTheirOrder) {
  machine.now = 86400;
  collect();
  const std::string text = trace();
  size_t position = 0;
  for (const char* record :
       {"call gatherIDEDriveInformation()", "exit gatherIDEDriveInformation()",
        "call gatherDAC960RAIDDriveInformation()", "call gatherCCISSDDriveInformation()",
        "call gatherCompaqSmartRAIDDriveInformation()", "call gatherSCSIDriveInformation()",
        "exit gatherSCSIDriveInformation()", "call FloppyDriveInformation()",
        "exit FloppyDriveInformation()"}) {
    const size_t found = text.find(record, position);
    ASSERT_NE(found, std::string::npos) << record;
    position = found;
  }
  EXPECT_THAT(text, HasSubstr(" 1970 call gatherIDEDriveInformation()"));
  EXPECT_THAT(text, HasSubstr("hardware return NULL"));
}

TEST_F(StorageTraceTest, compaqGathererIsSkippedWhereMountedCcissDisksWereFound) {
  machine.commands["/bin/mount"] = {
      "/dev/cciss/c0d0p1 on / type ext3 (rw)\n"
      "/dev/cciss/c0d0p2 on /var type ext3 (rw)\n"};
  machine.commands["/sbin/fdisk -l"] = {
      "Disk /dev/cciss/c0d0: 1 GB, 1024 bytes\n"
      "255 heads, 63 sectors/track, 4427 cylinders\n"};
  collect();
  const std::string text = trace();
  EXPECT_THAT(text, Not(HasSubstr("gatherCompaqSmartRAIDDriveInformation")));
  for (const char* record :
       {"/dev/cciss/c0d0 is already added", "running /sbin/fdisk -l", "tmpheads= 255",
        "tmpsectors= 63", "tmpcylinders= 4427", "totalsize= 1"}) {
    EXPECT_THAT(text, HasSubstr(std::string("hardware ") + record));
  }
}

TEST_F(StorageTraceTest, scsiNodesAreFollowedFromNameToRow) {
  ScriptedSgDevice disk;
  ScriptedSgDevice cd;
  cd.type = 5;
  cd.id = 1;
  ScriptedSgDevice omitted;
  machine.devices["/dev/sg0"] = disk.genericNode();
  machine.devices["/dev/sg1"] = cd.genericNode();
  machine.devices["/dev/sg2"] = omitted.genericNode();
  machine.devices["/dev/sda"] = disk.otherNode();
  machine.devices["/dev/sr0"] = cd.otherNode();
  machine.directories["/dev"] = {"sda", "sr0"};
  machine.commands["sg_map -x 2>/dev/null"] = {"/dev/sg2  0 0 9 0  0  /dev/sdz\n"};
  collect();
  const std::string text = trace();
  for (const char* record :
       {"SCSI name= /dev/sg0", "SCSI errorcode= 0", "SCSI resolveSCSItype= 30",
        "Add SCSI index=> 1", "omitting SCSI name= /dev/sg2", "get_scsi_idlun: idlun = 1.",
        "get_scsi_info: '/dev/sg0' mapped to '/dev/sda'",
        "get_scsi_info: HDIO_GETGEO ioctl failed for device '/dev/sda'.",
        "get_scsi_info: SCSI disk device detected.",
        "get_scsi_info: SCSI removable device detected.",
        "get_scsi_info:\nmanufacturer = SEAGATE \nmodel = ST318406LC      \nrevision = 0109\n"
        "serial number = \nhost number = 0\nchannel = 0\nSCSI id = 0\nlun = 0\nSCSI type = 0"}) {
    EXPECT_THAT(text, HasSubstr(std::string("hardware ") + record));
  }
}

TEST_F(StorageTraceTest, failuresOfTheKernelsSourceAreNamedAtTheLowestLevel) {
  const test::CapturedTraces failures("MIN");
  ScriptedSgDevice noAddress;
  noAddress.addressFails = true;
  ScriptedSgDevice noInquiry;
  noInquiry.sgIoFails = true;
  ScriptedSgDevice noIdlun;
  noIdlun.idlunFails = true;
  ScriptedSgDevice disk;
  machine.devices["/dev/sg0"] = noAddress.genericNode();
  machine.devices["/dev/sg1"] = noInquiry.genericNode();
  machine.devices["/dev/sg2"] = noIdlun.genericNode();
  machine.devices["/dev/sg3"] = disk.genericNode();
  machine.openErrors["/dev/sg3"] = EBUSY;
  collect();
  const std::string text = failures.text();
  for (const char* record : {"get_scsi_info: SG_GET_SCSI_ID ioctl failed for device '/dev/sg0'.",
                             "get_scsi_info: SG_IO ioctl failed for device '/dev/sg1'.",
                             "get_scsi_idlun: SCSI_IOCTL_GET_IDLUN ioctl failed.",
                             "get_scsi_info: error opening device '/dev/sg3'."}) {
    EXPECT_THAT(text, HasSubstr(std::string("hardware ") + record));
  }
  EXPECT_THAT(text, Not(HasSubstr("SCSI name=")));
}

TEST_F(StorageTraceTest, whatKeepsADriveFromBeingDescribedIsNamedAtTheLowestLevel) {
  const test::CapturedTraces failures("MIN");
  ScriptedSgDevice disk;
  ScriptedSgDevice broken;
  broken.id = 1;
  broken.targetStatus = 4;
  ScriptedSgDevice absent;
  absent.id = 2;
  absent.qualifier = 3;
  machine.devices["/dev/sg0"] = disk.genericNode();
  machine.devices["/dev/sg1"] = broken.genericNode();
  machine.devices["/dev/sg2"] = absent.genericNode();
  machine.devices["/dev/sg2"].deniedAccessModes = {2};  // O_RDWR
  machine.devices["/dev/sda"] = disk.otherNode();
  machine.openErrors["/dev/sda"] = EACCES;
  machine.devices["/dev/sdb"] = disk.otherNode();
  machine.directories["/dev"] = {"sda", "sdb"};
  collect();
  const std::string text = failures.text();
  for (const char* record :
       {"get_scsi_info: error opening device '/dev/sda'.",
        "get_scsi_info: size of device '/dev/sdb' is not known.", "getSCSIinfo /dev/sg1 -1",
        "cannot open /dev/sg2", "get_scsi_info: no device behind '/dev/sg2'."}) {
    EXPECT_THAT(text, HasSubstr(std::string("hardware ") + record));
  }
  EXPECT_THAT(text, Not(HasSubstr("getSCSIinfo /dev/sg0")));
}

TEST_F(StorageTraceTest, tapesAndDevicesWithoutOtherNodeAreNamed) {
  ScriptedSgDevice tape;
  tape.type = 1;
  ScriptedSgDevice changer;
  changer.type = 8;
  changer.id = 1;
  machine.devices["/dev/sg0"] = tape.genericNode();
  machine.devices["/dev/sg1"] = changer.genericNode();
  machine.devices["/dev/st0"] = tape.otherNode();
  machine.directories["/dev"] = {"st0"};
  collect();
  const std::string text = trace();
  for (const char* record : {"get_scsi_info: '/dev/sg0' mapped to '/dev/st0'",
                             "get_scsi_info: SCSI tape device detected.",
                             "get_scsi_info: Generic SCSI device detected."}) {
    EXPECT_THAT(text, HasSubstr(std::string("hardware ") + record));
  }
}

TEST_F(StorageTraceTest, moduleHandlingIsShown) {
  machine.directories["/tmp"];
  machine.commands["/sbin/modprobe --first-time sg 2>/tmp/modprobe.error"] = {};
  machine.commands["cat /tmp/modprobe.error 2>/dev/null"] = {};
  machine.directories["/proc/scsi"];
  loadSG();
  waitForSG();
  machine.directories["/proc/scsi/sg"];
  waitForSG();
  unloadSG();
  machine.commands["cat /tmp/modprobe.error 2>/dev/null"] = {"already in kernel\n"};
  loadSG();
  machine.unstartableCommands = {"/sbin/modprobe --first-time sg 2>/tmp/modprobe.error"};
  loadSG();
  const std::string text = trace();
  for (const char* record :
       {"hardware popen fp != NULL", "hardware Module sg was OFF",
        "hardware  not found /dev/sg* cycle = 0", "hardware  not found /dev/sg* cycle = 50",
        "hardware  not found /dev/sg*\n", "hardware  found /dev/sg*  cycle = 0",
        "hardware Unload SG MODULE", "hardware Module sg was ON", "hardware popen fp = NULL"}) {
    EXPECT_THAT(text, HasSubstr(record));
  }
  EXPECT_THAT(text, Not(HasSubstr("cycle = 51")));
}

TEST_F(StorageTraceTest, everyRecordBelongsToTheHardwareComponent) {
  ScriptedSgDevice disk;
  machine.devices["/dev/sg0"] = disk.genericNode();
  machine.devices["/dev/fd0"];
  collect();
  std::istringstream lines(trace());
  int records = 0;
  for (std::string line; std::getline(lines, line);) {
    if (line.find("../../../src/invscan/") == std::string::npos) continue;  // a record goes on
    EXPECT_THAT(line, HasSubstr("hardware "));
    ++records;
  }
  EXPECT_GT(records, 20);
}

TEST_F(StorageTraceTest, endOfTheNamesAt255IsShown) {
  ScriptedSgDevice printer;
  printer.type = 2;
  for (int i = 0; i < 256; ++i) {
    machine.devices["/dev/sg" + std::to_string(i)] = printer.genericNode();
  }
  collect();
  EXPECT_THAT(trace(), HasSubstr("hardware we have already processed a possibly valid dev/sg255: "
                                 "return NULL"));
}

}  // namespace
}  // namespace quenlor
