#include "readers/block/VpdPages.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/readers/block/BlockMachine.h"

namespace quenlor {
namespace {

using test::AtaPage;
using test::vpdPage;

// --- page 80 ---

TEST(VpdPages, unitSerialIsTrimmed) {
  EXPECT_EQ(parseUnitSerial(vpdPage(0x80, "   S3Z9NB0K  ")), "S3Z9NB0K");
  EXPECT_EQ(parseUnitSerial(vpdPage(0x80, std::string("AB\0\0", 4))), "AB");
  EXPECT_EQ(parseUnitSerial(vpdPage(0x80, "    ")), "");
  EXPECT_EQ(parseUnitSerial(vpdPage(0x80, "")), "");
}

TEST(VpdPages, unitSerialEndsWhereThePageSays) {
  std::string page = vpdPage(0x80, "1234");
  EXPECT_EQ(parseUnitSerial(page + "rest"), "1234");
  page[3] = static_cast<char>(200);  // says more than there is
  EXPECT_EQ(parseUnitSerial(page), "1234");
}

TEST(VpdPages, otherPagesAndCutOffOnesHaveNoSerial) {
  for (size_t length = 0; length < 5; ++length) {
    EXPECT_EQ(parseUnitSerial(vpdPage(0x80, "X").substr(0, length)), "") << length;
  }
  EXPECT_EQ(parseUnitSerial(vpdPage(0x83, "1234")), "");
}

// --- page 83 ---

std::string designator(unsigned char first, unsigned char second, const std::string& value) {
  std::string bytes;
  bytes += static_cast<char>(first);
  bytes += static_cast<char>(second);
  bytes += '\0';
  bytes += static_cast<char>(value.size());
  return bytes + value;
}

const std::string kNaa8("\x50\x00\xC5\x00\xA1\xB2\xC3\xD4", 8);
const std::string kNaa16("\x60\x05\x08\xB4\x00\x01\x02\x03\x04\x05\x06\x07\x08\x09\x0A\x0B", 16);

TEST(VpdPages, identifierOfTheUnitIsTaken_thoseOfPortsAreNot) {
  const std::string port = designator(1, 0x93, std::string("\x50\x11\x22\x33\x44\x55\x66\x77", 8));
  EXPECT_EQ(parseIdentification(vpdPage(0x83, port + designator(1, 3, kNaa8))),
            "naa.5000c500a1b2c3d4");
  EXPECT_EQ(parseIdentification(vpdPage(0x83, port)), "");
}

TEST(VpdPages, longerIdentifierIsTheBetterOne) {
  const std::string both = designator(1, 3, kNaa8) + designator(1, 3, kNaa16);
  EXPECT_EQ(parseIdentification(vpdPage(0x83, both)), "naa.600508b4000102030405060708090a0b");
}

TEST(VpdPages, everyKindOfIdentifierHasItsForm) {
  const std::string eui("\x00\x25\x38\x5A\x91\xB0\x12\x34", 8);
  EXPECT_EQ(parseIdentification(vpdPage(0x83, designator(1, 2, eui))), "eui.0025385a91b01234");
  EXPECT_EQ(parseIdentification(vpdPage(0x83, designator(2, 1, "ATA     MODEL  SERIAL "))),
            "t10.ATA     MODEL  SERIAL");
  EXPECT_EQ(parseIdentification(
                vpdPage(0x83, designator(3, 8, std::string("naa.5000C500A1B2C3D4\0", 21)))),
            "naa.5000c500a1b2c3d4");
  const std::string uuid = std::string("\x10\x00", 2) + kNaa16;
  EXPECT_EQ(parseIdentification(vpdPage(0x83, designator(1, 10, uuid))),
            "uuid.600508b4-0001-0203-0405-060708090a0b");
}

TEST(VpdPages, emptyIdentifierGivesWayToWorseOne) {
  const std::string both = designator(1, 3, std::string(16, '\0')) + designator(1, 3, kNaa8);
  EXPECT_EQ(parseIdentification(vpdPage(0x83, both)), "naa.5000c500a1b2c3d4");
}

TEST(VpdPages, hostilePageOfIdentifiersEnds) {
  const std::string whole = vpdPage(0x83, designator(1, 3, kNaa16) + designator(1, 3, kNaa8));
  for (size_t length = 0; length <= whole.size(); ++length) {
    parseIdentification(whole.substr(0, length));
  }
  EXPECT_EQ(parseIdentification(whole.substr(0, 15)), "");  // cut inside the value
  EXPECT_EQ(parseIdentification(vpdPage(0x83, std::string(4000, '\0'))), "");
  EXPECT_EQ(parseIdentification(vpdPage(0x83, std::string(4000, '\xFF'))), "");
  EXPECT_EQ(parseIdentification(vpdPage(0x83, std::string("\x01\x03\x00", 3))), "");
}

// --- page 89 ---

AtaPage disk() {
  return AtaPage()
      .text(10, 19, "     WD-WCC4N1234567")
      .text(23, 26, "82.00A82")
      .text(27, 46, "WDC WD40EFRX-68N32N0")
      .word(76, 0x850E)
      .word(108, 0x5001)
      .word(109, 0x4EE2)
      .word(110, 0xB5A1)
      .word(111, 0xC2D3)
      .word(128, 0x0021)
      .word(217, 5400);
}

TEST(VpdPages, ataIdentityIsWhole) {
  const auto identity = parseAtaInformation(disk().bytes());
  ASSERT_TRUE(identity);
  EXPECT_EQ(identity->serial, "WD-WCC4N1234567");
  EXPECT_EQ(identity->firmware, "82.00A82");
  EXPECT_EQ(identity->model, "WDC WD40EFRX-68N32N0");
  EXPECT_EQ(identity->worldWideName, "naa.50014ee2b5a1c2d3");
  EXPECT_EQ(identity->rotation, Rotation::kSpinning);
  EXPECT_TRUE(identity->isSerialAta);
  EXPECT_TRUE(identity->hasSecurity);
  EXPECT_FALSE(identity->isSecurityEnabled);
}

TEST(VpdPages, ataSecurityNeedsItsFeatureSet) {
  EXPECT_TRUE(parseAtaInformation(disk().word(128, 3).bytes())->isSecurityEnabled);
  EXPECT_FALSE(parseAtaInformation(disk().word(128, 2).bytes())->isSecurityEnabled);
  EXPECT_FALSE(parseAtaInformation(disk().word(128, 0xFFFF).bytes())->hasSecurity);
  EXPECT_FALSE(parseAtaInformation(disk().word(128, 0).bytes())->hasSecurity);
}

TEST(VpdPages, ataRotationIsToldOnlyByValidRates) {
  EXPECT_EQ(parseAtaInformation(disk().word(217, 1).bytes())->rotation, Rotation::kSolidState);
  for (const unsigned rate : {0u, 2u, 0x400u, 0xFFFFu}) {
    EXPECT_EQ(parseAtaInformation(disk().word(217, rate).bytes())->rotation, Rotation::kNotTold)
        << rate;
  }
  EXPECT_EQ(parseAtaInformation(disk().word(217, 0x401).bytes())->rotation, Rotation::kSpinning);
}

TEST(VpdPages, ataNameNeedsRegisteredForm) {
  EXPECT_EQ(parseAtaInformation(disk().word(108, 0x3001).bytes())->worldWideName, "");
  EXPECT_EQ(parseAtaInformation(disk().word(108, 0).bytes())->worldWideName, "");
}

TEST(VpdPages, shortAtaPageTellsNothing) {
  const std::string page = disk().bytes();
  for (size_t length = 0; length < page.size(); length += 13) {
    EXPECT_FALSE(parseAtaInformation(page.substr(0, length))) << length;
  }
  EXPECT_FALSE(parseAtaInformation(page.substr(0, 571)));
  EXPECT_FALSE(parseAtaInformation(vpdPage(0x80, std::string(1000, 'x'))));
}

// --- page B1 ---

TEST(VpdPages, rotationRateIsBigEndian) {
  EXPECT_EQ(parseRotation(vpdPage(0xB1, std::string("\x00\x01", 2))), Rotation::kSolidState);
  EXPECT_EQ(parseRotation(vpdPage(0xB1, std::string("\x1C\x20", 2))), Rotation::kSpinning);
  EXPECT_EQ(parseRotation(vpdPage(0xB1, std::string("\x00\x00", 2))), Rotation::kNotTold);
  EXPECT_EQ(parseRotation(vpdPage(0xB1, std::string("\x01", 1))), Rotation::kNotTold);
  EXPECT_EQ(parseRotation(""), Rotation::kNotTold);
}

// --- names ---

TEST(VpdPages, namesOfKernelAndUdevHaveOneForm) {
  EXPECT_EQ(worldWideName("naa.5000C500A1B2C3D4"), "naa.5000c500a1b2c3d4");
  EXPECT_EQ(worldWideName("0x5000c500a1b2c3d4"), "naa.5000c500a1b2c3d4");
  EXPECT_EQ(worldWideName(" eui.0025385A91B01234\n"), "eui.0025385a91b01234");
  EXPECT_EQ(worldWideName("uuid.12345678-1234-1234-1234-123456789abc"),
            "uuid.12345678-1234-1234-1234-123456789abc");
  EXPECT_EQ(worldWideName("t10.ATA     QEMU HARDDISK    QM00001 "),
            "t10.ATA     QEMU HARDDISK    QM00001");
}

TEST(VpdPages, whatIsNoNameIsEmpty) {
  for (const char* text :
       {"", "naa.", "naa.0000000000000000", "eui.0", "uuid.00000000-0000-0000-0000-000000000000",
        "0x0000000000000000", "0x", "nvme.8086-41-42-00000001", "t10.", "t10.   ", "naa.xyz",
        "iqn.2003-01.org.example:disk"}) {
    EXPECT_EQ(worldWideName(text), "") << text;
  }
}

}  // namespace
}  // namespace quenlor
