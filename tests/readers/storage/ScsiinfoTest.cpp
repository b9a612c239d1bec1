#include "readers/storage/scsiinfo.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <random>

#include "tests/readers/storage/ScriptedSgDevice.h"
#include "tests/support/CapturedTraces.h"

namespace quenlor {
namespace {

using test::bytes;
using test::FakeHost;
using test::ScriptedSgDevice;
using ::testing::ElementsAre;
using ::testing::StrEq;

class ScsiinfoTest : public ::testing::Test {
 protected:
  scsiinfo probe() {
    machine.devices["/dev/sg0"] = device.genericNode();
    return scsiinfo("/dev/sg0");
  }

  void expectNoGeometry(const scsiinfo& info) {
    EXPECT_EQ(info.errorcode(), 0);
    EXPECT_EQ(info.numcylinders(), 0U);
    EXPECT_EQ(info.numheads(), 0U);
    EXPECT_EQ(info.numsectors(), 0U);
    EXPECT_EQ(info.sector_size(), 0U);
    EXPECT_EQ(info.totalsize(), 0U);
    EXPECT_FALSE(info.mediapresent());
  }

  FakeHost machine;
  ScriptedSgDevice device;
};

TEST_F(ScsiinfoTest, readsEverythingOfADiskThatAnswers) {
  device.setSerialNumber("3FE00ABC0000");
  device.setGeometryPages(29851, 2, 595);
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_TRUE(info.isdevicevalid());
  EXPECT_TRUE(info.mediapresent());
  EXPECT_EQ(info.type(), 0);
  EXPECT_THAT(info.manufacturer(), StrEq("SEAGATE"));
  EXPECT_THAT(info.model(), StrEq("ST318406"));
  EXPECT_THAT(info.serialnumber(), StrEq("3FE00ABC0000"));
  EXPECT_EQ(info.numcylinders(), 29851U);
  EXPECT_EQ(info.numheads(), 2U);
  EXPECT_EQ(info.numsectors(), 595U);
  EXPECT_EQ(info.sector_size(), 512U);
  EXPECT_EQ(info.totalsize(), 17761345U);
}

TEST_F(ScsiinfoTest, sendsTheCommandsInOrderAndAsksForTheSerialNumberTwice) {
  device.setSerialNumber("X");
  device.setGeometryPages(1, 1, 1);
  probe();
  EXPECT_THAT(device.commands,
              ElementsAre("12 00 00", "12 01 00", "12 01 80", "12 01 80", "1A 00 04", "1A 00 03"));
}

TEST_F(ScsiinfoTest, closesTheNode) {
  probe();
  EXPECT_EQ(machine.openDescriptors(), 0);
}

TEST_F(ScsiinfoTest, nodeThatCannotBeOpenedReadWriteGivesCode10) {
  machine.devices["/dev/sg0"] = device.genericNode();
  machine.devices["/dev/sg0"].deniedAccessModes = {O_RDWR};
  const scsiinfo info("/dev/sg0");
  EXPECT_EQ(info.errorcode(), scsiinfo::kCannotOpen);
  EXPECT_FALSE(info.isdevicevalid());
  EXPECT_TRUE(device.commands.empty());
}

TEST_F(ScsiinfoTest, vendorHasSevenAndModelEightCharacters_idsOfListedDrivesDependOnIt) {
  device.vendor = "VENDOR78";
  device.product = "PRODUCT OF SIXTE";
  const scsiinfo info = probe();
  EXPECT_THAT(info.manufacturer(), StrEq("VENDOR7"));
  EXPECT_THAT(info.model(), StrEq("PRODUCT "));
}

TEST_F(ScsiinfoTest, nulBytesEndVendorAndModel) {
  device.vendor = std::string("AB\0CD", 5);
  device.product = std::string("\0XYZ", 4);
  const scsiinfo info = probe();
  EXPECT_THAT(info.manufacturer(), StrEq("AB"));
  EXPECT_THAT(info.model(), StrEq(""));
}

TEST_F(ScsiinfoTest, typeIsTheLowerFiveBits) {
  device.type = 31;
  EXPECT_EQ(probe().type(), 31);
}

TEST_F(ScsiinfoTest, qualifierThatSaysNoDeviceGivesCode80AndEndsTheSequence) {
  for (const int qualifier : {1, 3}) {
    device.commands.clear();
    device.qualifier = qualifier;
    EXPECT_EQ(probe().errorcode(), scsiinfo::kNoDevice) << qualifier;
    EXPECT_THAT(device.commands, ElementsAre("12 00 00"));
  }
}

TEST_F(ScsiinfoTest, otherQualifiersAreDevices) {
  for (const int qualifier : {0, 4}) {
    device.qualifier = qualifier;
    EXPECT_EQ(probe().errorcode(), 0) << qualifier;
  }
}

TEST_F(ScsiinfoTest, refusedInquiryGivesCode70) {
  device.refused = {"12 00 00"};
  EXPECT_EQ(probe().errorcode(), scsiinfo::kInquiryFailed);
}

TEST_F(ScsiinfoTest, deviceWithoutProductDataPagesHasNoSerialNumberAndNoError) {
  device.setGeometryPages(100, 4, 32);
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
  EXPECT_EQ(info.numheads(), 4U);
}

TEST_F(ScsiinfoTest, unlistedSerialNumberPageIsNotAsked) {
  device.vpdPages[0x00] = bytes({0x00, 0x83});
  device.vpdPages[0x80] = "SECRET";
  EXPECT_THAT(probe().serialnumber(), StrEq(""));
  EXPECT_THAT(device.commands, ElementsAre("12 00 00", "12 01 00", "1A 00 04"));
}

TEST_F(ScsiinfoTest, refusedSerialNumberPageIsNoError) {
  device.vpdPages[0x00] = bytes({0x00, 0x80});
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
}

TEST_F(ScsiinfoTest, secondAnswerWithoutDataDoesNotShowTheFirstOnes) {
  device.setSerialNumber("OFANOTHERDRIVE");
  test::FakeDevice node = device.genericNode();
  node.read = [this, answer = node.read](void* packet, size_t size) {
    constexpr size_t kHeaderSize = 36;
    const bool isSecond =
        device.commands == std::vector<std::string>{"12 00 00", "12 01 00", "12 01 80", "12 01 80"};
    if (isSecond) std::memset(packet, 0, kHeaderSize);
    return isSecond ? static_cast<ssize_t>(size) : answer(packet, size);
  };
  machine.devices["/dev/sg0"] = node;
  const scsiinfo info("/dev/sg0");
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
}

TEST_F(ScsiinfoTest, longestSerialNumberPageIsBoundedByTheReply) {
  device.setSerialNumber(std::string(255, 'S'));
  EXPECT_EQ(probe().serialnumber(), std::string(251, 'S'));
}

TEST_F(ScsiinfoTest, emptySerialNumberPageGivesAnEmptyText) {
  device.setSerialNumber("");
  EXPECT_THAT(probe().serialnumber(), StrEq(""));
}

TEST_F(ScsiinfoTest, deviceThatIgnoresThePageBitHasNoSerialNumber) {
  device.setSerialNumber("X");
  device.distort = [](std::string& data) {
    if (data[1] == static_cast<char>(0x80)) data = bytes({0, 0, 2, 2, 31, 0, 0, 0}) + "NOTASERIAL";
  };
  EXPECT_THAT(probe().serialnumber(), StrEq(""));
}

TEST_F(ScsiinfoTest, pageListLongerThanTheReplyIsBounded) {
  device.vpdPages[0x00] = std::string(255, '\1');
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.serialnumber(), StrEq(""));
}

// The driver's buffer still holds the bytes of the command before.
TEST_F(ScsiinfoTest, refusedModeSenseGivesZeroGeometryAndNoError) {
  device.setSerialNumber(std::string(100, '\4'));
  expectNoGeometry(probe());
}

// Paravirtual adapters do so; the sense data tell that the device itself has declined.
TEST_F(ScsiinfoTest, refusalThatTheAdapterReportsAsItsOwnErrorIsARefusal) {
  device.refusalIsHostError = true;
  device.setSerialNumber("PV-SN-0");
  const scsiinfo info = probe();
  expectNoGeometry(info);
  EXPECT_THAT(info.serialnumber(), StrEq("PV-SN-0"));
}

TEST_F(ScsiinfoTest, productDataThatTheAdapterReportsAsItsOwnErrorAreNoError) {
  device.refusalIsHostError = true;
  device.setGeometryPages(100, 4, 32);
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_EQ(info.numheads(), 4U);
}

TEST_F(ScsiinfoTest, unitAttentionThatTheAdapterReportsAsItsOwnErrorIsRepeated) {
  device.refusalIsHostError = true;
  device.setGeometryPages(100, 4, 32);
  device.unitAttentions = 2;
  EXPECT_EQ(probe().numcylinders(), 100U);
}

TEST_F(ScsiinfoTest, deviceThatGoesAwayBeforeItsGeometryKeepsWhatItHasSaid) {
  device.setSerialNumber("3FE00ABC0000");
  device.setGeometryPages(100, 4, 32);
  for (const char* last : {"12 01 80", "1A 00 04"}) {
    device.commands.clear();
    test::FakeDevice node = device.genericNode();
    node.write = [this, last, take = node.write](const void* packet, size_t size) {
      const bool isGone = device.commands.size() >= 4 && device.commands.back() == last;
      errno = ENODEV;
      return isGone ? ssize_t{-1} : take(packet, size);
    };
    machine.devices["/dev/sg0"] = node;
    const test::CapturedTraces traces("MIN");
    const scsiinfo info("/dev/sg0");
    expectNoGeometry(info);
    EXPECT_THAT(info.model(), StrEq("ST318406"));
    EXPECT_THAT(info.serialnumber(), StrEq("3FE00ABC0000"));
    EXPECT_EQ(traces.count("hardware no geometry of /dev/sg0"), 1);
  }
}

TEST_F(ScsiinfoTest, diskWithoutFormatPageGivesZeroGeometry) {
  device.setGeometryPages(100, 4, 32);
  device.modePages.erase(3);
  expectNoGeometry(probe());
}

TEST_F(ScsiinfoTest, modePagesElsewhereThanBehindOneBlockDescriptorAreNotRead) {
  device.setGeometryPages(100, 4, 32);
  for (const int length : {0, 4, 16}) {
    device.blockDescriptorLength = length;
    expectNoGeometry(probe());
  }
}

// Behind it, the driver's buffer holds the end of the page that was asked for before.
TEST_F(ScsiinfoTest, modePageThatEndsTooSoonIsNotRead) {
  device.setGeometryPages(100, 4, 32);
  device.modePages[4] += std::string(20, '\2');
  device.modePages[3].resize(13);
  expectNoGeometry(probe());
  device.setGeometryPages(100, 4, 32);
  device.modePages[4].resize(5);
  expectNoGeometry(probe());
}

TEST_F(ScsiinfoTest, modePageThatHoldsJustWhatIsReadIsEnough) {
  device.setGeometryPages(100, 4, 32);
  device.modePages[4].resize(6);
  device.modePages[3].resize(14);
  const scsiinfo info = probe();
  EXPECT_EQ(info.numcylinders(), 100U);
  EXPECT_EQ(info.numheads(), 4U);
  EXPECT_EQ(info.numsectors(), 32U);
  EXPECT_EQ(info.sector_size(), 512U);
}

TEST_F(ScsiinfoTest, modePageOfAnotherCodeIsNotRead) {
  device.setGeometryPages(100, 4, 32);
  device.modePages[4][0] = 8;
  expectNoGeometry(probe());
}

TEST_F(ScsiinfoTest, savableBitOfThePageCodeIsIgnored) {
  device.setGeometryPages(100, 4, 32);
  device.modePages[4][0] = static_cast<char>(0x84);
  EXPECT_EQ(probe().numcylinders(), 100U);
}

TEST_F(ScsiinfoTest, sizeKeepsTheRoundingOfItsTwoHalves) {
  device.setGeometryPages(3, 3, 1, 512);  // an odd number of tracks: 1 * (1536 >> 9) + (1536 >> 10)
  EXPECT_EQ(probe().totalsize(), 4U);
}

TEST_F(ScsiinfoTest, largestGeometryDoesNotOverflow) {
  device.setGeometryPages(0xFFFFFF, 255, 0xFFFF, 0xFFFF);
  const unsigned long tracks = 0xFFFFFFUL * 0xFFFF;
  EXPECT_EQ(probe().totalsize(),
            (tracks >> 1) * (0xFFFFUL * 255 >> 9) + (tracks & 1) * (0xFFFFUL * 255 >> 10));
}

TEST_F(ScsiinfoTest, unitAttentionIsAnsweredByRepeatingTheCommand) {
  device.setGeometryPages(100, 4, 32);
  device.unitAttentions = 2;
  EXPECT_EQ(probe().numcylinders(), 100U);
}

TEST_F(ScsiinfoTest, endlessUnitAttentionIsGivenUp) {
  device.setGeometryPages(100, 4, 32);
  device.unitAttentions = 1000;
  expectNoGeometry(probe());
}

TEST_F(ScsiinfoTest, faultsOfTheTransportGiveCode70) {
  struct Fault {
    const char* name;
    std::function<void(ScriptedSgDevice&)> cause;
  };
  const Fault faults[] = {
      {"write fails", [](ScriptedSgDevice& d) { d.writeFails = true; }},
      {"write takes less", [](ScriptedSgDevice& d) { d.missingWrite = 1; }},
      {"write takes nothing", [](ScriptedSgDevice& d) { d.missingWrite = 42; }},
      {"read fails", [](ScriptedSgDevice& d) { d.readFails = true; }},
      {"read gives less", [](ScriptedSgDevice& d) { d.missingRead = 1; }},
      {"read gives nothing", [](ScriptedSgDevice& d) { d.missingRead = 291; }},
      {"driver reports an error", [](ScriptedSgDevice& d) { d.driverResult = 5; }},
      {"target status", [](ScriptedSgDevice& d) { d.targetStatus = 4; }},
      {"host status", [](ScriptedSgDevice& d) { d.hostStatus = 1; }},
      {"driver status", [](ScriptedSgDevice& d) { d.driverStatus = 8; }},
      {"hardware error", [](ScriptedSgDevice& d) { d.senseKey = 4; }},
  };
  for (const Fault& fault : faults) {
    device = ScriptedSgDevice();
    fault.cause(device);
    ::testing::internal::CaptureStderr();
    EXPECT_EQ(probe().errorcode(), scsiinfo::kInquiryFailed) << fault.name;
    ::testing::internal::GetCapturedStderr();
  }
}

TEST_F(ScsiinfoTest, failingReadIsReportedOnStandardError) {
  device.readFails = true;
  ::testing::internal::CaptureStderr();
  probe();
  EXPECT_THAT(::testing::internal::GetCapturedStderr(), ::testing::HasSubstr("Input/output error"));
}

TEST_F(ScsiinfoTest, recoveredErrorBesideAGoodStatusIsSuccess) {
  device.senseKey = 1;
  EXPECT_EQ(probe().errorcode(), 0);
}

TEST_F(ScsiinfoTest, driveThatWarnsOfItsFailureWithEveryCommandIsReadAllTheSame) {
  device.setSerialNumber("3FE00ABC0000");
  device.setGeometryPages(29851, 2, 595);
  device.senseKey = 1;
  device.targetStatus = 1;  // CHECK CONDITION, shifted
  device.driverStatus = 8;  // sense data is there
  const scsiinfo info = probe();
  EXPECT_EQ(info.errorcode(), 0);
  EXPECT_THAT(info.model(), StrEq("ST318406"));
  EXPECT_THAT(info.serialnumber(), StrEq("3FE00ABC0000"));
  EXPECT_EQ(info.numcylinders(), 29851U);
}

TEST_F(ScsiinfoTest, recoveredErrorDoesNotExcuseABusyDeviceOrABrokenTransport) {
  device.senseKey = 1;
  device.targetStatus = 4;  // BUSY, shifted
  EXPECT_EQ(probe().errorcode(), scsiinfo::kInquiryFailed);
  device.targetStatus = 1;
  device.hostStatus = 7;
  EXPECT_EQ(probe().errorcode(), scsiinfo::kInquiryFailed);
}

TEST_F(ScsiinfoTest, garbageInEveryAnswerIsSurvived) {
  std::mt19937 random(20240229);
  for (int round = 0; round < 500; ++round) {
    device.setSerialNumber("X");
    device.setGeometryPages(100, 4, 32);
    device.distort = [&](std::string& data) {
      data.resize(random() % 300);
      for (char& byte : data) byte = static_cast<char>(random());
    };
    const scsiinfo info = probe();
    EXPECT_LE(std::string(info.model()).size(), 8U);
    EXPECT_LE(std::string(info.serialnumber()).size(), 251U);
  }
}

TEST_F(ScsiinfoTest, commandWithoutLengthOrBuffersHasItsOwnCodes) {
  scsiinfo info = probe();
  char buffer[64] = {};
  EXPECT_EQ(info.doSCSIcmd(0, 0, buffer, 8, buffer), 30);
  EXPECT_EQ(info.doSCSIcmd(6, 0, nullptr, 8, buffer), 50);
  EXPECT_EQ(info.doSCSIcmd(6, 0, buffer, 8, nullptr), 60);
}

TEST_F(ScsiinfoTest, onlyCommandsOfTwelveBytesCarryTheFlag) {
  scsiinfo info = probe();
  device.twelveByteFlags.clear();
  for (const unsigned length : {6U, 10U, 12U}) {
    char command[36 + 12] = {};
    char reply[36 + 8] = {};
    info.doSCSIcmd(length, 0, command, 8, reply);
  }
  EXPECT_THAT(device.twelveByteFlags, ElementsAre(false, false, true));
}

TEST_F(ScsiinfoTest, integersAreBigEndian) {
  EXPECT_EQ(scsiinfo::getinteger("\x01\x02\x03", 3), 0x010203U);
  EXPECT_EQ(scsiinfo::getinteger("\xFF\xFE", 2), 0xFFFEU);
  EXPECT_EQ(scsiinfo::getinteger("", 0), 0U);
}

}  // namespace
}  // namespace quenlor
