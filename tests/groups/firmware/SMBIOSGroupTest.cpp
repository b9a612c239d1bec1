#include "groups/firmware/SMBIOSGroup.h"

#include <gtest/gtest.h>

#include <string>

#include "identity/Identity.h"
#include "tests/firmware/Images.h"
#include "tests/firmware/SharedTable.h"
#include "tests/support/CapturedTraces.h"
#include "tests/support/Rows.h"

namespace quenlor {
namespace {

using test::FirmwareTable;
using test::RowValues;
using test::SharedTable;

RowValues rowOf(const FirmwareTable& structures) {
  const SharedTable shared(structures);
  const auto rows = test::collect<SMBIOSGroup>();
  EXPECT_EQ(rows.size(), 1u);
  return rows.empty() ? RowValues() : rows[0];
}

FirmwareTable table() { return FirmwareTable({2, 4}); }

test::Uuid uuid() {
  test::Uuid bytes;
  for (uint8_t i = 0; i < 16; ++i) bytes[i] = static_cast<uint8_t>(0xA0 + i);
  return bytes;
}

FirmwareTable fullTable() {
  return table()
      .add(test::Bios{"Vendor", "1.2", "04/01/2014", 7})
      .add(test::System{"Maker", "Product", "V1", "S1", uuid()})
      .add(test::Baseboard{"BMaker", "Board", "BV", "BS"})
      .add(test::Enclosure{"EMaker", 0x83, "EV", "ES", "EA"})
      .add(test::HardwareSecurity{0x40});
}

TEST(SMBIOSGroup, withoutTableThereIsNothing) {
  EXPECT_TRUE(test::collect<SMBIOSGroup>().empty());
  test::FakeHost machine;
  SMBIOSTable::initializeGlobalTable(1);
  EXPECT_TRUE(test::collect<SMBIOSGroup>().empty());
  SMBIOSTable::terminateGlobalTable();
}

TEST(SMBIOSGroup, groupAndVersion) {
  const SharedTable shared(fullTable());
  SMBIOSGroup group;
  const std::unique_ptr<VelTable> result(group.getTable());
  EXPECT_EQ(result->getGroupId(), 24u);
  EXPECT_EQ(result->getGroupVersion(), 1u);
}

TEST(SMBIOSGroup, allAttributesInOrder) {
  EXPECT_EQ(rowOf(fullTable()),
            (RowValues{{1, "Vendor"},
                       {2, "1.2"},
                       {3, "2014-04-01"},
                       {4, "512K"},
                       {5, "Maker"},
                       {6, "Product"},
                       {7, "V1"},
                       {8, "S1"},
                       {9, "A0A1A2A3A4A5A6A7A8A9AAABACADAEAF"},
                       {10, "BMaker"},
                       {11, "Board"},
                       {12, "BV"},
                       {13, "BS"},
                       {14, "EMaker"},
                       {15, "3"},
                       {16, "EV"},
                       {17, "ES"},
                       {18, "EA"},
                       {19, md5Text("Vendor1.2512KMakerProductV1BMakerBoardBVEMaker3EV")},
                       {20, "1"}}));
}

std::string idOf(const FirmwareTable& structures) { return test::valueOf(rowOf(structures), 19); }

TEST(SMBIOSGroup, missingTextsAreBarsInTheIdentity_idDigestsDependOnIt) {
  EXPECT_EQ(idOf(table()
                     .add(test::Bios{.vendor = "Vendor", .date = "04/01/2014"})
                     .add(test::System{.product = "Not Available", .version = "V1"})
                     .add(test::Baseboard{})
                     .add(test::Enclosure{.type = 0})),
            md5Text("Vendor|512K||V1|||||"));
}

TEST(SMBIOSGroup, missingRecordsAreBarsToo) {
  EXPECT_EQ(idOf(table().add(test::System{.product = "P"})), md5Text("|||P||||||"));
  EXPECT_EQ(idOf(table().add(test::Bios{.vendor = "V"})), md5Text("V|512K||||||||"));
}

TEST(SMBIOSGroup, serialNumbersAndUuidAreNotInTheIdentity) {
  EXPECT_EQ(idOf(fullTable()),
            idOf(table()
                     .add(test::Bios{"Vendor", "1.2", "01/01/2020", 7})
                     .add(test::System{"Maker", "Product", "V1", "other", {}})
                     .add(test::Baseboard{"BMaker", "Board", "BV", "other"})
                     .add(test::Enclosure{"EMaker", 3, "EV", "other", "other"})));
}

TEST(SMBIOSGroup, withoutAnyRecordThereIsNoIdentity) {
  EXPECT_EQ(rowOf(table().add(test::Slot{})), (RowValues{{20, "3"}}));
}

TEST(SMBIOSGroup, aSerialNumberAloneIsEnoughForAnIdentity) {
  EXPECT_EQ(rowOf(table().add(test::System{.serial = "S"})),
            (RowValues{{8, "S"}, {19, md5Text("||||||||||")}, {20, "3"}}));
}

TEST(SMBIOSGroup, placeholdersAreLeftOut) {
  const SharedTable shared(*test::firmwareNamed("placeholders"));
  const auto rows = test::collect<SMBIOSGroup>();
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0], (RowValues{{1, "Example BIOS"},
                                {3, "Unknown"},
                                {4, "512K"},
                                {10, "Example Boards"},
                                {11, "Board 1"},
                                {12, "x.xx"},
                                {15, "3"},
                                {16, "caf"},
                                {17, "Chassis Serial"},
                                {19, md5Text("Example BIOS|512K|||Example BoardsBoard 1x.xx|3caf")},
                                {20, "3"}}));
}

TEST(SMBIOSGroup, romSizes) {
  EXPECT_EQ(test::valueOf(rowOf(table().add(test::Bios{.romSize = 0})), 4), "64K");
  EXPECT_EQ(test::valueOf(rowOf(table().add(test::Bios{.romSize = 7})), 4), "512K");
  EXPECT_EQ(test::valueOf(rowOf(table().add(test::Bios{.romSize = 255})), 4), "16384K");
}

std::string enclosureType(uint8_t type) {
  return test::valueOf(rowOf(table().add(test::Enclosure{.manufacturer = "M", .type = type})), 15);
}

TEST(SMBIOSGroup, enclosureTypesOneToTwentyFiveAreReported) {
  EXPECT_EQ(enclosureType(0x83), "3");
  EXPECT_EQ(enclosureType(1), "1");
  EXPECT_EQ(enclosureType(25), "25");
  EXPECT_EQ(enclosureType(0x99), "25");
  for (const uint8_t type : std::initializer_list<uint8_t>{0, 0x80, 26, 0x9A, 127, 255}) {
    EXPECT_EQ(enclosureType(type), "(absent)");
  }
}

std::string powerOnPassword(uint8_t settings) {
  return test::valueOf(rowOf(table().add(test::HardwareSecurity{settings})), 20);
}

TEST(SMBIOSGroup, powerOnPasswordAboveThreeIsNotImplemented) {
  EXPECT_EQ(powerOnPassword(0xC3), "2");
  EXPECT_EQ(powerOnPassword(0x80), "2");
  EXPECT_EQ(powerOnPassword(0x43), "1");
  EXPECT_EQ(powerOnPassword(0x03), "0");
  EXPECT_EQ(test::valueOf(rowOf(table().add(test::System{})), 20), "3");
}

TEST(SMBIOSGroup, traces) {
  const test::CapturedTraces traces;
  rowOf(fullTable());
  rowOf(table().add(test::System{.product = "P"}));
  for (const char* expected :
       {"hardware SMBIOSGroup Group", "hardware SMBIOS TABLE 0 IS AVAILABLE",
        "hardware SMBIOS TABLE 1 IS AVAILABLE", "hardware SMBIOS TABLE 2 IS AVAILABLE",
        "hardware SMBIOS TABLE 3 IS AVAILABLE", "-none-", "MD5 PK input len: 49",
        "../../../src/invscan/SMBIOS/SMBIOSGroup.cpp"}) {
    EXPECT_TRUE(traces.contains(expected)) << expected;
  }
}

}  // namespace
}  // namespace quenlor
