#include <gtest/gtest.h>

#include "groups/modern/Collectors.h"
#include "identity/Identity.h"
#include "tests/groups/ModernRows.h"
#include "tests/groups/firmware/ModernFirmware.h"

namespace quenlor {
namespace {

using test::collectModern;
using test::FakeHost;
using test::Structure;
using test::valueOf;

constexpr char kAbsent[] = "(absent)";

Structure bios(uint8_t romSize = 0xFF, uint16_t extended = 32) {
  Structure out(0);
  out.text("BIOS maker").text("1.20").word(0).text("02/29/2024").byte(romSize).qword(0).byte(3);
  return out.byte(8).byte(5).byte(27).byte(0xFF).byte(0xFF).word(extended);
}

Structure system(const std::string& product = "Rack 9") {
  Structure out(1);
  out.text("Maker").text(product).text("V1").text("SN-1");
  out.raw(std::string("\x33\x22\x11\x00\x55\x44\x77\x66\x88\x99\xAA\xBB\xCC\xDD\xEE\xFF", 16));
  return out.byte(6).text("SKU-1").text("Family-1");
}

Structure board(const std::string& product, bool isHosting) {
  Structure out(2);
  out.text("Board maker").text(product).text("BV").text("BS").text("BT");
  return out.byte(isHosting ? 1 : 0).text("Bay " + product).word(3).byte(10).byte(0);
}

Structure enclosure(uint8_t kind = 0x97, uint8_t height = 2) {
  Structure out(3);
  out.text("Case maker").byte(kind).text("CV").text("CS").text("CT").dword(0x03030303).dword(0);
  return out.byte(height).byte(2).byte(0).byte(0).text("CSKU");
}

test::RowValues rowOf(const std::vector<Structure>& structures, test::Version version = {3, 6}) {
  FakeHost machine;
  installFirmware(machine, structures, version);
  const auto collected = collectModern(group::kSmbios, collectSmbios);
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kComplete);
  return collected.rows.at(0);
}

TEST(SMBIOSModernTest, allOfATableOfToday) {
  const test::RowValues expected = {
      {1, "BIOS maker"},   {2, "1.20"},        {3, "2024-02-29"},
      {4, "32768K"},       {5, "Maker"},       {6, "Rack 9"},
      {7, "V1"},           {8, "SN-1"},        {9, "33221100554477668899AABBCCDDEEFF"},
      {10, "Board maker"}, {11, "main"},       {12, "BV"},
      {13, "BS"},          {14, "Case maker"}, {15, "23"},
      {16, "CV"},          {17, "CS"},         {18, "CT"}};
  const test::RowValues row = rowOf({bios(), system(), board("riser", false), board("main", true),
                                     enclosure(), Structure(24).byte(0x40)});
  EXPECT_EQ(test::RowValues(row.begin(), row.begin() + 18), expected);
  EXPECT_EQ(valueOf(row, 20), "1");
  EXPECT_EQ(valueOf(row, 101), "00112233-4455-6677-8899-aabbccddeeff");
  EXPECT_EQ(valueOf(row, 102), "SKU-1");
  EXPECT_EQ(valueOf(row, 103), "Family-1");
  EXPECT_EQ(valueOf(row, 104), "BT");
  EXPECT_EQ(valueOf(row, 105), "5.27");
  EXPECT_EQ(valueOf(row, 106), kAbsent);
  EXPECT_EQ(valueOf(row, 107), "3.6");
  EXPECT_EQ(valueOf(row, 108), "32768");
  EXPECT_EQ(valueOf(row, 109), "CSKU");
  EXPECT_EQ(valueOf(row, 110), "Bay main");
  EXPECT_EQ(valueOf(row, 111), "2");
}

TEST(SMBIOSModernTest, placeholdersAreAbsent) {
  const test::RowValues row = rowOf({system("To Be Filled By O.E.M.")});
  EXPECT_EQ(valueOf(row, 6), kAbsent);
  EXPECT_EQ(valueOf(row, 5), "Maker");
}

TEST(SMBIOSModernTest, passwordStatusIsUnknownWithoutItsStructure) {
  EXPECT_EQ(valueOf(rowOf({system()}), 20), "3");
  EXPECT_EQ(valueOf(rowOf({system(), Structure(24).byte(0xC3)}), 20), "3");
  EXPECT_EQ(valueOf(rowOf({system(), Structure(24).byte(0x80)}), 20), "2");
}

TEST(SMBIOSModernTest, enclosuresOfTodayHaveTheirType) {
  EXPECT_EQ(valueOf(rowOf({enclosure(0x1F)}), 15), "31");
  EXPECT_EQ(valueOf(rowOf({enclosure(0xA3)}), 15), "35");
  EXPECT_EQ(valueOf(rowOf({enclosure(0)}), 15), kAbsent);
}

std::string idOf(const std::vector<Structure>& structures) {
  return valueOf(rowOf(structures), 19);
}

TEST(SMBIOSModernTest, idIsTheDigestOfTheTexts) {
  EXPECT_EQ(idOf({bios(15), system(), board("main", true), enclosure()}),
            md5Text("BIOS maker1.201024KMakerRack 9V1Board makermainBVCase maker23CV"));
  EXPECT_EQ(idOf({system()}), md5Text("||MakerRack 9V1|||||"));
}

// A server knows the machine by it: lists that grew must not change it.
TEST(SMBIOSModernTest, idStaysAsItWasBeforeTheListsGrew) {
  EXPECT_EQ(idOf({bios(0xFF, 32)}), idOf({bios(0xFF, 16)}));
  EXPECT_EQ(idOf({enclosure(0x1F)}), md5Text("||||||||Case makerCV"));
}

TEST(SMBIOSModernTest, idDoesNotCountPlaceholders) {
  EXPECT_EQ(idOf({system("Default string")}), md5Text("||Maker|V1|||||"));
}

TEST(SMBIOSModernTest, userGetsTheTextsThatAreForAllAndNoId) {
  FakeHost machine;
  installFirmware(machine, {system()});
  refuseFirmware(machine);
  const auto collected = collectModern(group::kSmbios, collectSmbios);
  const test::RowValues& row = collected.rows.at(0);
  EXPECT_EQ(valueOf(row, 5), "Maker");
  EXPECT_EQ(valueOf(row, 6), "Product");
  EXPECT_EQ(valueOf(row, 8), kAbsent);
  EXPECT_EQ(valueOf(row, 15), "9");
  EXPECT_EQ(valueOf(row, 19), kAbsent);
  EXPECT_EQ(valueOf(row, 107), kAbsent);
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kPartial);
  EXPECT_EQ(collected.outcome.reason(), "serial numbers: not root; firmware table: not root");
}

TEST(SMBIOSModernTest, machineWithoutFirmwareHasNoRow) {
  const FakeHost machine;
  const auto collected = collectModern(group::kSmbios, collectSmbios);
  EXPECT_TRUE(collected.rows.empty());
  EXPECT_EQ(collected.outcome.status(), OutcomeStatus::kNoSource);
}

}  // namespace
}  // namespace quenlor
