#include "readers/storage/scsi_info.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

#include "host/Handles.h"
#include "readers/storage/DiskSize.h"
#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

using test::FakeHost;
using test::ScriptedSgDevice;
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StrEq;

// Remembers how device nodes were opened.
class FlagRecordingHost : public FakeHost {
 public:
  int open(const char* path, int flags, mode_t mode) override {
    usedFlags.push_back(flags);
    return FakeHost::open(path, flags, mode);
  }
  std::vector<int> usedFlags;
};

class GetScsiInfoTest : public ::testing::Test {
 protected:
  std::unique_ptr<SCSIInfo> ask(ScriptedSgDevice& asked) {
    machine.devices["/dev/sg0"] = asked.genericNode();
    SCSIInfo* found = nullptr;
    const int result = get_scsi_info("/dev/sg0", found);
    EXPECT_EQ(result != 0, found != nullptr);
    EXPECT_EQ(machine.openDescriptors(), 0);
    return std::unique_ptr<SCSIInfo>(found);
  }

  void addNode(const std::string& name, test::FakeDevice node) {
    machine.directories["/dev"].push_back(name);
    machine.devices["/dev/" + name] = std::move(node);
  }

  FlagRecordingHost machine;
  ScriptedSgDevice device;
  ScriptedSgDevice other;
};

TEST_F(GetScsiInfoTest, identifiesADiskWithGeometryAndMegabytes) {
  device.host = 2;
  device.channel = 1;
  device.id = 4;
  device.lun = 3;
  other.id = 9;
  device.vendorSpecific = "3FE00ABC            ";
  addNode("sda", other.diskNode({.cylinders = 1, .heads = 2, .sectors = 3}));
  addNode("sdb", device.diskNode(
                     {.cylinders = 2610, .heads = 255, .sectors = 63, .bytes = 21474836480ULL}));
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_THAT(info->getTypeLabel(), StrEq("disk"));
  const SCSIIdentity& identity = info->identity();
  EXPECT_EQ(identity.manufacturer, "SEAGATE ");
  EXPECT_EQ(identity.model, "ST318406LC      ");
  EXPECT_EQ(identity.revision, "0109");
  EXPECT_EQ(identity.serialNumber, "3FE00ABC            ");
  EXPECT_EQ(identity.hostNumber, 2);
  EXPECT_EQ(identity.channel, 1);
  EXPECT_EQ(identity.scsiId, 4);
  EXPECT_EQ(identity.lun, 3);
  EXPECT_EQ(identity.scsiType, 0);
  ASSERT_NE(info->asDisk(), nullptr);
  const SCSIDiskData& disk = info->asDisk()->data();
  EXPECT_EQ(disk.cylinders, 2610U);
  EXPECT_EQ(disk.heads, 255U);
  EXPECT_EQ(disk.sectors, 63U);
  EXPECT_EQ(disk.megabytes, 20480U);
}

TEST_F(GetScsiInfoTest, opensEverythingForReadingAndWithoutWaiting) {
  addNode("sda", other.otherNode());
  other.id = 1;
  addNode("sr0", device.otherNode());
  device.type = 5;
  ask(device);
  EXPECT_THAT(machine.usedFlags, Each(O_RDONLY | O_NONBLOCK));
}

TEST_F(GetScsiInfoTest, identifiesACdAsRemovable) {
  device.type = 5;
  addNode("sr0", device.otherNode());
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_THAT(info->getTypeLabel(), StrEq("removable"));
  EXPECT_EQ(info->asDisk(), nullptr);
}

TEST_F(GetScsiInfoTest, identifiesATape) {
  device.type = 1;
  addNode("st0", device.otherNode());
  const test::CapturedTraces traces;
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_THAT(info->getTypeLabel(), StrEq("tape"));
  EXPECT_EQ(traces.count("hardware get_scsi_info: SCSI tape device detected."), 1);
}

TEST_F(GetScsiInfoTest, tapeNodesAreOpenedForTapesOnly_openingRewindsThem) {
  device.type = 8;
  addNode("st0", device.otherNode());
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_THAT(info->getTypeLabel(), StrEq("generic"));
  EXPECT_THAT(machine.opened, Not(Contains("/dev/st0")));
}

TEST_F(GetScsiInfoTest, deviceWithoutOtherNodeIsGeneric) {
  const test::CapturedTraces traces;
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_THAT(info->getTypeLabel(), StrEq("generic"));
  EXPECT_EQ(traces.count("hardware get_scsi_info: Generic SCSI device detected."), 1);
}

TEST_F(GetScsiInfoTest, disksBeyondTheFirstLetterAreFoundAndPartitionsNotOpened) {
  other.id = 1;
  addNode("sdaa", device.otherNode());
  addNode("sda1", device.otherNode());
  addNode("sdz", other.otherNode());
  addNode("sdaaa", device.otherNode());
  addNode("sda", other.otherNode());
  addNode("sg0", device.genericNode());
  addNode("srx", device.otherNode());
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_NE(info->asDisk(), nullptr);
  EXPECT_THAT(machine.opened,
              ElementsAre("/dev/sg0", "/dev/sda", "/dev/sdz", "/dev/sdaa", "/dev/sdaa"));
}

TEST_F(GetScsiInfoTest, hosts256ApartAreNotMistakenForEachOther) {
  device.host = 3;
  other.host = 259;
  addNode("sda", other.diskNode({.cylinders = 1, .heads = 2, .sectors = 3}));
  EXPECT_EQ(ask(device)->asDisk(), nullptr);
}

TEST_F(GetScsiInfoTest, nodesThatDoNotTellTheirWholeHostNumberMatchByAddress) {
  device.busNumberFails = true;
  addNode("sda", device.diskNode({.cylinders = 1, .heads = 2, .sectors = 3}));
  EXPECT_NE(ask(device)->asDisk(), nullptr);
}

TEST_F(GetScsiInfoTest, nodesWithoutAddressNeverMatch) {
  device.idlunFails = true;
  addNode("sda", device.otherNode());
  EXPECT_EQ(ask(device)->asDisk(), nullptr);
}

TEST_F(GetScsiInfoTest, nodeThatCannotBeOpenedIsPassedOver) {
  addNode("sda", device.otherNode());
  machine.openErrors["/dev/sda"] = ENXIO;
  addNode("sdb", device.diskNode({.cylinders = 7, .heads = 2, .sectors = 3}));
  const auto info = ask(device);
  ASSERT_NE(info->asDisk(), nullptr);
  EXPECT_EQ(info->asDisk()->data().cylinders, 7U);
}

TEST_F(GetScsiInfoTest, diskWithoutGeometryKeepsItsSize) {
  addNode("sda", device.diskNode({.hasGeometry = false, .bytes = 1ULL << 40}));
  const auto info = ask(device);
  EXPECT_EQ(info->asDisk()->data().cylinders, 0U);
  EXPECT_EQ(info->asDisk()->data().megabytes, 1048576U);
  EXPECT_TRUE(info->asDisk()->hasData());
}

TEST_F(GetScsiInfoTest, diskThatAnswersNothingHasNoData) {
  addNode("sda", device.otherNode());
  EXPECT_FALSE(ask(device)->asDisk()->hasData());
}

TEST_F(GetScsiInfoTest, nodeThatCannotBeOpenedGivesNothing) {
  machine.openErrors["/dev/sg0"] = EBUSY;
  EXPECT_EQ(ask(device), nullptr);
}

TEST_F(GetScsiInfoTest, deviceWithoutAddressGivesNothing) {
  device.addressFails = true;
  EXPECT_EQ(ask(device), nullptr);
}

TEST_F(GetScsiInfoTest, failedInquiryGivesNothing) {
  device.sgIoFails = true;
  EXPECT_EQ(ask(device), nullptr);
  device.sgIoFails = false;
  device.sgIoReportsTrouble = true;
  EXPECT_EQ(ask(device), nullptr);
  device.sgIoReportsTrouble = false;
  device.residual = 56;
  EXPECT_EQ(ask(device), nullptr);
}

TEST_F(GetScsiInfoTest, driveThatWarnsOfItsFailureIsIdentifiedAllTheSame) {
  device.senseKey = 1;
  const auto info = ask(device);
  ASSERT_NE(info, nullptr);
  EXPECT_EQ(info->identity().model, "ST318406LC      ");
  device.hostStatus = 7;
  EXPECT_EQ(ask(device), nullptr);
  device.hostStatus = 0;
  device.senseKey = 4;  // hardware error
  EXPECT_EQ(ask(device), nullptr);
}

TEST_F(GetScsiInfoTest, qualifierThatSaysNoDeviceGivesNothing) {
  device.qualifier = 3;
  EXPECT_EQ(ask(device), nullptr);
}

TEST_F(GetScsiInfoTest, bytesThatWereNotSentAreNotRead) {
  device.vendorSpecific = "SERIAL";
  device.residual = 56 - 20;  // the device sent 20 bytes
  const SCSIIdentity identity = ask(device)->identity();
  EXPECT_EQ(identity.manufacturer, "SEAGATE ");
  EXPECT_EQ(identity.model, "ST31");
  EXPECT_EQ(identity.revision, "");
  EXPECT_EQ(identity.serialNumber, "");
}

TEST_F(GetScsiInfoTest, vendorSpecificBytesCountOnlyAsFarAsAnnounced) {
  device.vendorSpecific = "SERIAL";
  device.distort = [](std::string& data) { data += "REST OF AN OLD BUFFER"; };
  EXPECT_EQ(ask(device)->identity().serialNumber, "SERIAL");
}

TEST_F(GetScsiInfoTest, aWalkOpensEachDeviceNodeOnceToCompareIt) {
  ScriptedSgDevice disks[20];
  DeviceOpener opener;
  ScsiNodes nodes(opener);
  for (int i = 0; i < 20; ++i) {
    disks[i].id = i;
    addNode(std::string("sd") + static_cast<char>('a' + i), disks[i].otherNode());
  }
  for (int i = 19; i >= 0; --i) {
    const std::string generic = "/dev/sg" + std::to_string(i);
    machine.devices[generic] = disks[i].genericNode();
    SCSIInfo* found = nullptr;
    get_scsi_info(generic.c_str(), nodes, found);
    const std::unique_ptr<SCSIInfo> info(found);
    ASSERT_NE(info->asDisk(), nullptr) << i;
  }
  // Each generic node; each disk to compare it and to read its geometry.
  EXPECT_EQ(machine.opened.size(), 20U + 2 * 20U);
}

TEST_F(GetScsiInfoTest, genericNodeLeadsToItsDisk) {
  addNode("sda", device.otherNode());
  machine.devices["/dev/sg0"] = device.genericNode();
  EXPECT_EQ(diskOfGenericNode("/dev/sg0"), "/dev/sda");
  EXPECT_EQ(diskOfGenericNode("/dev/sg1"), "");
}

TEST(DiskSizeTest, sectorsComeFromTheByteCountElseFromTheSectorCount) {
  FakeHost machine;
  ScriptedSgDevice device;
  machine.devices["/dev/sda"] = device.diskNode({.bytes = 5000ULL << 32, .sectors512 = 1});
  machine.devices["/dev/sdb"] = device.diskNode({.sectors512 = 0x123456789UL});
  machine.devices["/dev/sdc"] = device.diskNode({});
  const Descriptor a(host().open("/dev/sda", O_RDONLY, 0));
  const Descriptor b(host().open("/dev/sdb", O_RDONLY, 0));
  const Descriptor c(host().open("/dev/sdc", O_RDONLY, 0));
  unsigned long long sectors = 42;
  EXPECT_EQ(disk_size(c.get(), &sectors), 0);
  EXPECT_EQ(sectors, 42U);
  EXPECT_EQ(disk_size(a.get(), &sectors), 1);
  EXPECT_EQ(sectors, (5000ULL << 32) / 512);
  EXPECT_EQ(disk_size(b.get(), &sectors), 1);
  EXPECT_EQ(sectors, 0x123456789UL);
}

TEST(DiskSizeTest, megabytesAreRoundedDown) {
  EXPECT_EQ(get_megabytes(2047), 0U);
  EXPECT_EQ(get_megabytes(2048), 1U);
  EXPECT_EQ(get_megabytes(41943040), 20480U);
  EXPECT_EQ(get_megabytes(1ULL << 40), 1ULL << 29);
}

}  // namespace
}  // namespace quenlor
